// The operators: the fast path for operands of 1 to 7 limbs, in 64-bit and 128-bit registers, with
// the general path behind it. 12.5 + 0.25 aligns to 1250 + 25 and gives 1275 with scale 2.
//
// Redundant leading limbs of an operand that takes the fast path change neither sums, products nor
// quotients, so only the comparisons ask whether it is in normal form.

#include "access.h"

#include "sys/decimals.h"

#include <array>
#include <bit>
#include <compare>
#include <cstdint>
#include <cstring>

namespace nomutil::decimals {
namespace {

// A signed word takes 10^0 to 10^18 as a factor.
constexpr int kMaxFactor = 18;

// What raises operands to one scale: one of the factors is 1. A table and not a test: unequal
// scales shall cost no mispredicted branch.
struct Factors {
  std::int64_t left;
  std::int64_t right;
};
constexpr auto kFactors = [] {
  std::array<Factors, 2 * kMaxFactor + 1> factors{};
  for (int i = 0; i <= kMaxFactor; ++i) {
    const auto power = static_cast<std::int64_t>(powerOfTen(i));
    factors[static_cast<unsigned>(kMaxFactor + i)] = {power, 1};
    factors[static_cast<unsigned>(kMaxFactor - i)] = {1, power};
  }
  return factors;
}();

// The factors for a left operand that lacks `places`, or for a right one when they are negative.
// Null when a word does not hold them.
inline const Factors* factorsFor(int places) {
  const auto index = static_cast<unsigned>(places + kMaxFactor);
  return index < kFactors.size() ? &kFactors[index] : nullptr;
}

// Places that the left operand lacks; negative for the right one's.
inline int missingPlaces(const Decimal& left, const Decimal& right) {
  return right.getScaleFactor() - left.getScaleFactor();
}

// value * factor. False, and value untouched, when 127 bits and the sign do not hold the product.
inline bool multiplyValue(Int128& value, std::int64_t factor) {
  const UInt128 bits = static_cast<UInt128>(value);
  const UInt128 low = UInt128{lowWord(bits)} * static_cast<std::uint64_t>(factor);
  const Int128 high = Int128{static_cast<std::int64_t>(highWord(bits))} * factor + highWord(low);
  const auto top = static_cast<std::int64_t>(high);
  if (top != high) return false;
  value = static_cast<Int128>(joinWords(static_cast<std::uint64_t>(top), lowWord(low)));
  return true;
}

// The operands as words of one scale; false when they do not fit. Both are multiplied, one of them
// by 1.
inline bool loadWords(const Decimal& left, const Decimal& right, std::int64_t& a, std::int64_t& b) {
  if (!Access::areWords(left, right)) return false;
  const Factors* const factors = factorsFor(missingPlaces(left, right));
  return factors != nullptr && !__builtin_mul_overflow(Access::word(left), factors->left, &a) &&
         !__builtin_mul_overflow(Access::word(right), factors->right, &b);
}

// The same as 128-bit values, where a test costs less than two long multiplications. Neither of
// them is -2^127, whose size a value does not hold: 7 limbs are shorter, and what was raised has a
// factor 5.
inline bool loadValues(const Decimal& left, const Decimal& right, Int128& a, Int128& b) {
  const int missing = missingPlaces(left, right);
  const Factors* const factors = factorsFor(missing);
  if (!Access::areShort(left, right) || factors == nullptr) return false;
  a = Access::value(left);
  b = Access::value(right);
  if (missing == 0) return true;
  return missing > 0 ? multiplyValue(a, factors->left) : multiplyValue(b, factors->right);
}

inline UInt128 magnitudeOf(Int128 value) {
  const UInt128 bits = static_cast<UInt128>(value);
  return value < 0 ? 0 - bits : bits;
}

inline bool fitsValue(UInt128 magnitude) {
  return highWord(magnitude) >> 63 == 0;
}

inline Int128 signedValue(UInt128 magnitude, bool negative) {
  return static_cast<Int128>(negative ? 0 - magnitude : magnitude);
}

// A product of at most 256 bits.
struct Product {
  UInt128 high;
  UInt128 low;
};

inline Product multiplyMagnitudes(UInt128 a, UInt128 b) {
  const UInt128 low = UInt128{lowWord(a)} * lowWord(b);
  const UInt128 cross = UInt128{lowWord(a)} * highWord(b) + highWord(low);
  const UInt128 other = UInt128{highWord(a)} * lowWord(b) + lowWord(cross);
  const UInt128 high = UInt128{highWord(a)} * highWord(b) + highWord(cross) + highWord(other);
  return {high, joinWords(lowWord(other), lowWord(low))};
}

// dividend / divisor for a divisor of one word. False when the quotient exceeds 127 bits.
inline bool divideByOneWord(const Product& dividend, std::uint64_t divisor, UInt128& quotient) {
  if (dividend.high >= divisor) return false;
  std::uint64_t rest = lowWord(dividend.high);
  const std::uint64_t high = divideTwoByOne(rest, highWord(dividend.low), divisor, rest);
  const std::uint64_t low = divideTwoByOne(rest, lowWord(dividend.low), divisor, rest);
  quotient = joinWords(high, low);
  return fitsValue(quotient);
}

// One step of algorithm D with a normalised divisor of two words: top:next / divisor, the
// remainder in top. REQUIRES: top < divisor.
inline std::uint64_t divideStep(UInt128& top, std::uint64_t next, UInt128 divisor) {
  std::uint64_t estimate = ~std::uint64_t{0};
  UInt128 rest = 0;
  if (highWord(top) < highWord(divisor)) {
    std::uint64_t remainder;
    estimate = divideTwoByOne(highWord(top), lowWord(top), highWord(divisor), remainder);
    rest = joinWords(remainder, next);
  } else {
    // The top words are equal: the quotient of 2^64 - 1 leaves low word plus divisor's top word.
    const UInt128 sum = UInt128{lowWord(top)} + highWord(divisor);
    if (highWord(sum) != 0) {
      top = joinWords(lowWord(sum), next) - UInt128{estimate} * lowWord(divisor);
      return estimate;
    }
    rest = joinWords(lowWord(sum), next);
  }
  // Too large an estimate is undone by adding the divisor back, until that carries.
  const UInt128 product = UInt128{estimate} * lowWord(divisor);
  top = rest - product;
  for (bool below = product > rest; below;) {
    --estimate;
    below = !__builtin_add_overflow(top, divisor, &top);
  }
  return estimate;
}

// value:next shifted left by 0 to 63 bits, without the last word.
inline UInt128 shifted(UInt128 value, std::uint64_t next, unsigned left) {
  return joinWords(shiftedHigh(highWord(value), lowWord(value), left),
                   shiftedHigh(lowWord(value), next, left));
}

// The same for a divisor of two words.
inline bool divideByTwoWords(const Product& dividend, UInt128 divisor, UInt128& quotient) {
  // The quotient has two words only when the upper half is below the divisor.
  if (dividend.high >= divisor) return false;
  const auto shift = static_cast<unsigned>(std::countl_zero(highWord(divisor)));
  const UInt128 normal = shifted(divisor, 0, shift);
  UInt128 top = shifted(dividend.high, highWord(dividend.low), shift);
  const UInt128 below = shifted(dividend.low, 0, shift);
  const std::uint64_t high = divideStep(top, highWord(below), normal);
  const std::uint64_t low = divideStep(top, lowWord(below), normal);
  quotient = joinWords(high, low);
  return fitsValue(quotient);
}

// 2^64 is 1 modulo 5, so the words of a value and their carry add up.
inline bool isDivisibleByTen(UInt128 value) {
  const UInt128 sum = UInt128{lowWord(value)} + highWord(value);
  const bool byFive = (lowWord(sum) + highWord(sum)) % 5 == 0;
  // No shortcut for odd values: half of them are, and a branch would be mispredicted.
  return static_cast<int>(byFive) & static_cast<int>((lowWord(value) & 1) == 0);
}

// Strips trailing zero digits off the magnitude of a real quotient; returns the places left.
inline int stripZeros(UInt128& value) {
  if (!isDivisibleByTen(value)) return kMaxStoredPlaces;
  Wide digits{{lowWord(value), highWord(value)}};
  const int places = decimals::stripZeros(digits, kMaxStoredPlaces);
  value = joinWords(digits.word[1], digits.word[0]);
  return places;
}

constexpr UInt128 kTenTo23 = UInt128{powerOfTen(19)} * powerOfTen(4);

// realDivide in registers: the magnitude of dividend * 10^23 / divisor, cut. False when a register
// does not hold it, or the divisor is 0.
inline bool divideMagnitudes(UInt128 dividend, UInt128 divisor, UInt128& quotient) {
  const Product scaled = multiplyMagnitudes(dividend, kTenTo23);
  return highWord(divisor) == 0 ? divideByOneWord(scaled, lowWord(divisor), quotient)
                                : divideByTwoWords(scaled, divisor, quotient);
}

// The 128-bit halves of the operators stay out of line: the 64-bit halves need few registers.
[[gnu::noinline]] Decimal addValues(const Decimal& left, const Decimal& right) {
  Int128 a;
  Int128 b;
  if (!loadValues(left, right, a, b) || __builtin_add_overflow(a, b, &a)) {
    return generalAdd(left, right);
  }
  return Access::fromValue(a, commonScale(left, right));
}

[[gnu::noinline]] Decimal subtractValues(const Decimal& left, const Decimal& right) {
  Int128 a;
  Int128 b;
  if (!loadValues(left, right, a, b) || __builtin_sub_overflow(a, b, &a)) {
    return generalSubtract(left, right);
  }
  return Access::fromValue(a, commonScale(left, right));
}

// The factor taken once, when the other one is negative: read as unsigned, a negative word is
// larger by 2^64.
inline std::uint64_t correction(std::int64_t negative, std::uint64_t factor) {
  return static_cast<std::uint64_t>(negative >> 63) & factor;
}

inline Int128 multiplyWords(std::int64_t left, std::uint64_t right) {
  const UInt128 product = UInt128{static_cast<std::uint64_t>(left)} * right;
  return static_cast<Int128>(
      joinWords(highWord(product) - correction(left, right), lowWord(product)));
}

// A product needs no shift of its operands: each is multiplied where it stands, at the top of its
// words, and the product comes out at the top as well.
[[gnu::noinline]] Decimal multiplyValues(const Decimal& left, const Decimal& right) {
  if (Access::areShort(left, right)) {
    const std::int64_t a = Access::topWord(left);
    const std::int64_t b = Access::topWord(right);
    const std::uint64_t aNext = Access::nextWord(left);
    const std::uint64_t bNext = Access::nextWord(right);
    const UInt128 low = UInt128{aNext} * bNext;
    const Int128 cross = multiplyWords(a, bNext) + highWord(low);
    const Int128 other = multiplyWords(b, aNext) + lowWord(static_cast<UInt128>(cross));
    const Int128 high = Int128{a} * b + (cross >> 64) + (other >> 64);
    // Of normal operands that are not 0 at most 2 limbs of the product are redundant.
    const unsigned redundant = Access::redundantLimbs(static_cast<std::int64_t>(high >> 64));
    if (redundant <= 2) {
      return Access::fromLongTop(
          static_cast<UInt128>(high), joinWords(lowWord(static_cast<UInt128>(other)), lowWord(low)),
          redundant, left.getLength() + right.getLength() - redundant, productScale(left, right));
    }
  }
  return generalMultiply(left, right);
}

[[gnu::noinline]] std::partial_ordering compareValues(const Decimal& left, const Decimal& right) {
  if (!Access::areShort(left, right)) return generalCompare(left, right);
  if (left.getScaleFactor() == right.getScaleFactor()) {
    // Redundant limbs count here as they do in the general path.
    if (left.getLength() == right.getLength()) {
      return Access::topValue(left) <=> Access::topValue(right);
    }
    const bool isLess = left.getLength() > right.getLength() ? left.isneg() : !right.isneg();
    return isLess ? std::partial_ordering::less : std::partial_ordering::greater;
  }
  Int128 a;
  Int128 b;
  if (!Access::isNormal(left) || !Access::isNormal(right) || !loadValues(left, right, a, b)) {
    return generalCompare(left, right);
  }
  return a <=> b;
}

// The operands of a comparison as words of one scale.
inline bool loadNormalWords(const Decimal& left, const Decimal& right, std::int64_t& a,
                            std::int64_t& b) {
  return loadWords(left, right, a, b) && Access::isNormal(left) && Access::isNormal(right);
}

}  // namespace

bool scaleDecimal(Decimal& value, int places) {
  if (!Access::isShort(value) || places > kMaxFactor || places < -kMaxFactor || places == 0 ||
      value.getScaleFactor() + places < 0) {
    return generalScale(value, places);
  }
  Int128 digits = Access::value(value);
  if (places > 0) {
    if (!multiplyValue(digits, factorsFor(places)->left)) return generalScale(value, places);
  } else {
    const std::uint64_t divisor = powerOfTen(-places);
    const UInt128 rounded = (magnitudeOf(digits) + divisor / 2) / divisor;
    digits = signedValue(rounded, digits < 0);
  }
  const bool valid = value.isvalid();
  value = Access::fromValue(digits, static_cast<std::uint8_t>(value.getScaleFactor() + places));
  Access::setValid(value, valid);
  return true;
}

bool divideDecimals(const Decimal& dividend, const Decimal& divisor, Decimal& quotient,
                    Decimal& remainder) {
  Int128 a;
  Int128 b;
  if (!loadValues(dividend, divisor, a, b) || b == 0) {
    return generalDivide(dividend, divisor, quotient, remainder);
  }
  const std::uint8_t places = commonScale(dividend, divisor);
  const UInt128 by = magnitudeOf(b);
  const UInt128 of = magnitudeOf(a);
  const UInt128 whole =
      highWord(of) == 0 && highWord(by) == 0 ? lowWord(of) / lowWord(by) : of / by;
  quotient = Access::fromValue(signedValue(whole, (a < 0) != (b < 0)), 0);
  remainder = Access::fromValue(signedValue(of - whole * by, a < 0), places);
  return true;
}

std::partial_ordering compareDecimals(const Decimal& left, const Decimal& right) {
  std::int64_t a;
  std::int64_t b;
  return loadNormalWords(left, right, a, b) ? a <=> b : compareValues(left, right);
}

}  // namespace nomutil::decimals

