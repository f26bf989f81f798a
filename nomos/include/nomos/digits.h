// Decimal digits, written two at a time. Nothing is terminated; each function returns the place
// behind what it wrote.
#ifndef NOMOS_DIGITS_H
#define NOMOS_DIGITS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace nomos {

// "00" to "99".
inline constexpr std::array<char, 200> kDigitPairs = [] {
  std::array<char, 200> pairs{};
  for (unsigned i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

// Exactly 2, 4 or 8 digits. REQUIRES: value has no more.
inline char* putTwoDigits(char* to, std::uint32_t value) {
  std::memcpy(to, &kDigitPairs[std::size_t{2} * value], 2);
  return to + 2;
}
inline char* putFourDigits(char* to, std::uint32_t value) {
  return putTwoDigits(putTwoDigits(to, value / 100), value % 100);
}
inline char* putEightDigits(char* to, std::uint32_t value) {
  return putFourDigits(putFourDigits(to, value / 10000), value % 10000);
}

// 1 for 0, 3 for 100.
inline unsigned countDigits(std::uint64_t value) {
  unsigned count = 1;
  for (; value >= 10000; value /= 10000) count += 4;
  return count + (value >= 10) + (value >= 100) + (value >= 1000);
}

// Exactly count digits. REQUIRES: value has no more.
inline char* putDigits(char* to, std::uint64_t value, unsigned count) {
  char* const end = to + count;
  char* at = end;
  for (; count >= 8; count -= 8) {
    putEightDigits(at -= 8, static_cast<std::uint32_t>(value % 100000000));
    value /= 100000000;
  }
  auto rest = static_cast<std::uint32_t>(value);
  for (; count >= 2; count -= 2) {
    putTwoDigits(at -= 2, rest % 100);
    rest /= 100;
  }
  if (count != 0) *--at = static_cast<char>('0' + rest);
  return end;
}

// As "%u" and "%0<width>u" print.
inline char* putNumber(char* to, std::uint64_t value) {
  return putDigits(to, value, countDigits(value));
}
inline char* putPadded(char* to, std::uint64_t value, unsigned width) {
  const unsigned count = countDigits(value);
  return putDigits(to, value, count > width ? count : width);
}

}  // namespace nomos

#endif  // NOMOS_DIGITS_H
