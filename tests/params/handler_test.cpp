// The data handler, one code at a time, on objects of its own and of another kind, and the
// functions that make, release and look into the parameters that hold them. Blocks of the heap are
// counted: nothing is lost, whatever fails.

#include "exactparam.h"
#include "nomos/heap.h"

#include <cstdio>
#include <new>

using namespace nomtest;

namespace {

using DataHandler = Checked;

std::string lineOf(const char* function, const char* what, unsigned number) {
  char line[100];
  std::snprintf(line, sizeof line, "KoraString::%s - invalid %s (0x%x)\n", function, what, number);
  return line;
}

// One call in words: the status; the text that data points to, or what was written there; the
// lengths and the maximum of the argument; the count. All but the status only where it is new.
std::string call(DskParam* parameter, const std::string& code, const std::string& data,
                 std::uint32_t count = 0, std::uint32_t characters = 0) {
  std::vector<char> memory = bytesOf(data);
  auto* const bytes = reinterpret_cast<unsigned char*>(memory.data());
  StringUtf8Info argument{bytes, static_cast<std::uint32_t>(memory.size()), characters, 99};
  const StringUtf8Info before = argument;
  std::uint32_t n = count;
  std::string words = std::to_string(
      koraDataHandler(static_cast<std::uint8_t>(numberOf(code)), parameter, &argument, &n));
  const std::string text = argument.data != bytes && argument.data != nullptr
                               ? wordOf(std::string(reinterpret_cast<char*>(argument.data)))
                               : wordOf(memory);
  if (argument.data == nullptr && bytes != nullptr) words += ":null";
  if (text != data) words += ":" + text;
  if (std::memcmp(&argument.byteLength, &before.byteLength, 8) != 0) {
    words += ":" + std::to_string(argument.byteLength) + "/" + std::to_string(argument.charLength) +
             "/" + std::to_string(argument.maximum);
  }
  return words + (n == count ? "" : ":n" + std::to_string(n));
}

// The columns: held format, code, data, count, characters, the call in words and the text then. A
// held text is "abcdef", "abcde~" in UTF-8.
TEST_F(DataHandler, DoesWhatTheCodesSay) {
  const auto check = [](const Row& row) {
    const unsigned format = numberOf(row[0]);
    const Param held(format, format == 54 ? "abcde~" : "abcdef");
    EXPECT_EQ(call(held, row[1], row[2], numberOf(row[3]), numberOf(row[4])), row[5])
        << testing::PrintToString(row);
    EXPECT_EQ(held.format(), format);
    return held.word();
  };
  expectRows(7, check, R"(
      25 16 _    0 0 0:abcdef     abcdef    25 17 #{5} 3 0 0:abc|#       abcdef
      25 17 #{7} 9 0 0:abcdef|    abcdef    25 18 xyz  3 0 0             xyz
      25 18 _    0 0 0            _         25 19 _    3 0 0             abc
      25 20 _    0 0 0:n6         abcdef    25 21 _    0 0 0:n4294967295 abcdef
      25 22 #{4} 3 0 0:abc#       abcdef    25 22 #{6} 9 0 0:abcdef      abcdef
      25 23 xyz  3 0 0            abcdefxyz 25 24 _    0 0 0:abcdef:n6   abcdef
      25 25 _    0 0 0            (none)    33 32 _    0 0 0:abcdef      abcdef
      33 33 #{4} 3 0 0:abc#       abcdef    33 33 #{6} 9 0 0:abcdef      abcdef
      33 34 xyz  3 0 0            xyz       33 35 _    3 0 0             abc
      33 36 _    0 0 0:n6         abcdef    33 37 _    0 0 0:n4294967295 abcdef
      33 38 xyz  2 0 0            abcdefxy  33 39 _    0 0 0:abcdef:n6   abcdef
      33 40 _    0 0 0            (none)    54 64 _    0 0 0:abcde~:7/6/4294967295 abcde~/6
      54 65 #{8} 7 0 0:abcde~#:7/6/99 abcde~/6 54 65 #{6} 6 5 1035:0/0/99 abcde~/6
      54 66 ~z   0 2 0            ~z/2      54 67 _    0 0 0             _/0
      54 68 _    0 0 0:n7         abcde~/6  54 69 _    0 0 0:n6          abcde~/6
      54 70 _    0 0 0:n4294967295 abcde~/6  54 71 ~z   0 2 0             abcde~~z/8
      54 72 _    0 0 0            (none)

      33 17 #{7} 9 0 0:abcdef|    abcdef    33 24 _    0 0 0:abcdef:n6   abcdef
      33 69 _    0 0 0:n6         abcdef    25 38 xyz  3 0 0             abcdefxyz
      25 64 _    0 0 0:abcdef:6/6/4294967295 abcdef 25 66 xyz 0 3 0             xyz
      54 20 _    0 0 0:n7         abcde~/6  54 25 _    0 0 0             (none)
      25 72 _    0 0 0            (none)    25 71 xyz  0 3 0             abcdefxyz)");
}

TEST_F(DataHandler, KeepsTheTextThatWouldExceedTheMaximum) {
  const auto check = [](const Row& row) {
    const unsigned format = numberOf(row[0]);
    const Param over(format, "abcde", 4), held(format, "abcd", 4);
    EXPECT_EQ(std::to_string(over.made), row[3]);
    EXPECT_EQ(over->header.usage, 3);
    EXPECT_EQ(over.held(), nullptr);
    const std::string before = held.snapshot();
    EXPECT_EQ(call(held, row[2], "e", 1, 1), row[3]);
    EXPECT_EQ(held.snapshot(), before);
    return call(held, row[1], "_");
  };
  expectRows(5, check, "25 21 23 1035 0:n4  33 37 38 1091 0:n4  54 70 71 1124 0:n1");
  EXPECT_EQ(call(Param(54, "_", 40), "70", "_"), "0:n10");
}

// What a code does not name is null here.
TEST_F(DataHandler, IsSafeForEveryCodeOnEveryObject) {
  for (unsigned i = 0; i < 256 * 7; ++i) {
    const unsigned code = i % 256, formats[] = {5, 25, 33, 54, 25, 33, 54},
                   format = formats[i / 256];
    const Param held = i < 1024 ? Param(format) : Param(format, "abc");
    std::vector<char> memory(101, 'x');
    StringUtf8Info argument{reinterpret_cast<unsigned char*>(memory.data()), 100, 100, 0};
    std::uint32_t count = 100;
    const bool isCounted = !isAmong(code, {16, 25, 32, 40, 64, 66, 71, 72});
    const bool isArgued = !isAmong(code, {19, 20, 21, 25, 35, 36, 37, 40, 67, 68, 69, 70, 72});
    const int status =
        koraDataHandler(static_cast<std::uint8_t>(code), held, isArgued ? &argument : nullptr,
                        isCounted ? &count : nullptr);
    const bool isKnown =
        (code >= 16 && code <= 25) || (code >= 32 && code <= 40) || (code >= 64 && code <= 72);
    const unsigned settled = (code & 16) ? 25 : (code & 64) ? 54 : (code & 32) ? 33 : 5;
    const bool isUnsettled = format == 5 && settled == 5;
    SCOPED_TRACE(testing::Message() << "code " << code << " on " << format);
    EXPECT_EQ(status, isKnown ? 0 : isUnsettled ? 1000 : 1002);
    EXPECT_EQ(lines(), isKnown       ? ""
                       : isUnsettled ? lineOf("koraDataHandler", "format", 5)
                                     : lineOf("koraDataHandler", "operation", code));
    EXPECT_EQ(held.format(), format == 5 ? settled : format);
    EXPECT_EQ((isKnown || code == 31) && held.held() == nullptr, isAmong(code, {25, 40, 72}));
  }
}

TEST_F(DataHandler, RefusesOtherFormatsAndAUsedAny) {
  const std::pair<const char*, int (*)(DskParam*)> functions[] = {
      {"koraDataHandler", [](DskParam* p) { return koraDataHandler(20, p, nullptr, nullptr); }},
      {"paramDeleteKoraString", paramDeleteKoraString},
      {"paramDeleteKoraBinary", paramDeleteKoraBinary},
      {"paramDeleteKoraStringUtf8", paramDeleteKoraStringUtf8}};
  for (const unsigned format : {0u, 1u, 11u, 14u, 36u, 51u, 57u, 65535u}) {
    const Param other(format);
    const std::string before = other.snapshot();
    for (const auto& [name, function] : functions) {
      EXPECT_EQ(function(other), 1000);
      EXPECT_EQ(lines(), lineOf(name, "format", format));
    }
    EXPECT_EQ(paramDeleteKoraAny(other), 0);
    EXPECT_EQ(other.snapshot(), before);
  }
  const Param any(5);
  EXPECT_EQ(paramDeleteKoraAny(any), 0);
  EXPECT_EQ(any.format(), 5u);
  any->setValue(DskHandlerValue{koraDataHandler, reinterpret_cast<void*>(0x12345678ABCDEF01), any});
  EXPECT_EQ(koraDataHandler(23, any, nullptr, nullptr), 1000);
  EXPECT_EQ(lines(), "koraDataHandler: non-null item 0xabcdef01\n");
}

TEST_F(DataHandler, TakesAnObjectThatItHasNoMemoryForAsEmpty) {
  const auto check = [](const Row& row) {
    const Param fresh(5);
    nosFailAllocation(1);
    const std::string words = call(fresh, row[0], "########", 7, 5);
    // The release codes have asked for no memory.
    void* const next = XHeap::library().allocate(1);
    EXPECT_EQ(next == nullptr, isAmong(numberOf(row[0]), {25, 40, 72}));
    XHeap::library().release(next);
    EXPECT_EQ(fresh.held(), nullptr) << row[0];
    EXPECT_EQ(call(fresh, "18", "later", 5, 0), "0");
    EXPECT_EQ(fresh.word().substr(0, 5), "later");
    return words;
  };
  expectRows(2, check, R"(
      16 0:null 17 0:|#{7} 18 0 19 0 20 0:n0 22 0 23 0 24 0:null:n0 25 0
      32 0:null 33 0 34 0 35 0 36 0:n0 38 0 39 0:null:n0 40 0
      65 0:0/0/99 66 0 67 0 68 0:n0 69 0:n0 71 0 72 0)");
}

TEST_F(DataHandler, LosesOnlyTheInitialTextWhenAnAllocationFails) {
  for (const unsigned format : {25u, 33u, 54u}) {
    for (const std::uint64_t n : {1u, 2u}) {
      nosFailAllocation(n);
      const Param fresh(format, std::string(3000, 'x'));
      nosFailAllocation(0);
      EXPECT_EQ(fresh.made, 0);
      EXPECT_EQ(fresh.word(), "(none)");
      EXPECT_EQ(fresh->header.usage + fresh->header.more, 2);
      EXPECT_EQ(call(fresh, "38", "later", 5), "0");
      EXPECT_EQ(fresh.word().substr(0, 5), "later");
      const std::string before = fresh.snapshot();
      for (const char* const code : {"18", "19", "23", "34", "35", "38", "66", "67", "71"}) {
        nosFailAllocation(1);
        EXPECT_EQ(call(fresh, code, std::string(3000, 'x'), 3000, 3000), "1448") << code;
      }
      EXPECT_EQ(fresh.snapshot(), before);
    }
  }
}

TEST_F(DataHandler, TakesAPieceOfItsOwnTextByTheSelfOfTheValueArea) {
  const Param held(25, "abcdef"), other(25, "x");
  const DskHandlerValue value{koraDataHandler, other.held(), held};
  StringUtf8Info argument{};
  std::uint32_t count = 6;
  EXPECT_EQ(koraGetString(&value, &argument), 0);
  EXPECT_EQ(koraDataHandler(23, held, &argument, &count), 0);
  EXPECT_EQ(koraSetString(held, static_cast<const char*>(held.held()->bytes()) + 4, 6), 0);
  EXPECT_EQ(held.word(), "efabcd");
}

template <class String>
String* onTheHeap(const String& source) {
  return new (XHeap::library().allocate(sizeof(String))) String(source);
}

TEST_F(DataHandler, ReleasesAnObjectThatItWasGiven) {
  unsigned char bytes[] = {'a', 'b', 0xC3, 0xA4};
  const auto check = [](const char* word, int (*release)(DskParam*), auto set, const auto& object) {
    for (const auto last : {release, paramDeleteKoraAny}) {
      const Param param(1);
      EXPECT_EQ(set(param, onTheHeap(object), 9), 0);
      EXPECT_EQ(param.word(), word);
      EXPECT_EQ(param->header.usage * 256 + param->header.more, 9 * 256);
      EXPECT_TRUE(param->getValue<DskHandlerValue>().self == param.get());
      EXPECT_EQ(last(param), 0);
      EXPECT_EQ(param.word(), "(none)");
    }
  };
  check("ab", paramDeleteKoraString, paramSetKoraString, KoraString<char>("ab", 2));
  check("ab", paramDeleteKoraBinary, paramSetKoraBinary, KoraString<unsigned char>(bytes, 2));
  check("ab~/3", paramDeleteKoraStringUtf8, paramSetKoraStringUtf8,
        KoraUtf8String({bytes, 4, 3, 0}));
}

// Each place is 'p' for the parameter itself, 'i' for its inline data, 't' for the text elsewhere
// and '-' for an output that is not touched.
TEST_F(DataHandler, IsDereferencedInPlace) {
  const auto check = [](const Row& row) {
    const Param param(numberOf(row[0]), "abcde@3");
    auto* const self = reinterpret_cast<unsigned char*>(param.get());
    const void* const text = param.isHeld() ? param.held()->bytes() : param.memory.data();
    if (param.isHeld()) param->setValue(DskHandlerValue{koraDataHandler, param.held(), nullptr});
    const auto place = [&](const void* at) {
      return std::string(at == self ? "p" : at == self + 12 ? "i" : at == text ? "t" : "-");
    };
    char* characters = nullptr;
    unsigned char *bytes = nullptr, *utf8 = nullptr;
    std::uint32_t length = 99, byteLength = 99, charLength = 99;
    EXPECT_EQ(DerefString(param, &characters) + DerefBinary(param, &bytes, &length) +
                  DerefStringUtf8(param, &utf8, &byteLength, &charLength),
              0);
    EXPECT_EQ(param->getValue<DskHandlerValue>().self == param,
              isAmong(param.format(), {5, 25, 33}));
    return place(characters) + "," + place(bytes) + std::to_string(length) + "," + place(utf8) +
           std::to_string(byteLength) + "/" + std::to_string(charLength);
  };
  expectRows(2, check, R"(
      1 t,p0,-99/99  2 p,p0,-99/99  4 p,p0,-99/99 11 p,i5,-99/99 14 t,p0,-99/99  25 t,p0,-99/99
      33 p,t5,-99/99 34 p,t5,-99/99 36 p,p0,-99/99 51 p,p0,t5/5  54 p,p0,t5/5    57 p,p0,-99/99)");
  EXPECT_EQ(DerefString(nullptr, nullptr) + DerefBinary(nullptr, nullptr, nullptr) +
                DerefStringUtf8(nullptr, nullptr, nullptr, nullptr),
            0);
}

}  // namespace