using namespace nomutil::decimals;

Decimal operator+(const Decimal& left, const Decimal& right) {
  std::int64_t word;
  std::int64_t addend;
  if (loadWords(left, right, word, addend) && !__builtin_add_overflow(word, addend, &word)) {
    return Access::fromWord(word, commonScale(left, right));
  }
  return addValues(left, right);
}

Decimal operator-(const Decimal& left, const Decimal& right) {
  std::int64_t word;
  std::int64_t subtrahend;
  if (loadWords(left, right, word, subtrahend) &&
      !__builtin_sub_overflow(word, subtrahend, &word)) {
    return Access::fromWord(word, commonScale(left, right));
  }
  return subtractValues(left, right);
}

Decimal operator*(const Decimal& left, const Decimal& right) {
  if (Access::areWords(left, right)) {
    const Int128 product = Int128{Access::topWord(left)} * Access::topWord(right);
    const std::uint64_t high = highWord(static_cast<UInt128>(product));
    const std::uint64_t low = lowWord(static_cast<UInt128>(product));
    const unsigned redundant = Access::redundantLimbs(static_cast<std::int64_t>(high));
    const unsigned length = left.getLength() + right.getLength() - redundant;
    if (redundant <= 2 && length <= kMaxFastLimbs) {
      return Access::fromTop(shiftedHigh(high, low, 16 * redundant), low << 16 * redundant, length,
                             productScale(left, right));
    }
  }
  return multiplyValues(left, right);
}

