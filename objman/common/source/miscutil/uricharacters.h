// What the parsers of server texts ask of a character: one word of marks for each, so that a
// component is copied with one look at the table for a character.
#ifndef NOMUTIL_MISCUTIL_URICHARACTERS_H
#define NOMUTIL_MISCUTIL_URICHARACTERS_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace nomutil::miscutil {

// The marks that a component may end at, one of them for the end of the text.
inline constexpr unsigned kEnd = 1;
inline constexpr unsigned kColon = 2;
inline constexpr unsigned kSlash = 4;
inline constexpr unsigned kQuestion = 8;
inline constexpr unsigned kBracket = 16;  // ']'
inline constexpr unsigned kEquals = 32;
inline constexpr unsigned kAmpersand = 64;
inline constexpr unsigned kComma = 128;

inline constexpr unsigned kBlank = 256;    // codes 1 to 32
inline constexpr unsigned kRefused = 512;  // ',', '%' and DEL, where they are no terminator

inline constexpr std::array<std::uint16_t, 256> kMarks = [] {
  std::array<std::uint16_t, 256> marks{};
  const auto mark = [&marks](std::string_view characters, unsigned bits) {
    for (const char character : characters) {
      marks[static_cast<unsigned char>(character)] |= static_cast<std::uint16_t>(bits);
    }
  };
  for (unsigned code = 1; code <= 32; ++code) marks[code] = kBlank;
  marks[0] = kEnd;
  mark(":", kColon);
  mark("/", kSlash);
  mark("?", kQuestion);
  mark("]", kBracket);
  mark("=", kEquals);
  mark("&", kAmpersand);
  mark(",", kComma | kRefused);
  mark("%\x7F", kRefused);
  return marks;
}();

inline unsigned marksOf(char character) {
  return kMarks[static_cast<unsigned char>(character)];
}

// Whether four characters and four others are hexadecimal digits, all eight at once: the upper bit
// of a byte tells that its character lies above a limit, and no sum of a byte below 128 leaves it.
inline bool areHexDigits(const char* left, const char* right) {
  std::uint32_t halves[2];
  std::memcpy(&halves[0], left, 4);
  std::memcpy(&halves[1], right, 4);
  const std::uint64_t eight = halves[0] | std::uint64_t{halves[1]} << 32;
  constexpr std::uint64_t kEach = 0x0101010101010101, kUpper = 0x80 * kEach;
  const auto lieBetween = [](std::uint64_t bytes, unsigned first, unsigned last) {
    return (bytes + (0x80 - first) * kEach) & ~(bytes + (0x7F - last) * kEach);
  };
  const std::uint64_t ascii = eight & ~kUpper;
  const std::uint64_t areDigits =
      lieBetween(ascii, '0', '9') | lieBetween(ascii | 0x20 * kEach, 'a', 'f');
  return (areDigits & ~eight & kUpper) == kUpper;
}

// ASCII letters of either case are equal; other characters are equal to themselves.
inline bool equalsIgnoringCase(std::string_view left, std::string_view right) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; };
  return left.size() == right.size() &&
         std::equal(left.begin(), left.end(), right.begin(),
                    [lower](char a, char b) { return lower(a) == lower(b); });
}

}  // namespace nomutil::miscutil

#endif  // NOMUTIL_MISCUTIL_URICHARACTERS_H
