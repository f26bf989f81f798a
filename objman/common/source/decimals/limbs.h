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

inline bool isNegative(const Wide& value) {
  return value.word[kWideWords - 1] >> 63 != 0;
}
inline bool isZero(const Wide& value) {
  return value == Wide{};
}

// Whether the first of two leading limbs only repeats the sign bit of the next one.
constexpr bool isRedundant(std::uint16_t first, std::uint16_t next) {
  return first == (next >= 0x8000u ? 0xFFFFu : 0u);
}

// count limbs (0 to 21), most significant first, sign-extended. REQUIRES: unless count is 0, four
// limbs may be read.
inline Wide loadLimbs(const std::uint16_t* limbs, int count) {
  Wide value;
  if (count <= 0) return value;
  const int whole = count / 4;
  const int rest = count % 4;
  for (int i = 0; i < whole; ++i) {
    std::uint64_t word;
    std::memcpy(&word, limbs + count - 4 * (i + 1), sizeof word);
    value.word[i] = reverseLimbs(word);
  }
  const std::uint64_t sign = limbs[0] & 0x8000u ? ~std::uint64_t{0} : 0;
  int next = whole;
  if (rest != 0) {
    // The first limbs fill no word. Those behind them are read with them and shifted out.
    std::uint64_t word;
    std::memcpy(&word, limbs, sizeof word);
    const auto top = static_cast<std::int64_t>(reverseLimbs(word));
    value.word[next++] = static_cast<std::uint64_t>(top >> (64 - 16 * rest));
  }
  while (next < kWideWords) value.word[next++] = sign;
  return value;
}

// The low `count` limbs (1 to 21), most significant first. REQUIRES: the limbs behind are 0; up to
// three of them are written, as 0.
inline void storeLimbs(const Wide& value, int count, std::uint16_t* limbs) {
  const int whole = count / 4;
  const int rest = count % 4;
  if (rest != 0) {
    // Writes past these limbs what the whole words below them overwrite, or zeros.
    const std::uint64_t word = reverseLimbs(value.word[whole] << (64 - 16 * rest));
    std::memcpy(limbs, &word, sizeof word);
  }
  for (int i = 0; i < whole; ++i) {
    const std::uint64_t word = reverseLimbs(value.word[i]);
    std::memcpy(limbs + count - 4 * (i + 1), &word, sizeof word);
  }
}

// The fewest limbs that hold the value with its sign: 1 for 0 and -1, 2 for 32768.
inline int normalLimbCount(const Wide& value) {
  // The complement of a negative value has the bits to which its sign bit is added.
  const std::uint64_t sign = isNegative(value) ? ~std::uint64_t{0} : 0;
  int top = kWideWords - 1;
  while (top > 0 && value.word[top] == sign) --top;
  const int bits = 64 * top + static_cast<int>(std::bit_width(value.word[top] ^ sign));
  return bits / 16 + 1;
}

// Bits of a non-negative value: 0 for 0, 8 for 255.
int bitLength(const Wide& value);

// Decimal digits of a non-negative value: 0 for 0, 3 for 999.
int digitCount(const Wide& value);

// Arithmetic modulo 2^384.
constexpr Wide add(const Wide& left, const Wide& right) {
  Wide sum;
  std::uint64_t carry = 0;
  for (int i = 0; i < kWideWords; ++i) {
    const UInt128 word = UInt128{left.word[i]} + right.word[i] + carry;
    sum.word[i] = lowWord(word);
    carry = highWord(word);
  }
  return sum;
}

constexpr Wide subtract(const Wide& left, const Wide& right) {
  Wide difference;
  std::uint64_t borrow = 0;
  for (int i = 0; i < kWideWords; ++i) {
    const UInt128 word = UInt128{left.word[i]} - right.word[i] - borrow;
    difference.word[i] = lowWord(word);
    borrow = highWord(word) & 1;
  }
  return difference;
}

constexpr Wide negate(const Wide& value) {
  return subtract(Wide{}, value);
}
// The absolute value, in place: a copy would wait for the words that were just written.
inline void makeMagnitude(Wide& value) {
  if (isNegative(value)) value = negate(value);
}
inline Wide magnitude(Wide value) {
  makeMagnitude(value);
  return value;
}

// The low 384 bits of the product of two non-negative values.
Wide multiply(const Wide& left, const Wide& right);

// Multiplies by a word and adds one; the carry out of the top word is lost.
constexpr void multiplyAdd(Wide& value, std::uint64_t factor, std::uint64_t addend) {
  for (std::uint64_t& word : value.word) {
    const UInt128 product = UInt128{word} * factor + addend;
    word = lowWord(product);
    addend = highWord(product);
  }
}

// -1, 0 or 1 for non-negative values.
int compareMagnitudes(const Wide& left, const Wide& right);

// Divides a non-negative value by a word in place and returns the remainder.
// REQUIRES: divisor is not 0.
std::uint64_t divideByWord(Wide& value, std::uint64_t divisor);

// Quotient and remainder of non-negative values, which are other objects than the operands.
// REQUIRES: divisor is not 0.
void divide(const Wide& dividend, const Wide& divisor, Wide& quotient, Wide& remainder);

// 10^0 to 10^115.
inline constexpr auto kWidePowers = [] {
  std::array<Wide, 116> powers{Wide{{1}}};
  for (unsigned i = 1; i < powers.size(); ++i) {
    powers[i] = powers[i - 1];
    multiplyAdd(powers[i], 10, 0);
  }
  return powers;
}();

constexpr const Wide& widePowerOfTen(int exponent) {
  return kWidePowers[static_cast<unsigned>(exponent)];
}

}  // namespace nomutil::decimals

#endif  // NOMUTIL_DECIMALS_LIMBS_H
