// Limb vectors, which know no Decimal. A Wide is a 384-bit two's-complement integer of six 64-bit
// words, least significant first: room for the 22 sixteen-bit limbs that a sum of two 21-limb
// values can need, and for every product that the limb-count rule admits.
//
// The limbs {0x0001, 0x86A0} (100000, most significant first) load as the words {0x186A0, 0, ...}.
#ifndef NOMUTIL_DECIMALS_LIMBS_H
#define NOMUTIL_DECIMALS_LIMBS_H

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace nomutil::decimals {

__extension__ typedef __int128 Int128;
__extension__ typedef unsigned __int128 UInt128;

inline constexpr int kMaxLimbs = 21;
inline constexpr int kWideWords = 6;
inline constexpr int kWideLimbs = 4 * kWideWords;

struct Wide {
  std::uint64_t word[kWideWords] = {};

  bool operator==(const Wide&) const = default;
};

// 10^0 to 10^19, the powers that one word holds.
inline constexpr int kWordDigits = 19;
inline constexpr auto kPowersOfTen = [] {
  std::array<std::uint64_t, kWordDigits + 1> powers{1};
  for (int i = 1; i <= kWordDigits; ++i) {
    powers[static_cast<unsigned>(i)] = 10 * powers[static_cast<unsigned>(i - 1)];
  }
  return powers;
}();

constexpr std::uint64_t powerOfTen(int exponent) {
  return kPowersOfTen[static_cast<unsigned>(exponent)];
}

constexpr std::uint64_t lowWord(UInt128 value) {
  return static_cast<std::uint64_t>(value);
}
constexpr std::uint64_t highWord(UInt128 value) {
  return static_cast<std::uint64_t>(value >> 64);
}
constexpr UInt128 joinWords(std::uint64_t high, std::uint64_t low) {
  return UInt128{high} << 64 | low;
}

// Four limbs as one word with the order of the limbs reversed.
constexpr std::uint64_t reverseLimbs(std::uint64_t word) {
  word = std::rotl(word, 32);
  return (word & 0x0000FFFF0000FFFFu) << 16 | (word >> 16 & 0x0000FFFF0000FFFFu);
}

// high:low / divisor. REQUIRES: high < divisor, so that the quotient fits one word.
inline std::uint64_t divideTwoByOne(std::uint64_t high, std::uint64_t low, std::uint64_t divisor,
                                    std::uint64_t& remainder) {
  std::uint64_t quotient;
  __asm__("divq %[divisor]"
          : "=a"(quotient), "=d"(remainder)
          : [divisor] "r"(divisor), "a"(low), "d"(high)
          : "cc");
  return quotient;
}

// count limbs (0 to 21), most significant first, sign-extended. 42 bytes are read whatever the
// count.
Wide loadLimbs(const std::uint16_t* limbs, int count);

// The low `count` limbs (1 to 21), most significant first; all 21 limbs are written, those behind
// as zero.
void storeLimbs(const Wide& value, int count, std::uint16_t* limbs);

// The fewest limbs that hold the value with its sign: 1 for 0 and -1, 2 for 32768.
int normalLimbCount(const Wide& value);

// Bits of a non-negative value: 0 for 0, 8 for 255.
int bitLength(const Wide& value);

// Decimal digits of a non-negative value: 0 for 0, 3 for 999.
int digitCount(const Wide& value);

inline bool isNegative(const Wide& value) {
  return value.word[kWideWords - 1] >> 63 != 0;
}
inline bool isZero(const Wide& value) {
  return value == Wide{};
}

// Arithmetic modulo 2^384.
Wide add(const Wide& left, const Wide& right);
Wide subtract(const Wide& left, const Wide& right);
Wide negate(const Wide& value);
inline Wide magnitude(const Wide& value) {
  return isNegative(value) ? negate(value) : value;
}

// The low 384 bits of the product of two non-negative values.
Wide multiply(const Wide& left, const Wide& right);

// Multiplies by a word and adds one; the carry out of the top word is lost.
void multiplyAdd(Wide& value, std::uint64_t factor, std::uint64_t addend);

// -1, 0 or 1 for non-negative values.
int compareMagnitudes(const Wide& left, const Wide& right);

// Divides a non-negative value by a word in place and returns the remainder.
// REQUIRES: divisor is not 0.
std::uint64_t divideByWord(Wide& value, std::uint64_t divisor);

// Quotient and remainder of non-negative values, which are other objects than the operands.
// REQUIRES: divisor is not 0.
void divide(const Wide& dividend, const Wide& divisor, Wide& quotient, Wide& remainder);

// 10^exponent. REQUIRES: exponent is 0 to 115.
Wide widePowerOfTen(int exponent);

}  // namespace nomutil::decimals

#endif  // NOMUTIL_DECIMALS_LIMBS_H
