// A number of 112 bits with sign and places, as the calendar and real-number code of the system
// hands it over: value = sign * (word[0] * 2^84 + word[1] * 2^56 + word[2] * 2^28 + word[3])
// / 10^exponent. Each word carries 28 bits.
#ifndef NOMOS_HIGHPRECISION_H
#define NOMOS_HIGHPRECISION_H

#include <cstdint>

struct HighPrecisionNumber {
  std::int16_t exponent;  // places when positive; otherwise none
  std::int16_t sign;      // negative for a negative number
  std::uint32_t word[4];  // most significant first
};

#endif  // NOMOS_HIGHPRECISION_H
