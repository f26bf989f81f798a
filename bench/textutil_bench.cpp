// Base64 beside glib and OpenSSL, in each direction:
//   encode, encodelines          one line, and lines (ours 76 characters and CR LF, glib 72 and LF,
//                                OpenSSL 64 and LF)
//   decode, decodelines          the same texts of ours; decodelf is lines of 64 with LF
//   decodesparse, decodedense    a blank in every hundred characters, and at every second one
// Ours gives a block of its own each time and releases it, as glib does; OpenSSL writes into one
// buffer. "ours-avx2" and "ours-portable" are our inner loops for other processors. Before anything
// is timed, all have to decode to as many bytes. Look-ups stand beside a linear search, the count
// of digits beside the logarithm; numbers and plain text alone.

#include "sys/textutil.h"
#include "textutil/base64kernels.h"
#include "textutil/entitytable.h"

#include <benchmark/benchmark.h>
#include <glib.h>
#include <openssl/evp.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using nomutil::textutil::Base64Kernels;

struct Input {
  std::string bytes;
  std::string encode, lines, lf, sparse, dense;
};

std::string encodeOurs(const std::string& bytes, bool oneLine) {
  char* text;
  std::uint32_t length;
  base64Encode(reinterpret_cast<const std::uint8_t*>(bytes.data()),
               static_cast<std::uint32_t>(bytes.size()), text, length, oneLine);
  const std::string all(text, length);
  base64Free(text);
  return all;
}

Input inputOf(std::size_t byteCount) {
  std::mt19937_64 random(1);
  Input input;
  for (std::size_t i = 0; i < byteCount; ++i) input.bytes += static_cast<char>(random());
  input.encode = encodeOurs(input.bytes, true);
  input.lines = encodeOurs(input.bytes, false);
  for (std::size_t i = 0; i < input.encode.size(); ++i) {
    if (i != 0 && i % 64 == 0) input.lf += '\n';
    const auto add = [&](std::string& to, std::size_t spacing) {
      to += input.encode[i];
      if (random() % spacing == 0) to += ' ';
    };
    input.lf += input.encode[i];
    add(input.sparse, 100);
    add(input.dense, 2);
  }
  return input;
}

// Each operation runs on a text and reports the bytes or characters that came out.
using Operation = std::function<std::size_t(const std::string&)>;

const std::uint8_t* bytesOf(const std::string& text) {
  return reinterpret_cast<const std::uint8_t*>(text.data());
}

Operation oursEncode(bool oneLine) {
  return [oneLine](const std::string& bytes) {
    char* text;
    std::uint32_t length;
    base64Encode(bytesOf(bytes), static_cast<std::uint32_t>(bytes.size()), text, length, oneLine);
    benchmark::DoNotOptimize(text);
    base64Free(text);
    return length;
  };
}

std::size_t oursDecode(const std::string& text) {
  std::uint8_t* bytes;
  std::uint32_t byteCount = 0;
  base64DecodeWithLength(text.data(), static_cast<std::uint32_t>(text.size()), bytes, byteCount);
  benchmark::DoNotOptimize(bytes);
  base64Free(bytes);
  return byteCount;
}

Operation decodeWith(const Base64Kernels& kernels) {
  return [&kernels](const std::string& text) {
    const std::unique_ptr<std::uint8_t[]> bytes(new std::uint8_t[text.size()]);
    std::uint32_t byteCount = 0;
    decodeBase64(kernels, text.data(), text.size(), bytes.get(), byteCount);
    benchmark::DoNotOptimize(bytes.get());
    return byteCount;
  };
}

Operation encodeWith(const Base64Kernels& kernels) {
  return [&kernels](const std::string& bytes) {
    const std::unique_ptr<char[]> text(new char[bytes.size() / 3 * 4]);
    kernels.encode(bytesOf(bytes), bytes.size() / 3, text.get());
    benchmark::DoNotOptimize(text.get());
    return bytes.size() / 3 * 4;
  };
}

