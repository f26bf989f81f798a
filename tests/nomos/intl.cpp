// Conversions between the code page, UTF-8 and UTF-32, and the classes of characters. Expected
// characters are those of the Unicode consortium's table of Windows-1252, its malformed sequences
// those of The Unicode Standard, section 3.9.

#include "nomos/intl.h"

#include "nomos/status.h"
#include "nomos/testhooks.h"

#include <gtest/gtest.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

namespace {

namespace fs = std::filesystem;

struct Converted {
  int status;
  std::string bytes;
  std::uint32_t characters;
};

Converted convert(IntlFormat from, const std::string& source, IntlFormat to,
                  std::uint32_t room = 4096) {
  char target[4100];
  target[room] = '#';
  std::uint32_t byteCount = 77;
  std::uint32_t characterCount = 77;
  const int status =
      intlConvertString(from, source.data(), static_cast<std::uint32_t>(source.size()), to, target,
                        room, byteCount, characterCount);
  EXPECT_EQ(target[room], '#') << "beyond the room";
  return {status, std::string(target, byteCount), characterCount};
}

std::string utf32(std::uint32_t character) {
  std::string bytes;
  for (unsigned i = 0; i < 4; ++i) bytes += static_cast<char>(character >> (8 * i) & 0xFF);
  return bytes;
}

// The code page is that of a row while this lives, the configured one afterwards.
class WithCodePage {
 public:
  explicit WithCodePage(unsigned number) { EXPECT_TRUE(nosSetCodePage(number)) << number; }
  ~WithCodePage() { nosSetCodePage(0); }
  WithCodePage(const WithCodePage&) = delete;
  WithCodePage& operator=(const WithCodePage&) = delete;
};

TEST(Convert, MapsEveryByteOfWindows1252) {
  const WithCodePage codePage(1252);
  const std::map<unsigned, std::uint32_t> specials = {
      {0x80, 0x20AC}, {0x82, 0x201A}, {0x83, 0x0192}, {0x84, 0x201E}, {0x85, 0x2026},
      {0x86, 0x2020}, {0x87, 0x2021}, {0x88, 0x02C6}, {0x89, 0x2030}, {0x8A, 0x0160},
      {0x8B, 0x2039}, {0x8C, 0x0152}, {0x8E, 0x017D}, {0x91, 0x2018}, {0x92, 0x2019},
      {0x93, 0x201C}, {0x94, 0x201D}, {0x95, 0x2022}, {0x96, 0x2013}, {0x97, 0x2014},
      {0x98, 0x02DC}, {0x99, 0x2122}, {0x9A, 0x0161}, {0x9B, 0x203A}, {0x9C, 0x0153},
      {0x9E, 0x017E}, {0x9F, 0x0178}};
  std::string all;
  for (unsigned byte = 0; byte < 256; ++byte) {
    const std::string source(1, static_cast<char>(byte));
    const auto special = specials.find(byte);
    const std::uint32_t expected = special != specials.end() ? special->second : byte;
    EXPECT_EQ(convert(IntlFormat::CodePage, source, IntlFormat::Utf32).bytes, utf32(expected))
        << std::hex << byte;
    all += source;
  }
  for (const IntlFormat form : {IntlFormat::Utf8, IntlFormat::Utf32, IntlFormat::CodePage}) {
    const Converted there = convert(IntlFormat::CodePage, all, form);
    EXPECT_EQ(there.characters, 256u);
    EXPECT_EQ(convert(form, there.bytes, IntlFormat::CodePage).bytes, all);
  }
}

TEST(Convert, AgreesWithTheStandardAtTheBordersOfUtf8) {
  const struct {
    std::uint32_t character;
    const char* bytes;
  } rows[] = {{0x7F, "\x7F"},           {0x80, "\xC2\x80"},
              {0x7FF, "\xDF\xBF"},      {0x800, "\xE0\xA0\x80"},
              {0xD7FF, "\xED\x9F\xBF"}, {0xE000, "\xEE\x80\x80"},
              {0xFFFF, "\xEF\xBF\xBF"}, {0x10000, "\xF0\x90\x80\x80"},
              {0x20AC, "\xE2\x82\xAC"}, {0x10FFFF, "\xF4\x8F\xBF\xBF"}};
  for (const auto& row : rows) {
    const std::string wide = utf32(row.character);
    EXPECT_EQ(convert(IntlFormat::Utf32, wide, IntlFormat::Utf8).bytes, row.bytes);
    EXPECT_EQ(convert(IntlFormat::Utf8, row.bytes, IntlFormat::Utf32).bytes, wide);
  }
}

TEST(Convert, RefusesMalformedSequences) {
  const struct {
    const char* bytes;
    const char* note;
  } rows[] = {{"\x80", "a continuation alone"},
              {"\xC0\x80", "overlong NUL"},
              {"\xC1\xBF", "overlong 7F"},
              {"\xE0\x9F\xBF", "overlong 7FF"},
              {"\xF0\x8F\xBF\xBF", "overlong FFFF"},
              {"\xED\xA0\x80", "first surrogate"},
              {"\xED\xBF\xBF", "last surrogate"},
              {"\xF4\x90\x80\x80", "110000"},
              {"\xF5\x80\x80\x80", "beyond 13FFFF"},
              {"\xFF", "no lead byte"},
              {"\xC3", "cut after one of two"},
              {"\xE2\x82", "cut after two of three"},
              {"\xF0\x9F\x98", "cut after three of four"},
              {"\xC3"
               "A",
               "a letter for a continuation"},
              {"\xE2\x82"
               "A",
               "a letter for the second continuation"}};
  for (const auto& row : rows) {
    const std::string source = std::string("a\xC3\xA9") + row.bytes;
    const Converted result = convert(IntlFormat::Utf8, source, IntlFormat::Utf8);
    EXPECT_EQ(result.status, kNosInvalidParameterValue) << row.note;
    EXPECT_EQ(result.bytes, "a\xC3\xA9") << row.note;
    EXPECT_EQ(result.characters, 2u) << row.note;
    std::uint32_t characters = 77;
    EXPECT_EQ(intlStringUTF8VerifyCountchars(reinterpret_cast<const unsigned char*>(source.data()),
                                             static_cast<std::uint32_t>(source.size()), characters),
              kNosInvalidParameterValue)
        << row.note;
    EXPECT_EQ(characters, 2u) << row.note;
  }
  for (const std::string& wide : {utf32(0xD800), utf32(0xDFFF), utf32(0x110000), utf32(0x80000041),
                                  std::string("A\0\0", 3)}) {
    EXPECT_EQ(convert(IntlFormat::Utf32, wide, IntlFormat::Utf8).status, kNosInvalidParameterValue);
  }
}

TEST(Convert, StopsBeforeTheCharacterThatDoesNotFit) {
  const std::string source = "a\xE2\x82\xAC\xC3\xA9";
  const struct {
    std::uint32_t room;
    int status;
    std::uint32_t bytes;
    std::uint32_t characters;
  } rows[] = {{0, kNosStringTooLong, 0, 0}, {1, kNosStringTooLong, 1, 1},
              {3, kNosStringTooLong, 1, 1}, {4, kNosStringTooLong, 4, 2},
              {5, kNosStringTooLong, 4, 2}, {6, 0, 6, 3}};
  for (const auto& row : rows) {
    const Converted result = convert(IntlFormat::Utf8, source, IntlFormat::Utf8, row.room);
    EXPECT_EQ(result.status, row.status) << row.room;
    EXPECT_EQ(result.bytes.size(), row.bytes) << row.room;
    EXPECT_EQ(result.characters, row.characters) << row.room;
  }
  EXPECT_EQ(convert(IntlFormat::Utf8, "", IntlFormat::Utf32, 0).status, 0);
}

TEST(Convert, FindsWhatIsNotAsciiAtEveryPlace) {
  for (std::size_t length = 0; length < 20; ++length) {
    for (std::size_t place = 0; place <= length; ++place) {
      std::string source(length, 'a');
      source.insert(place, "\xC3\xA9");
      const auto characters = static_cast<std::uint32_t>(length + 1);
      const auto* const bytes = reinterpret_cast<const unsigned char*>(source.data());
      std::uint32_t counted = 77;
      EXPECT_EQ(intlStringUTF8VerifyCountchars(bytes, characters + 1, counted), 0);
      EXPECT_EQ(counted, characters);
      const Converted there = convert(IntlFormat::Utf8, source, IntlFormat::CodePage, characters);
      EXPECT_EQ(there.status, 0);
      EXPECT_EQ(there.characters, characters);
      EXPECT_EQ(there.bytes, std::string(length, 'a').insert(place, "\xE9"));
      EXPECT_EQ(convert(IntlFormat::CodePage, there.bytes, IntlFormat::Utf8).bytes, source);
      EXPECT_EQ(convert(IntlFormat::Utf8, source, IntlFormat::CodePage, characters - 1).bytes,
                there.bytes.substr(0, length));
    }
  }
}

TEST(Convert, WritesAQuestionMarkForWhatTheCodePageLacks) {
  // The euro, Cyrillic zhe, Polish l with stroke, an emoji.
  const std::string source = "\xE2\x82\xAC \xD0\xB6 \xC5\x81 \xF0\x9F\x98\x80";
  const struct {
    unsigned codePage;
    const char* bytes;
  } rows[] = {
      {1252, "\x80 ? ? ?"}, {1250, "\x80 ? \xA3 ?"}, {1251, "\x88 \xE6 ? ?"}, {28591, "? ? ? ?"}};
  for (const auto& row : rows) {
    const WithCodePage codePage(row.codePage);
    const Converted result = convert(IntlFormat::Utf8, source, IntlFormat::CodePage);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.bytes, row.bytes) << row.codePage;
    EXPECT_EQ(result.characters, 7u);
  }
}

