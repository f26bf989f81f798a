// The inner loops of CRC-32, one for each kind of processor, and the constants that they fold by.
// All give the same; the fastest that the processor can run is chosen once.
//
// A message is a polynomial over GF(2), its first bit the highest power of x; its CRC is
// M(x) * x^32 mod G(x). Bits are reflected: bit 0 of a register is its highest power, so that the
// first byte in memory is the lowest. A product of two reflected 64-bit words comes out of the
// multiplier one power too low, hence exponents that are one less than the distance.
#ifndef NOMUTIL_COMPRESS_CRC32KERNELS_H
#define NOMUTIL_COMPRESS_CRC32KERNELS_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace nomutil::compress {

struct Crc32Kernel {
  const char* name;
  bool (*isUsable)();
  // The CRC, without inversions, of the bytes behind a text whose CRC is given.
  std::uint32_t (*update)(std::uint32_t crc, const std::uint8_t* bytes, std::size_t length);
};

extern const Crc32Kernel kPortableCrc32;
extern const Crc32Kernel kClmulCrc32;
extern const Crc32Kernel kAvx512Crc32;

// Every kernel, the fastest first; the last one runs anywhere.
std::span<const Crc32Kernel* const> allCrc32Kernels();

inline constexpr std::uint32_t kCrc32Polynomial = 0xEDB88320;  // G without x^32

// x times a reflected polynomial of 32 bits, mod G.
constexpr std::uint32_t timesX(std::uint32_t reflected) {
  return reflected >> 1 ^ ((reflected & 1) != 0 ? kCrc32Polynomial : 0);
}

// x^exponent mod G as a reflected word of 64 bits, of which a polynomial of degree 31 takes the
// upper half.
constexpr std::uint64_t powerOfX(unsigned exponent) {
  std::uint32_t power = 0x80000000;  // 1
  for (unsigned i = 0; i < exponent; ++i) power = timesX(power);
  return std::uint64_t{power} << 32;
}

// What moves 16 bytes forward by a number of bytes: the factor of their first 8, and of the others.
struct FoldFactors {
  std::uint64_t first;
  std::uint64_t second;
};
constexpr FoldFactors foldFactors(unsigned byteCount) {
  return {powerOfX(8 * byteCount + 63), powerOfX(8 * byteCount - 1)};
}

// The reduction of the last 16 bytes, X, to the CRC: their first half times x^96 and the second
// times x^32 is Y, of 96 bits; its upper 64 bits T give the quotient q = T * [x^95 / G] / x^63 of
// Y / G (Barrett), and the remainder is the low 32 bits of Y - q * G.
inline constexpr std::uint64_t kToY = powerOfX(95) >> 32;     // times x^32
inline constexpr std::uint64_t kToQuotient = [] {             // [x^95 / G], by long division
  std::uint64_t quotient = 0, rest = std::uint64_t{1} << 32;  // x^32, not reflected
  constexpr std::uint64_t kG = 0x104C11DB7;
  for (unsigned bit = 0; bit < 64; ++bit) {
    const bool isIn = (rest >> 32 & 1) != 0;
    if (isIn) {
      quotient |= std::uint64_t{1} << bit;  // x^(63 - bit)
      rest ^= kG;
    }
    rest <<= 1;
  }
  return quotient;
}();
inline constexpr std::uint64_t kToRemainder = std::uint64_t{kCrc32Polynomial} << 1 | 1;  // G * x^31

}  // namespace nomutil::compress

#endif  // NOMUTIL_COMPRESS_CRC32KERNELS_H