std::size_t glibEncode(const std::string& bytes) {
  gchar* const text = g_base64_encode(bytesOf(bytes), bytes.size());
  benchmark::DoNotOptimize(text);
  g_free(text);
  return (bytes.size() + 2) / 3 * 4;
}

std::size_t glibEncodeLines(const std::string& bytes) {
  const std::size_t room = (bytes.size() / 3 + 1) * 4 + 4;
  const std::unique_ptr<char[]> text(new char[room + room / 72 + 1]);
  gint state = 0, save = 0;
  gsize length =
      g_base64_encode_step(bytesOf(bytes), bytes.size(), TRUE, text.get(), &state, &save);
  length += g_base64_encode_close(TRUE, text.get() + length, &state, &save);
  benchmark::DoNotOptimize(text.get());
  return length;
}

std::size_t glibDecode(const std::string& text) {
  gsize byteCount = 0;
  guchar* const bytes = g_base64_decode(text.c_str(), &byteCount);
  benchmark::DoNotOptimize(bytes);
  g_free(bytes);
  return byteCount;
}

std::vector<unsigned char>& opensslBuffer() {
  static std::vector<unsigned char> buffer(4 << 20);
  return buffer;
}

std::size_t opensslEncode(const std::string& bytes) {
  const int length =
      EVP_EncodeBlock(opensslBuffer().data(), bytesOf(bytes), static_cast<int>(bytes.size()));
  return static_cast<std::size_t>(length);
}

std::size_t opensslEncodeLines(const std::string& bytes) {
  const std::unique_ptr<EVP_ENCODE_CTX, void (*)(EVP_ENCODE_CTX*)> context(EVP_ENCODE_CTX_new(),
                                                                           EVP_ENCODE_CTX_free);
  int length = 0, last = 0;
  EVP_EncodeInit(context.get());
  EVP_EncodeUpdate(context.get(), opensslBuffer().data(), &length, bytesOf(bytes),
                   static_cast<int>(bytes.size()));
  EVP_EncodeFinal(context.get(), opensslBuffer().data() + length, &last);
  return static_cast<std::size_t>(length + last);
}

std::size_t opensslDecode(const std::string& text) {
  const std::unique_ptr<EVP_ENCODE_CTX, void (*)(EVP_ENCODE_CTX*)> context(EVP_ENCODE_CTX_new(),
                                                                           EVP_ENCODE_CTX_free);
  int length = 0, last = 0;
  EVP_DecodeInit(context.get());
  EVP_DecodeUpdate(context.get(), opensslBuffer().data(), &length, bytesOf(text),
                   static_cast<int>(text.size()));
  EVP_DecodeFinal(context.get(), opensslBuffer().data() + length, &last);
  return static_cast<std::size_t>(length + last);
}

// One text without lines or junk goes in at once.
std::size_t opensslDecodeBlock(const std::string& text) {
  const int length =
      EVP_DecodeBlock(opensslBuffer().data(), bytesOf(text), static_cast<int>(text.size()));
  return static_cast<std::size_t>(length);
}

void add(const std::string& name, const std::string& text, const Operation& run) {
  benchmark::RegisterBenchmark(name.c_str(), [text, run](benchmark::State& state) {
    for (auto unused : state) benchmark::DoNotOptimize(run(text));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
  });
}