TEST(CodePage, RefusesThatOfNoSingleByteAsciiAndKeepsTheOldOne) {
  const WithCodePage codePage(1251);
  // 37 has one byte a character, but its letters do not lie where those of ASCII do.
  for (const unsigned number : {932u, 936u, 65001u, 99999u, 1u, 37u}) {
    EXPECT_FALSE(nosSetCodePage(number)) << number;
  }
  EXPECT_EQ(convert(IntlFormat::CodePage, "\xE6", IntlFormat::Utf8).bytes, "\xD0\xB6");
}

TEST(CodePage, IsTheOneThatTheConfigurationNames) {
  const fs::path path = fs::temp_directory_path() / "nomos_codepage_test.ini";
  EXPECT_TRUE(nosSetCodePage(0));
  const std::string unconfigured = convert(IntlFormat::CodePage, "\xE6", IntlFormat::Utf8).bytes;
  const struct {
    const char* number;
    std::string utf8;
  } rows[] = {{"1251", "\xD0\xB6"},
              {"28592", "\xC4\x87"},
              {"932", unconfigured},  // several bytes a character
              {"none", unconfigured}};
  for (const auto& row : rows) {
    std::ofstream(path) << "[KoraClient]\nCodePage=" << row.number << "\n";
    nosSetGlbIniFileName(path.string().c_str());
    EXPECT_TRUE(nosSetCodePage(0));
    EXPECT_EQ(convert(IntlFormat::CodePage, "\xE6", IntlFormat::Utf8).bytes, row.utf8)
        << row.number;
  }
  nosSetGlbIniFileName(nullptr);
  EXPECT_TRUE(nosSetCodePage(0));
  fs::remove(path);
}

