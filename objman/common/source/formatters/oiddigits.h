// The numbers of an identifier, three digits at a time: the entry of the first one to three digits
// without leading zeros, then an entry for each three that follow. That takes fewer steps and
// branches than pairs do. An entry is stored whole, four bytes: every function may write up to 3
// bytes behind its last digit, which is where the result points.
#ifndef NOMUTIL_FORMATTERS_OIDDIGITS_H
#define NOMUTIL_FORMATTERS_OIDDIGITS_H

#include <array>
#include <cstdint>
#include <cstring>

namespace nomutil::formatters {

// Of 7: the bytes 37 00 00 01, its characters and their count, and 30 30 37 00.
struct DigitEntry {
  std::uint32_t first;
  std::uint32_t padded;
};
inline constexpr std::array<DigitEntry, 1000> kDigitEntries = [] {
  std::array<DigitEntry, 1000> entries{};
  for (unsigned i = 0; i < 1000; ++i) {
    const std::uint32_t padded = 0x303030 + (i / 100 | i / 10 % 10 << 8 | i % 10 << 16);
    const unsigned count = i >= 100 ? 3 : i >= 10 ? 2 : 1;
    entries[i] = {padded >> 8 * (3 - count) | count << 24, padded};
  }
  return entries;
}();

constexpr std::uint64_t tenToThe(unsigned exponent) {
  return exponent == 0 ? 1 : 10 * tenToThe(exponent - 1);
}

// Exactly kCount digits. REQUIRES: value has no more. Inlined as a whole: the parts of one number
// are then independent of each other.
template <unsigned kCount>
[[gnu::always_inline]] inline char* putFixed(char* to, std::uint64_t value) {
  if constexpr (kCount > 9) {
    // Most numbers are short, and two long divisions dear.
    if (value < tenToThe(9)) {
      std::memset(to, '0', kCount - 9);
      return putFixed<9>(to + (kCount - 9), value);
    }
    to = putFixed<kCount - 9>(to, value / tenToThe(9));
    return putFixed<9>(to, value % tenToThe(9));
  } else if constexpr (kCount > 3) {
    constexpr unsigned kTail = (kCount - 1) / 3 * 3;
    constexpr auto kDivisor = static_cast<std::uint32_t>(tenToThe(kTail));
    const auto number = static_cast<std::uint32_t>(value);
    to = putFixed<kCount - kTail>(to, number / kDivisor);
    return putFixed<kTail>(to, number % kDivisor);
  } else {
    const std::uint32_t text = kDigitEntries[value].padded >> 8 * (3 - kCount);
    std::memcpy(to, &text, sizeof text);
    return to + kCount;
  }
}

// REQUIRES: value is below 1000.
inline char* putFirst(char* to, std::uint32_t value) {
  const std::uint32_t text = kDigitEntries[value].first;
  std::memcpy(to, &text, sizeof text);
  return to + (text >> 24);
}

// As "%u" prints.
inline char* putNumber(char* to, std::uint64_t value) {
  if (value >= tenToThe(9)) {
    return putFixed<9>(putNumber(to, value / tenToThe(9)), value % tenToThe(9));
  }
  const auto number = static_cast<std::uint32_t>(value);
  if (number < 1000) return putFirst(to, number);
  if (number < 1000000) return putFixed<3>(putFirst(to, number / 1000), number % 1000);
  return putFixed<6>(putFirst(to, number / 1000000), number % 1000000);
}

// As "%0<kWidth>u" prints; a width of 1 is none.
template <unsigned kWidth>
inline char* putPadded(char* to, std::uint64_t value) {
  if constexpr (kWidth == 20) {
    return putFixed<kWidth>(to, value);
  } else if constexpr (kWidth > 1) {
    if (value < tenToThe(kWidth)) return putFixed<kWidth>(to, value);
  }
  return putNumber(to, value);
}

}  // namespace nomutil::formatters

#endif  // NOMUTIL_FORMATTERS_OIDDIGITS_H
