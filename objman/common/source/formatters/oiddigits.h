// The numbers of an identifier, eight digits at a time and without a branch on their count. The
// digits of a number below 10^8 are the bytes of one 64-bit word, the first digit lowest: 2048 is
// 00 00 00 00 02 00 04 08. Leading zeros are shifted out, and a whole word is stored: each function
// may write up to 7 bytes behind its last digit. All return the place behind that digit.
#ifndef NOMUTIL_FORMATTERS_OIDDIGITS_H
#define NOMUTIL_FORMATTERS_OIDDIGITS_H

#include <bit>
#include <cstdint>
#include <cstring>

namespace nomutil::formatters {

inline constexpr std::uint32_t kTenToThe8 = 100000000;
inline constexpr std::uint64_t kZeroCharacters = 0x3030303030303030;

// Halves, then quarters, then eighths of the digits stand apart in the word; each step divides all
// of its fields at once. The factors are 2^20 / 100 and 2^10 / 10, rounded up: exact for fields
// below 10^4 and 10^2.
constexpr std::uint64_t digitsOf(std::uint32_t value) {
  const std::uint64_t halves = value / 10000 | std::uint64_t{value % 10000} << 32;
  const std::uint64_t upper = halves * 10486 >> 20 & 0x0000007F0000007F;
  const std::uint64_t quarters = upper | (halves - upper * 100) << 16;
  const std::uint64_t tens = quarters * 103 >> 10 & 0x000F000F000F000F;
  return tens | (quarters - tens * 10) << 8;
}
static_assert(digitsOf(2048) == 0x0804000200000000 && digitsOf(99999999) == 0x0909090909090909);

inline char* putEightDigits(char* to, std::uint32_t value) {
  const std::uint64_t text = digitsOf(value) | kZeroCharacters;
  std::memcpy(to, &text, sizeof text);
  return to + 8;
}

// Numbers below 10^8, and any, with at least kWidth digits.
template <unsigned kWidth>
char* putShort(char* to, std::uint32_t value) {
  static_assert(kWidth >= 1 && kWidth <= 8);
  const std::uint64_t digits = digitsOf(value);
  const std::uint64_t firstShown = std::uint64_t{1} << 8 * (8 - kWidth);
  const auto hidden = static_cast<unsigned>(std::countr_zero(digits | firstShown)) / 8;
  const std::uint64_t text = (digits | kZeroCharacters) >> 8 * hidden;
  std::memcpy(to, &text, sizeof text);
  return to + (8 - hidden);
}

template <unsigned kWidth>
char* putLong(char* to, std::uint64_t value) {
  if (kWidth <= 8 && value < kTenToThe8) {
    return putShort<(kWidth <= 8 ? kWidth : 1)>(to, static_cast<std::uint32_t>(value));
  }
  const std::uint64_t high = value / kTenToThe8;
  const auto low = static_cast<std::uint32_t>(value % kTenToThe8);
  if (kWidth <= 16 && high < kTenToThe8) {
    to = putShort<(kWidth > 8 && kWidth <= 16 ? kWidth - 8 : 1)>(to,
                                                                 static_cast<std::uint32_t>(high));
  } else {
    to = putShort<(kWidth > 16 ? kWidth - 16 : 1)>(to,
                                                   static_cast<std::uint32_t>(high / kTenToThe8));
    to = putEightDigits(to, static_cast<std::uint32_t>(high % kTenToThe8));
  }
  return putEightDigits(to, low);
}

}  // namespace nomutil::formatters

#endif  // NOMUTIL_FORMATTERS_OIDDIGITS_H