TEST(CharacterClass, OfWindows1252IsThatOfTheUnicodeCharacter) {
  const WithCodePage codePage(1252);
  std::string upper = "ABCDEFGHIJKLMNOPQRSTUVWXYZ\x8A\x8C\x8E\x9F";
  std::string lower = "abcdefghijklmnopqrstuvwxyz\x83\x9A\x9C\x9E\xAA\xB5\xBA\xDF\xFF";
  for (unsigned byte = 0xC0; byte <= 0xDE; ++byte) {
    if (byte == 0xD7) continue;  // the multiplication sign, and the division sign below it
    upper += static_cast<char>(byte);
    lower += static_cast<char>(byte + 0x20);
  }
  const std::string uncased = "\x88";  // the modifier letter circumflex
  for (unsigned byte = 0; byte < 256; ++byte) {
    const char text = static_cast<char>(byte);
    const auto character = static_cast<unsigned char>(byte);
    const bool isUpper = upper.find(text) != std::string::npos;
    const bool isLower = lower.find(text) != std::string::npos;
    const bool isAlpha = isUpper || isLower || uncased.find(text) != std::string::npos;
    EXPECT_EQ(nosIsCharUpper(character), isUpper) << std::hex << byte;
    EXPECT_EQ(nosIsCharLower(character), isLower) << std::hex << byte;
    EXPECT_EQ(nosIsCharAlpha(character), isAlpha) << std::hex << byte;
    EXPECT_EQ(nosIsCharAlphaNumeric(character), isAlpha || (byte >= '0' && byte <= '9'))
        << std::hex << byte;
  }
}

TEST(CompareIgnoringCase, FollowsTheCodePage) {
  const struct {
    unsigned codePage;
    const char* left;
    const char* right;
    unsigned count;
    int sign;
  } rows[] = {
      {1252,
       "Stra\xDF"
       "E",
       "sTRA\xDF"
       "e",
       99, 0},
      {1252, "\xC9T\xC9", "\xE9t\xE9", 99, 0},
      {1252, "\x9F", "\xFF", 1, 0},   // Y with diaeresis, whose cases lie apart
      {1252, "\xA3", "\xB3", 1, -1},  // pound sign and superscript three
      {1250, "\xA3", "\xB3", 1, 0},   // L with stroke and its lower-case form
      {1252, "abc", "abd", 2, 0},
      {1252, "abc", "ABD", 3, -1},
      {1252, "abc", "ab", 3, 1},
      {1252, "_", "A", 1, -1},    // compared in lower case
      {1252, "\xE9", "z", 1, 1},  // bytes compare unsigned
      {1252, "a", "b", 0, 0},
  };
  for (const auto& row : rows) {
    const WithCodePage codePage(row.codePage);
    const auto sign = [](int value) { return (value > 0) - (value < 0); };
    EXPECT_EQ(sign(intlStrnicmp(row.left, row.right, row.count)), row.sign)
        << row.left << ' ' << row.right;
    EXPECT_EQ(sign(intlStrnicmp(row.right, row.left, row.count)), -row.sign);
    if (row.count >= 3) {
      EXPECT_EQ(sign(nosStrcmpi(row.left, row.right)), row.sign);
    }
  }
}

}  // namespace