bool addBase64(const std::string& size, std::size_t byteCount) {
  const Input input = inputOf(byteCount);
  const struct {
    const char* name;
    Operation plain, lines, decode, decodeText;
  } kPeers[] = {
      {"ours", oursEncode(true), oursEncode(false), oursDecode, oursDecode},
      {"glib", glibEncode, glibEncodeLines, glibDecode, glibDecode},
      {"openssl", opensslEncode, opensslEncodeLines, opensslDecodeBlock, opensslDecode},
      {"ours-avx2", encodeWith(nomutil::textutil::kAvx2Base64), nullptr,
       decodeWith(nomutil::textutil::kAvx2Base64), decodeWith(nomutil::textutil::kAvx2Base64)},
      {"ours-portable", encodeWith(nomutil::textutil::kPortableBase64), nullptr,
       decodeWith(nomutil::textutil::kPortableBase64),
       decodeWith(nomutil::textutil::kPortableBase64)},
  };
  for (const auto& peer : kPeers) {
    const std::string behind = std::string("/") + peer.name + "/" + size;
    add("encode" + behind, input.bytes, peer.plain);
    if (peer.lines) add("encodelines" + behind, input.bytes, peer.lines);
    add("decode" + behind, input.encode, peer.decode);
    const std::pair<const char*, const std::string*> kTexts[] = {{"decodelines", &input.lines},
                                                                 {"decodelf", &input.lf},
                                                                 {"decodesparse", &input.sparse},
                                                                 {"decodedense", &input.dense}};
    for (const auto& [name, text] : kTexts) {
      if (peer.decodeText(*text) != byteCount) {
        std::cerr << peer.name << " does not decode " << name << '\n';
        return false;
      }
      add(name + behind, *text, peer.decodeText);
    }
  }
  return true;
}

// Runs on each of some arguments in turn.
template <class Argument, class Run>
void addEach(const char* name, const std::vector<Argument>& arguments, Run run) {
  benchmark::RegisterBenchmark(name, [arguments, run](benchmark::State& state) {
    std::size_t next = 0;
    for (auto unused : state) {
      benchmark::DoNotOptimize(run(arguments[next]));
      if (++next == arguments.size()) next = 0;
    }
  });
}

void addRest() {
  const std::vector<std::string> names = {"nbsp", "yuml", "diams", "euro", "ReplacementCharacter",
                                          "none"};
  addEach("entitybyname/ours", names,
          [](const std::string& name) { return findCharEntityByName(name.c_str()); });
  addEach("entitybyname/linear", names, [](const std::string& name) {
    for (const auto* row = nomutil::textutil::kEntities; row->name != nullptr; ++row) {
      if (name == row->name) return row->codePoint;
    }
    return 0;
  });
  const std::vector<int> codePoints = {160, 255, 9830, 8364, 65533, 7};
  addEach("entitybynumber/ours", codePoints, [](int codePoint) {
    const char* name = nullptr;
    findCharEntityByNumber(codePoint, &name, nullptr);
    return name;
  });
  addEach("entitybynumber/linear", codePoints, [](int codePoint) -> const char* {
    for (const auto* row = nomutil::textutil::kEntities; row->name != nullptr; ++row) {
      if (codePoint == row->codePoint) return row->name;
    }
    return nullptr;
  });
  addEach("touint64/ours", std::vector<std::string>{"10K", "1048576", "20P", "1844674407370955161"},
          [](const std::string& text) {
            std::uint64_t value;
            stringToUInteger64(text.c_str(), value);
            return value;
          });
  const std::vector<std::uint64_t> numbers = {7, 1234567, 999999999999998, ~std::uint64_t{0}};
  addEach("digits/ours", numbers, [](std::uint64_t number) { return getDigitsIn(number); });
  addEach("digits/log10", numbers, [](std::uint64_t number) {
    return static_cast<std::uint32_t>(std::log10(static_cast<double>(number))) + 1;
  });
  std::string latin;
  for (int i = 0; i < 100; ++i) latin += "caf\xC3\xA9 au lait; ";
  addEach("plaintext/ours", std::vector<std::string>{latin}, [](std::string text) {
    const StringUtf8Info source{reinterpret_cast<unsigned char*>(text.data()),
                                static_cast<std::uint32_t>(text.size()), 0, 0};
    KoraString<char> target;
    stringUtf8AsPlainText(source, 0, target);
    return target.length();
  });
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  // Multiples of 3, so that OpenSSL's block function counts no padding as bytes.
  if (!addBase64("1k", 1023) || !addBase64("1m", (1 << 20) - 1)) return 1;
  addRest();
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
