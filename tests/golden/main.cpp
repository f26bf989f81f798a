// Two million results of every family from a seed, and one SHA-256 over them, which is the same on
// every platform and in every build.
//   golden [--family NAME] [--seed N] [--expect "COUNT results: DIGEST"]
// prints the last line of each family and then of all. A run that ends with another line than it is
// to expect has the exit status 1.
#include "golden/geometry.h"
#include "golden/numbers.h"

#include "nomos/testhooks.h"

#include "sys/boxes.h"
#include "sys/compress.h"
#include "sys/datetime.h"
#include "sys/dbcallback.h"
#include "sys/decimals.h"
#include "sys/dynaobj.h"
#include "sys/formatters.h"
#include "sys/messages.h"
#include "sys/miscutil.h"
#include "sys/params.h"
#include "sys/textutil.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

namespace {

void decimals(Numbers& numbers, Results& results) {
  constexpr char kAlphabet[] = "0123456789012345678901234567890123456789.-";
  char text[256];
  const auto show = [&](const Decimal& value) {
    results.add(value.decimalToString(text, sizeof text, value.getScaleFactor()));
  };
  for (int i = 0; i < 60'000; ++i) {
    const Decimal a(numbers.text(kAlphabet, 30).c_str());
    const Decimal b(numbers.text(kAlphabet, 30).c_str());
    show(a + b);
    show(a * b);
    show(a.realDivide(b));
    results.add(static_cast<int>(a < b) - static_cast<int>(b < a));
    DskDecimal stored{};
    results.add(static_cast<int>(a.decimalToDskDecimal(stored, 255)));
    results.add(&stored, 14);
    char key[32] = {};
    std::uint32_t length = sizeof key;
    results.add(nomDecimalFromStringMakeKeyCompatible(numbers.text(kAlphabet, 20).c_str(), 23, 4,
                                                      key, &length));
    results.add(key, sizeof key);
  }
}

void dates(Numbers& numbers, Results& results) {
  char text[128];
  for (int i = 0; i < 40'000; ++i) {
    const DskTimeStamp stamp{1'700'000 + numbers.below(4'000'000), numbers.below(90'000'000)};
    results.add(formatTimeStamp(stamp, text, sizeof text));
    DskTimeStamp back{};
    extractTimeStamp(text, back);
    results.add(&back, sizeof back);
    literalFormatTimeStamp(stamp, text, sizeof text);
    results.add(text);
    const DskTimeStampOffset offset{stamp.date, stamp.time,
                                    static_cast<std::int32_t>(numbers.below(2'000)) - 1'000};
    results.add(formatTimeStampOffset(offset, text, sizeof text));
    const std::string random = numbers.text("0123456789:/- .+apmJanFebDec", 24);
    results.add(extractDate(random.c_str()));
    results.add(extractTime(random.c_str()));
    DskTimeStampInterval interval{};
    results.add(extractTimeStampInterval(random.c_str(), interval).milliseconds);
  }
}

void identifiers(Numbers& numbers, Results& results) {
  OidFormatter formatter;
  RelationalDbOidFormatter relational(RelationalDbOidFormatter::kNewerLayout);
  for (int i = 0; i < 40'000; ++i) {
    DskObjectId oid{};
    std::string bytes = numbers.bytes(0);
    bytes.resize(sizeof oid);
    for (char& byte : bytes) byte = numbers.below(3) == 0 ? static_cast<char>(numbers.next()) : 0;
    std::memcpy(&oid, bytes.data(), sizeof oid);
    results.add(formatter.formatOid(oid));
    results.add(relational.formatOid(oid));
  }
}

void texts(Numbers& numbers, Results& results) {
  for (int i = 0; i < 20'000; ++i) {
    const std::string bytes = numbers.bytes(200);
    char* text = nullptr;
    std::uint32_t length = 0;
    results.add(base64Encode(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                             static_cast<std::uint32_t>(bytes.size()), text, length,
                             numbers.below(2) == 0));
    std::string damaged(text, length);
    results.add(damaged);
    base64Free(text);
    if (!damaged.empty()) damaged[numbers.below(length)] = static_cast<char>(numbers.next() | 1);
    std::uint8_t* decoded = nullptr;
    length = 0;
    results.add(base64DecodeWithLength(damaged.data(), static_cast<std::uint32_t>(damaged.size()),
                                       decoded, length));
    if (decoded != nullptr) results.add(decoded, length);
    base64Free(decoded);
    std::uint64_t value = 0;
    results.add(
        stringToUInteger64(std::to_string(numbers.next() >> numbers.below(64)).c_str(), value));
    results.add(value);
    char metric[32];
    uInteger64ToMetricString(numbers.next() >> numbers.below(64), metric, sizeof metric);
    results.add(metric);
    results.add(getDigitsIn(numbers.next() >> numbers.below(64)));
    const char* name = nullptr;
    const char* description = nullptr;
    if (findCharEntityByNumber(static_cast<int>(numbers.below(9'000)), &name, &description)) {
      results.add(name);
    }
  }
}

void parameters(Numbers& numbers, Results& results) {
  struct Bits {
    std::uint64_t word[2];
  };
  constexpr PFormat kFormats[] = {DSKINTEGER,   DSKREAL,      DSKDATE,    DSKTIME, DSKTIMESTAMP,
                                  DSKINTEGER64, DSKCHARACTER, DSKBOOLEAN, DSKBYTE};
  char text[700];
  for (int i = 0; i < 50'000; ++i) {
    const PFormat format = kFormats[numbers.below(std::size(kFormats))];
    const Bits bits = {{numbers.next(), numbers.next()}};
    DskParam whole{};
    whole.header.format = format;
    whole.setValue(bits);
    text[0] = '\0';
    results.add(paramToString(&whole, text, sizeof text));
    results.add(text);

    ShortDskParam source{};
    source.header.format = format;
    source.setValue(bits);
    ShortDskParam other{};
    other.setValue(Bits{});  // a new parameter holds anything
    results.add(paramNegateValue(&other, &source));
    results.add(other.getValue<std::uint64_t>());
    ShortDskParam image{};
    results.add(paramAsBinary(&image, &source));
    ShortDskParam back{};
    back.header.format = format;
    back.setValue(Bits{});
    results.add(paramFromBinary(&back, &image));
    results.add(back.getValue<std::uint64_t>());
  }
}

void objects(Numbers& numbers, Results& results) {
  for (int i = 0; i < 6'000; ++i) {
    DskObjectId parent{};
    parent.instanceId = numbers.next();
    KoraDynamicObject object(parent);
    for (int j = 0; j < 8; ++j) {
      constexpr PFormat kFormats[] = {DSKSTRING,  DSKBINARY, DSKINTEGER64,
                                      DSKDECIMAL, DSKDATE,   DSKSTRINGUTF8BLOCK};
      const std::string name = numbers.text("abc", 3);
      results.add(object.addAttribute(name.c_str(), kFormats[numbers.below(6)]));
      const std::string value = numbers.text("0123456789", 16);
      results.add(object.setPropertyValue(numbers.text("abc", 3).c_str(),
                                          static_cast<std::uint32_t>(value.size()), value.data()));
    }
    for (const auto* image :
         {&object.getPropertyDescriptions(), &object.getValues(), &object.getLongValues()}) {
      results.add(image->data(), image->length());
    }
    results.add(object.hash());
    results.add(object.getRevision());
  }
}

void blocks(Numbers& numbers, Results& results) {
  for (int i = 0; i < 3'000; ++i) {
    const std::string bytes =
        numbers.below(2) == 0 ? numbers.bytes(2'000) : numbers.text("ab", 4'000);
    DskParam block;
    paramCreateKoraBinary(&block, nullptr, 0, 0xFFFFFFFF, 2);
    results.add(doAltCompress(false, reinterpret_cast<const unsigned char*>(bytes.data()),
                              static_cast<unsigned>(bytes.size()),
                              'z' + 256 * static_cast<int>(numbers.below(10)), &block));
    unsigned char* image = nullptr;
    std::uint32_t length = 0;
    DerefBinary(&block, &image, &length);
    DskParam expanded;
    paramCreateKoraBinary(&expanded, nullptr, 0, 0xFFFFFFFF, 2);
    results.add(doAltUncompress(false, image, length, &expanded));
    unsigned char* back = nullptr;
    DerefBinary(&expanded, &back, &length);
    if (back != nullptr) results.add(back, length);
    unsigned sum = numbers.below(0xFFFFFFFF);
    results.add(compute_CRC32(back, &length, &sum));
    paramDeleteKoraBinary(&expanded);
    paramDeleteKoraBinary(&block);
  }
}

void connections(Numbers& numbers, Results& results) {
  const char* const words[] = {"TCPIPv4",
                               "TCPIPv6",
                               "Hpsm",
                               "File",
                               "://",
                               ":",
                               "/",
                               "?",
                               "[::1]",
                               "localhost",
                               "6005",
                               "LocalPort",
                               "=",
                               "&",
                               ",",
                               " ",
                               "[",
                               "]",
                               "0123abcd-4567-89ef-0000-abcdefabcdef"};
  ServerURIParser parser;
  for (int i = 0; i < 20'000; ++i) {
    std::string text = numbers.below(2) == 0 ? "TCPIPv4://localhost:6005/" : "";
    for (std::uint32_t j = numbers.below(10); j > 0; --j)
      text += words[numbers.below(std::size(words))];
    results.add(parser.parseServerURI(text.c_str()));
    results.add(std::string(parser._host.data()));
    results.add(parser.parseServerNodeSpecifications(text.c_str()));
    results.add(std::string(parser._port.data()));
  }
}

void messages(Numbers& numbers, Results& results) {
  // Numbers that have a text: an unknown one depends on the message file.
#define NUMBER(name, number, text) number,
  constexpr unsigned kKnown[] = {NOMUTIL_MESSAGE_LIST(NUMBER)};
#undef NUMBER
  char text[128];
  for (int i = 0; i < 20'000; ++i) {
    const unsigned number = kKnown[numbers.below(std::size(kKnown))];
    results.add(nomGetMessageText(number, text, 1 + numbers.below(60)));
    results.add(text);
  }
}

void callbacks(Numbers& numbers, Results& results) {
  static Results* sink = nullptr;
  sink = &results;
  DbCallbackHandler handler;
  handler.setPercentProgressCB([](DbCallbackHandler*, unsigned percent) {
    sink->add(percent);
    return true;
  });
  handler.setByteProgressCB([](DbCallbackHandler*, std::uint64_t bytes) {
    sink->add(bytes);
    return true;
  });
  for (int i = 0; i < 2'000; ++i) {
    handler.percentStep = numbers.below(20);
    handler.byteStep = numbers.below(1'000);
    handler.startOperation("backup", "f.dat", numbers.below(100'000));
    for (int j = 0; j < 20; ++j)
      results.add(handler.updateProgress(numbers.below(100'000)) ? 1 : 0);
  }
}

void boxes(Numbers& numbers, Results& results) {
  BoxManager manager("golden");
  Box* box = nullptr;
  if (manager.initialise(false) != 0 || manager.boxAllocate(box, false) != 0) return;
  std::vector<Memo*> memos(20);
  unsigned number = 0;
  for (Memo*& memo : memos) {
    ++number;
    box->memoAllocate(memo, number, numbers.below(16), number % 2 == 0);
  }
  for (int i = 0; i < 40'000; ++i) {
    Memo* const memo = memos[numbers.below(20)];
    const std::uint32_t count = numbers.below(4);
    memo->dispatchMultiple(count + 1);
    if (count == 0) memo->update(1 + numbers.below(1'000), 5, true);
    unsigned value = 0;
    unsigned signals = 0;
    for (std::uint32_t j = numbers.below(5); j > 0; --j) {
      box->receive(0, value, signals);
      results.add(value);
      results.add(signals);
    }
  }
}

struct Family {
  const char* name;
  void (*run)(Numbers&, Results&);
};
constexpr Family kFamilies[] = {{"decimals", decimals},
                                {"dates", dates},
                                {"identifiers", identifiers},
                                {"texts", texts},
                                {"parameters", parameters},
                                {"objects", objects},
                                {"blocks", blocks},
                                {"connections", connections},
                                {"messages", messages},
                                {"callbacks", callbacks},
                                {"boxes", boxes},
                                {"geometry", geometry}};

// Every digit of a pinned digest hangs on it.
constexpr std::uint64_t kSeed = 20240105;

struct Options {
  std::string family;
  std::uint64_t seed = kSeed;
  std::string expected;
};

bool parse(int argc, char** argv, Options& options) {
  for (int i = 1; i < argc; i += 2) {
    const std::string name = argv[i];
    if (i + 1 == argc) return false;
    if (name == "--family") {
      options.family = argv[i + 1];
    } else if (name == "--expect") {
      options.expected = argv[i + 1];
    } else if (name == "--seed") {
      const char* const end = argv[i + 1] + std::strlen(argv[i + 1]);
      const auto [rest, fault] = std::from_chars(argv[i + 1], end, options.seed);
      if (fault != std::errc() || rest != end) return false;
    } else {
      return false;
    }
  }
  const auto isWanted = [&](const Family& family) { return options.family == family.name; };
  return options.family.empty() ||
         std::any_of(std::begin(kFamilies), std::end(kFamilies), isWanted);
}

std::string lineOf(std::uint64_t count, const std::string& digest) {
  return std::to_string(count) + " results: " + digest;
}

}  // namespace

int main(int argc, char** argv) {
  // The example of FIPS 180-4.
  Sha256 abc;
  abc.add("abc", 3);
  if (abc.digest() != "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad") return 1;
  Options options;
  if (!parse(argc, argv, options)) {
    std::fprintf(stderr, "golden [--family NAME] [--seed N] [--expect LINE], of the families\n");
    for (const Family& family : kFamilies) std::fprintf(stderr, "  %s\n", family.name);
    return 2;
  }
  Numbers seeds(options.seed);
  Sha256 all;
  std::uint64_t count = 0;
  for (const Family& family : kFamilies) {
    Numbers numbers(seeds.next());
    if (!options.family.empty() && options.family != family.name) continue;
    nosSetLogSink([](void*, NosLogLevel, const char*) {}, nullptr);
    Results results;
    family.run(numbers, results);
    const std::string digest = results.digest();
    std::printf("%-12s %s\n", family.name, lineOf(results.count(), digest).c_str());
    all.add(digest.data(), digest.size());
    count += results.count();
  }
  const std::string line = lineOf(count, all.digest());
  std::printf("%s\n", line.c_str());
  if (options.expected.empty() || options.expected == line) return 0;
  std::printf("expected:    %s\n", options.expected.c_str());
  return 1;
}
