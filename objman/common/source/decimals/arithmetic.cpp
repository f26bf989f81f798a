// The operators: the fast path for operands of 1 to 7 limbs, in 64-bit and 128-bit registers, with
// the general path behind it. 12.5 + 0.25 aligns to 1250 + 25 and gives 1275 with scale 2.
//
// Redundant leading limbs change neither sums, products nor quotients, so only the comparisons ask
// whether an operand is in normal form.

#include "access.h"

#include "sys/decimals.h"

#include <array>
#include <bit>
#include <cstdint>

namespace nomutil::decimals {
namespace {

// A signed word takes 10^0 to 10^18 as a factor.
constexpr int kMaxFactor = 18;

// The factor that raises an operand by `places` when positive, and 1 otherwise. A table and not a
// test: unequal scales shall cost no mispredicted branch.
inline std::int64_t raiseFactor(int places) {
  static constexpr auto kFactors = [] {
    std::array<std::int64_t, 2 * kMaxFactor + 1> factors{};
    for (int i = -kMaxFactor; i <= kMaxFactor; ++i) {
      factors[static_cast<unsigned>(i + kMaxFactor)] =
          i > 0 ? static_cast<std::int64_t>(powerOfTen(i)) : 1;
    }
    return factors;
  }();
  return kFactors[static_cast<unsigned>(places + kMaxFactor)];
}

// Places that the left operand lacks; negative for the right one's.
inline int missingPlaces(const Decimal& left, const Decimal& right) {
  return right.getScaleFactor() - left.getScaleFactor();
}

inline bool isFactor(int places) {
  return places <= kMaxFactor && places >= -kMaxFactor;
}

inline std::uint8_t commonScale(const Decimal& left, const Decimal& right) {
  return left.getScaleFactor() > right.getScaleFactor() ? left.getScaleFactor()
                                                        : right.getScaleFactor();
}

inline std::uint8_t productScale(const Decimal& left, const Decimal& right) {
  return static_cast<std::uint8_t>(left.getScaleFactor() + right.getScaleFactor());
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
  const int missing = missingPlaces(left, right);
  if (!Access::isWord(left) || !Access::isWord(right) || !isFactor(missing)) return false;
  return !__builtin_mul_overflow(Access::word(left), raiseFactor(missing), &a) &&
         !__builtin_mul_overflow(Access::word(right), raiseFactor(-missing), &b);
}

// The same as 128-bit values, where a test costs less than two long multiplications.
inline bool loadValues(const Decimal& left, const Decimal& right, Int128& a, Int128& b) {
  const int missing = missingPlaces(left, right);
  if (!Access::isShort(left) || !Access::isShort(right) || !isFactor(missing)) return false;
  a = Access::value(left);
  b = Access::value(right);
  if (missing == 0) return true;
  return multiplyValue(missing > 0 ? a : b, raiseFactor(missing > 0 ? missing : -missing));
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
inline bool divideByWord(const Product& dividend, std::uint64_t divisor, UInt128& quotient) {
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
  UInt128 product = UInt128{estimate} * lowWord(divisor);
  while (product > rest) {
    --estimate;
    product -= lowWord(divisor);
    const UInt128 more = rest + (UInt128{highWord(divisor)} << 64);
    if (more < rest) {
      rest = more;
      break;
    }
    rest = more;
  }
  top = rest - product;
  return estimate;
}

// The same for a divisor of two words.
inline bool divideByTwoWords(const Product& dividend, UInt128 divisor, UInt128& quotient) {
  const int shift = std::countl_zero(highWord(divisor));
  const UInt128 normal = divisor << shift;
  // The quotient has two words only when the upper half is below the divisor.
  if (dividend.high >= divisor) return false;
  UInt128 top = dividend.high << shift | dividend.low >> 1 >> (127 - shift);
  const UInt128 below = dividend.low << shift;
  const std::uint64_t high = divideStep(top, highWord(below), normal);
  const std::uint64_t low = divideStep(top, lowWord(below), normal);
  quotient = joinWords(high, low);
  return fitsValue(quotient);
}

// 2^64 is 1 modulo 5, so the words of a value add up.
inline bool isDivisibleByTen(UInt128 value) {
  const std::uint64_t sum = lowWord(value) % 5 + highWord(value) % 5;
  const bool byFive = sum == 0 || sum == 5;
  // No shortcut for odd values: half of them are, and a branch would be mispredicted.
  return static_cast<int>(byFive) & static_cast<int>((lowWord(value) & 1) == 0);
}

// Strips trailing zero digits, at most `places` of them; returns the places left.
[[gnu::noinline]] int stripSomeZeros(UInt128& value, int places) {
  for (int step = 16; step >= 1; step /= 2) {
    while (places >= step && value % powerOfTen(step) == 0) {
      value /= powerOfTen(step);
      places -= step;
    }
  }
  return places;
}

inline int stripZeros(UInt128& value, int places) {
  return isDivisibleByTen(value) && value != 0 ? stripSomeZeros(value, places) : places;
}

constexpr UInt128 kTenTo23 = UInt128{powerOfTen(19)} * powerOfTen(4);

// realDivide in registers: the magnitude of dividend * 10^23 / divisor, cut.
inline bool divideMagnitudes(Int128 dividend, Int128 divisor, UInt128& quotient) {
  const Product scaled = multiplyMagnitudes(magnitudeOf(dividend), kTenTo23);
  const UInt128 by = magnitudeOf(divisor);
  return highWord(by) == 0 ? divideByWord(scaled, lowWord(by), quotient)
                           : divideByTwoWords(scaled, by, quotient);
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

// A product needs no shift of its operands: each is multiplied where it stands, at the top of its
// word, and the product comes out at the top as well.
[[gnu::noinline]] Decimal multiplyValues(const Decimal& left, const Decimal& right) {
  if (Access::isShort(left) && Access::isShort(right)) {
    const Int128 a = Access::topValue(left);
    const Int128 b = Access::topValue(right);
    Product product = multiplyMagnitudes(static_cast<UInt128>(a), static_cast<UInt128>(b));
    // Read as unsigned, a negative operand is larger by 2^128.
    product.high -= static_cast<UInt128>((a < 0 ? b : 0)) + static_cast<UInt128>(b < 0 ? a : 0);
    Access::Top top;
    if (Access::normaliseTop(product.high, product.low, left.getLength() + right.getLength(),
                             top)) {
      return Access::fromLongTop(top, productScale(left, right));
    }
  }
  return generalMultiply(left, right);
}

[[gnu::noinline]] bool lessValues(const Decimal& left, const Decimal& right) {
  if (!Access::isShort(left) || !Access::isShort(right)) return generalLess(left, right);
  if (left.getScaleFactor() == right.getScaleFactor()) {
    // In normal form the longer operand is the larger one in size.
    if (left.getLength() > right.getLength()) return left.isneg();
    if (left.getLength() < right.getLength()) return !right.isneg();
    return Access::topValue(left) < Access::topValue(right);
  }
  Int128 a;
  Int128 b;
  if (!loadValues(left, right, a, b)) return generalLess(left, right);
  return a < b;
}

}  // namespace

bool scaleDecimal(Decimal& value, int places) {
  if (!Access::isShort(value) || places > kMaxFactor || places < -kMaxFactor || places == 0 ||
      value.getScaleFactor() + places < 0) {
    return generalScale(value, places);
  }
  Int128 digits = Access::value(value);
  if (places > 0) {
    if (!multiplyValue(digits, raiseFactor(places))) return generalScale(value, places);
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
  if (Access::isWord(left) && Access::isWord(right)) {
    const Int128 product = Int128{Access::topWord(left)} * Access::topWord(right);
    Access::Top top;
    if (Access::normaliseTop(static_cast<UInt128>(product), 0, left.getLength() + right.getLength(),
                             top) &&
        top.length <= kMaxFastLimbs) {
      return Access::fromTop(top, productScale(left, right));
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
  Decimal result = Access::isShort(value)
                       ? Access::fromValue(-Access::value(value), value.getScaleFactor())
                       : Access::fromWide(negate(Access::wide(value)), value.getScaleFactor());
  return result;
}

Decimal Decimal::realDivide(const Decimal& divisor) const {
  Int128 a;
  Int128 b;
  UInt128 quotient;
  if (!loadValues(*this, divisor, a, b) || b == 0 || !divideMagnitudes(a, b, quotient)) {
    return generalRealDivide(*this, divisor);
  }
  const int places = stripZeros(quotient, kMaxStoredPlaces);
  return Access::fromValue(signedValue(quotient, (a < 0) != (b < 0)),
                           static_cast<std::uint8_t>(places));
}

bool operator==(const Decimal& left, const Decimal& right) {
  if (left.getScaleFactor() == right.getScaleFactor()) {
    return left.getLength() == right.getLength() &&
           std::memcmp(left.getValue(), right.getValue(), left.getValueLength()) == 0;
  }
  Int128 a;
  Int128 b;
  if (!isNormal(left) || !isNormal(right) || !loadValues(left, right, a, b)) {
    return generalEqual(left, right);
  }
  return a == b;
}

bool operator<(const Decimal& left, const Decimal& right) {
  if (!isNormal(left) || !isNormal(right)) return generalLess(left, right);
  std::int64_t word;
  std::int64_t other;
  return loadWords(left, right, word, other) ? word < other : lessValues(left, right);
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
