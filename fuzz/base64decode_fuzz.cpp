// Any text as base64. Laws: every set of inner loops gives the same status and bytes; characters
// that are skipped make no difference; what was decoded and encoded again, in lines or not, decodes
// to the same; and a failure leaves the byte count.
#include "sys/messages.h"
#include "sys/textutil.h"
#include "textutil/base64kernels.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

namespace {

constexpr std::uint32_t kUntouched = 0xFFFFFFFF;

void require(bool holds) {
  if (!holds) __builtin_trap();
}

// A status and the bytes, decoded from and into blocks of exactly the size.
std::string decodeWith(const nomutil::textutil::Base64Kernels& kernels, const std::string& text) {
  const std::unique_ptr<char[]> exact(new char[text.size()]);
  std::memcpy(exact.get(), text.data(), text.size());
  const std::unique_ptr<std::uint8_t[]> bytes(new std::uint8_t[text.size()]);
  std::uint32_t byteCount = kUntouched;
  const int status = decodeBase64(kernels, exact.get(), text.size(), bytes.get(), byteCount);
  require(status == 0 || (status == kBase64DecodingFailed && byteCount == kUntouched));
  if (status != 0) return "-";
  return "+" + std::string(bytes.get(), bytes.get() + byteCount);
}

std::string decode(const std::string& text) {
  std::uint8_t* bytes;
  std::uint32_t byteCount = kUntouched;
  const int status = base64DecodeWithLength(text.data(), static_cast<std::uint32_t>(text.size()),
                                            bytes, byteCount);
  const std::string all = status == 0 ? "+" + std::string(bytes, bytes + byteCount) : "-";
  base64Free(bytes);
  return all;
}

// The text up to and with the padding, without what is skipped.
std::string withoutJunk(const std::string& text) {
  std::string clean;
  std::size_t i = 0;
  for (; i < text.size() && text[i] != '='; ++i) {
    if (std::strchr(nomutil::textutil::kAlphabet, text[i]) != nullptr && text[i] != '\0') {
      clean += text[i];
    }
  }
  return clean + text.substr(i);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  const std::string result = decode(text);
  for (const auto* kernels : nomutil::textutil::allBase64Kernels()) {
    if (kernels->isUsable()) require(decodeWith(*kernels, text) == result);
  }
  require(decode(withoutJunk(text)) == result);
  if (result[0] == '-') return 0;
  for (const bool oneLine : {false, true}) {
    char* again;
    std::uint32_t length;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(result.data() + 1);
    require(base64Encode(bytes, static_cast<std::uint32_t>(result.size() - 1), again, length,
                         oneLine) == 0);
    require(std::strlen(again) == length && decode(again) == result);
    base64Free(again);
  }
  return 0;
}
