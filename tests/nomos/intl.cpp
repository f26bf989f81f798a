// Conversions between the code page, UTF-8 and UTF-32, the classes of characters, formatted text
// and the texts of reals. Expected characters are those of the Unicode consortium's table of
// Windows-1252, malformed sequences those of The Unicode Standard, section 3.9. Texts of reals come
// from Python: repr for the shortest digits, '%.0f' where a whole number has fewer characters than
// its shortest digits with zeros behind them, '%.*f' for a number of places.

#include "nomos/intl.h"

#include "nomos/testhooks.h"

#include "rows.h"
#include "temppath.h"

#include <gtest/gtest.h>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>

namespace {

using enum IntlFormat;

struct Converted {
  int status;
  std::string bytes;
  unsigned characters;
};

Converted convert(IntlFormat from, const std::string& source, IntlFormat to, unsigned room = 4096) {
  const std::string memory = source + "\x80\x80\x80";  // what would complete a cut sequence
  const auto length = static_cast<unsigned>(source.size());
  std::string target(room + 1, '#');
  unsigned bytes = 77;
  unsigned characters = 77;
  const int status =
      intlConvertString(from, memory.data(), length, to, target.data(), room, bytes, characters);
  EXPECT_EQ(target[room], '#') << "beyond the room";
  unsigned counted = 77;
  const auto* const text = reinterpret_cast<const unsigned char*>(memory.data());
  if (from == Utf8 && to == Utf8 && status != 1035) {
    EXPECT_EQ(intlStringUTF8VerifyCountchars(text, length, counted), status) << source;
    EXPECT_EQ(counted, characters) << source;
  }
  return {status, target.substr(0, bytes), characters};
}

std::string utf32(std::initializer_list<std::uint32_t> characters) {
  std::string bytes;
  for (const std::uint32_t character : characters) {
    for (unsigned i = 0; i < 32; i += 8) bytes += static_cast<char>(character >> i & 0xFF);
  }
  return bytes;
}

// The code page is that of a row while this lives, the configured one afterwards.
struct WithCodePage {
  explicit WithCodePage(unsigned number) { EXPECT_TRUE(nosSetCodePage(number)) << number; }
  ~WithCodePage() { nosSetCodePage(0); }
};

TEST(Convert, MapsEveryByteOfWindows1252ThereAndBack) {
  const WithCodePage codePage(1252);
  const std::u32string specials =  // of the bytes 80 to 9F
      U"\u20AC\x81\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160\u2039\u0152\x8D\u017D\x8F"
      U"\x90\u2018\u2019\u201C\u201D\u2022\u2013\u2014\u02DC\u2122\u0161\u203A\u0153\x9D\u017E"
      U"\u0178";
  std::string all, wide;
  for (unsigned byte = 0; byte < 256; ++byte) {
    all += static_cast<char>(byte);
    wide += utf32({byte >= 0x80 && byte < 0xA0 ? specials[byte - 0x80] : byte});
  }
  EXPECT_EQ(convert(CodePage, all, Utf32).bytes, wide);
  for (const IntlFormat form : {Utf8, Utf32, CodePage}) {
    const Converted there = convert(CodePage, all, form);
    EXPECT_EQ(there.characters, 256u);
    EXPECT_EQ(convert(form, there.bytes, CodePage).bytes, all);
  }
}

TEST(Convert, AgreesWithTheStandardAtTheBordersOfUtf8) {
  const std::string wide =
      utf32({0x7F, 0x80, 0x7FF, 0x800, 0xD7FF, 0xE000, 0xFFFF, 0x10000, 0x10FFFF});
  const std::string bytes =
      "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF\xF0\x90\x80\x80"
      "\xF4\x8F\xBF\xBF";
  EXPECT_EQ(convert(Utf32, wide, Utf8).bytes, bytes);
  EXPECT_EQ(convert(Utf8, bytes, Utf32).bytes, wide);
}

TEST(Convert, RefusesMalformedSequences) {
  std::istringstream words(
      "\x80 \xFF \xC3? \xC3\xC9 \xE2\x82? "               // no lead byte, no continuation
      "\xC0\x80 \xC1\xBF \xE0\x9F\xBF \xF0\x8F\xBF\xBF "  // overlong
      "\xED\xA0\x80 \xED\xBF\xBF "                        // surrogates
      "\xF4\x90\x80\x80 \xF5\x80\x80\x80 "                // above 10FFFF
      "\xC3 \xE2\x82 \xF0\x9F\x98");                      // cut
  for (std::string word; words >> word;) {
    const auto [status, bytes, characters] = convert(Utf8, "a\xC3\xA9" + word, Utf8);
    EXPECT_EQ(std::tie(status, bytes, characters), std::tuple(1002, "a\xC3\xA9", 2u)) << word;
  }
  for (const std::uint32_t character : {0xD800u, 0xDFFFu, 0x110000u, 0x80000041u}) {
    EXPECT_EQ(convert(Utf32, utf32({character}), Utf8).status, 1002) << character;
  }
  EXPECT_EQ(convert(Utf32, std::string("A\0\0", 3), Utf8).status, 1002);
}

TEST(Convert, StopsBeforeTheCharacterThatDoesNotFit) {
  // What fits in 0 to 6 bytes: bytes, characters.
  const std::pair<std::size_t, unsigned> rows[] = {{0, 0}, {1, 1}, {1, 1}, {1, 1},
                                                   {4, 2}, {4, 2}, {6, 3}};
  for (unsigned room = 0; room <= 6; ++room) {
    const auto [status, bytes, count] = convert(Utf8, "a\xE2\x82\xAC\xC3\xA9", Utf8, room);
    EXPECT_EQ(status, room < 6 ? 1035 : 0);
    EXPECT_EQ(std::pair(bytes.size(), count), rows[room]) << room;
  }
}

TEST(Convert, FindsWhatIsNotAsciiAtEveryPlace) {
  for (unsigned length = 1; length <= 20; ++length) {
    for (unsigned place = 0; place < length; ++place) {
      std::string text(length - 1, 'a');
      const std::string page = std::string(text).insert(place, "\xE9");
      text.insert(place, "\xC3\xA9");
      EXPECT_EQ(convert(Utf8, text, CodePage, length).bytes, page);
      EXPECT_EQ(convert(Utf8, text, CodePage, length - 1).bytes, page.substr(0, length - 1));
      EXPECT_EQ(convert(CodePage, page, Utf8).bytes, text);
      EXPECT_EQ(convert(Utf8, text, Utf8).characters, length);
    }
  }
}

TEST(CodePage, IsTheConfiguredOneAndHasAQuestionMarkForWhatItLacks) {
  const std::string path = nomtest::tempPath(".ini").string();
  // The euro, Cyrillic zhe, Polish l with stroke, an emoji.
  const std::string source = "\xE2\x82\xAC \xD0\xB6 \xC5\x81 \xF0\x9F\x98\x80";
  EXPECT_TRUE(nosSetCodePage(0));
  const std::string unconfigured = convert(Utf8, source, CodePage).bytes;
  const std::pair<const char*, std::string> rows[] = {
      {"1252", "\x80 ? ? ?"}, {"1250", "\x80 ? \xA3 ?"}, {"1251", "\x88 \xE6 ? ?"},
      {"28591", "? ? ? ?"},   {"28592", "? ? \xA3 ?"},   {"874", "\x80 ? ? ?"},
      {"932", unconfigured},  {"none", unconfigured}};
  nosSetGlbIniFileName(path.c_str());
  for (const auto& [number, bytes] : rows) {
    std::ofstream(path) << "[KoraClient]\nCodePage=" << number;
    EXPECT_TRUE(nosSetCodePage(0));
    // Refused and without effect: several bytes a character, unknown, letters not at those of
    // ASCII.
    for (const unsigned other : {932u, 65001u, 99999u, 1u, 37u}) {
      EXPECT_FALSE(nosSetCodePage(other));
    }
    EXPECT_EQ(convert(Utf8, source, CodePage).bytes, bytes) << number;
  }
  nosSetGlbIniFileName(nullptr);
  EXPECT_TRUE(nosSetCodePage(0));
  std::filesystem::remove(path);
}

TEST(CharacterClass, OfWindows1252IsThatOfTheUnicodeCharacter) {
  const WithCodePage codePage(1252);
  std::string classes;  // a digit a byte: 1 upper, 2 lower, 4 letter, 8 letter or decimal digit
  for (unsigned byte = 0; byte < 256; ++byte) {
    const auto character = static_cast<unsigned char>(byte);
    const unsigned bits = nosIsCharUpper(character) + 2u * nosIsCharLower(character) +
                          4u * nosIsCharAlpha(character) + 8u * nosIsCharAlphaNumeric(character);
    classes += "0123456789abcdef"[bits];
  }
  EXPECT_EQ(classes.substr(0, 128), std::string(48, '0') + std::string(10, '8') + "0000000" +
                                        std::string(26, 'd') + "000000" + std::string(26, 'e') +
                                        "00000");
  EXPECT_EQ(classes.substr(128),
            "000e0000c0d0d0d00000000000e0e0ed0000000000e0000000000e0000e00000"
            "ddddddddddddddddddddddd0ddddddde"
            "eeeeeeeeeeeeeeeeeeeeeee0eeeeeeee");
  EXPECT_EQ(nosStrcmpi("\xC9\x8A\x9F", "\xE9\x9A\xFF"), 0);
}

TEST(CompareIgnoringCase, FollowsTheCodePage) {
  const std::tuple<unsigned, const char*, const char*, unsigned, int> rows[] = {
      // Cases that lie apart or are those of one page alone, cuts, lower case, unsigned bytes
      {1252, "\xC9T", "\xE9t", 9, 0}, {1252, "\x9F", "\xFF", 9, 0}, {1252, "\xA3", "\xB3", 9, -1},
      {1250, "\xA3", "\xB3", 9, 0},   {1252, "abc", "abd", 2, 0},   {1252, "abc", "ABD", 3, -1},
      {1252, "abc", "ab", 3, 1},      {1252, "_", "A", 9, -1},      {1252, "\xE9", "z", 9, 1},
      {1252, "\xD7", "\xC9", 9, -1}};
  const auto sign = [](int value) { return (value > 0) - (value < 0); };
  for (const auto& [number, left, right, count, expected] : rows) {
    const WithCodePage codePage(number);
    EXPECT_EQ(sign(intlStrnicmp(left, right, count)), expected) << left << ' ' << right;
    EXPECT_EQ(sign(intlStrnicmp(right, left, count)), -expected) << left << ' ' << right;
    EXPECT_EQ(count > 2 ? sign(nosStrcmpi(left, right)) : expected, expected) << left;
  }
}

constexpr std::uint64_t kMost64 = 18446744073709551615u;
constexpr std::int64_t kLeast64 = std::numeric_limits<std::int64_t>::min();

// What write(buffer) leaves in size bytes, where it returns the length and writes nothing more.
template <class Write>
std::string written(unsigned size, Write write) {
  char buffer[1201];
  std::memset(buffer, '#', sizeof buffer);
  const auto stored = static_cast<std::size_t>(write(buffer));
  EXPECT_EQ(buffer[size], '#') << "beyond the room";
  if (size == 0) return stored == 0 ? "" : "(not empty)";
  EXPECT_EQ(stored, std::strlen(buffer));
  return buffer;
}

template <class... Arguments>
std::string format(unsigned size, const char* form, Arguments... arguments) {
  return written(size, [=](char* to) { return intlSnprintf(to, size, form, arguments...); });
}

TEST(Format, WritesTheSameOnEveryPlatformAndCutsAtTheRoom) {
  EXPECT_EQ(format(99, "%I64u %llu", kMost64, kMost64),
            "18446744073709551615 18446744073709551615");
  EXPECT_EQ(format(99, "%05I64d|%-24I64d|", -42LL, kLeast64), "-0042|-9223372036854775808    |");
  EXPECT_EQ(format(99, "%+I64d %I64x %*I64u", 5LL, 255ULL, 5, 7ULL), "+5 ff     7");
  EXPECT_EQ(format(99, "%-4d|%04u|%5s|%-5s|%.2s", -12, 7u, "ab", "cd", "efg"),
            "-12 |0007|   ab|cd   |ef");
  EXPECT_EQ(format(99, "I64 %%I64u %s %c%%", "%I64u", 'c'), "I64 %I64u %I64u c%");
  EXPECT_EQ(format(99, "%e %g %.3f %zu", 12345.678, 1e-10, 2.0 / 3, sizeof(char)),
            "1.234568e+04 1e-10 0.667 1");
  const std::string dashes(600, '-');
  EXPECT_EQ(format(1200, (dashes + "%I64u").c_str(), 9ULL), dashes + "9");
  for (const unsigned size : {0u, 1u, 2u, 6u, 7u, 20u}) {
    EXPECT_EQ(format(size, "abc%I64u", 123ULL), std::string("abc123").substr(0, size - (size > 0)));
  }
  EXPECT_EQ(written(99, [](char* to) { return intlSprintf(to, "%s-%04d", "long", 7); }),
            "long-0007");
}

// The number, how many places (0 for the shortest text) and its text. Halves go to the even digit.
TEST(RealText, IsTheShortestThatReadsBackOrHasItsPlaces) {
  const auto check = [](const nomtest::Row& row) {
    const double value = std::strtod(row[0].c_str(), nullptr);
    const int places = std::stoi(row[1]);
    for (const unsigned size : {0u, 1u, 3u, 1200u}) {
      const auto write = [=](char* to) { return intlDoubleToStringFixed(to, size, value, places); };
      EXPECT_EQ(written(size, write), row[2].substr(0, size - (size > 0)));
    }
    return row[2];
  };
  nomtest::expectRows(3, check, R"(
      0.1 0 0.1     0.30000000000000004 0 0.30000000000000004    1e22 0 10{22}    -0 0 -0
      1e23 0 99999999999999991611392    5e-324 0 0.0{323}5       -inf 1100 -inf   -nan 2 nan
      0.125 2 0.12  0.375 2 0.38        -0.001 2 -0.00           0.5 1100 0.50{1099})");
  const auto single = [](int places) {
    return written(64, [=](char* to) { return intlFloatToStringFixed(to, 64, 0.1f, places); });
  };
  EXPECT_EQ(single(0) + " " + single(9), "0.1 0.100000001");
}

}  // namespace