Decimal operator/(const Decimal& dividend, const Decimal& divisor) {
  Decimal quotient;
  Decimal remainder;
  return divideDecimals(dividend, divisor, quotient, remainder) ? quotient : Decimal::Max;
}

Decimal operator%(const Decimal& dividend, const Decimal& divisor) {
  Decimal quotient;
  Decimal remainder;
  return divideDecimals(dividend, divisor, quotient, remainder) ? remainder : Decimal::Max;
}

Decimal operator+(const Decimal& value) {
  return value;
}

Decimal operator-(const Decimal& value) {
  const std::uint8_t places = value.getScaleFactor();
  if (Access::isShort(value)) return Access::fromValue(-Access::value(value), places);
  return Access::fromWide(negate(Access::wide(value)), places);
}

Decimal Decimal::realDivide(const Decimal& divisor) const {
  Int128 a;
  Int128 b;
  UInt128 quotient;
  if (!loadValues(*this, divisor, a, b)) return generalRealDivide(*this, divisor);
  if (!divideMagnitudes(magnitudeOf(a), magnitudeOf(b), quotient)) {
    return generalRealDivide(*this, divisor);
  }
  const int places = stripZeros(quotient);
  return Access::fromValue(signedValue(quotient, (a < 0) != (b < 0)),
                           static_cast<std::uint8_t>(places));
}

bool operator==(const Decimal& left, const Decimal& right) {
  if (left.getScaleFactor() == right.getScaleFactor()) {
    return left.getLength() == right.getLength() &&
           std::memcmp(left.getValue(), right.getValue(), left.getValueLength()) == 0;
  }
  return std::is_eq(compareDecimals(left, right));
}

bool operator<(const Decimal& left, const Decimal& right) {
  std::int64_t a;
  std::int64_t b;
  return loadNormalWords(left, right, a, b) ? a < b : std::is_lt(compareValues(left, right));
}

bool operator!=(const Decimal& left, const Decimal& right) {
  return !(left == right);
}
bool operator>(const Decimal& left, const Decimal& right) {
  return right < left;
}
bool operator<=(const Decimal& left, const Decimal& right) {
  return !(right < left);
}
bool operator>=(const Decimal& left, const Decimal& right) {
  return !(left < right);
}
