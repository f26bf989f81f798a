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

inline std::uint64_t magnitudeOf(std::int64_t value) {
  const auto bits = static_cast<std::uint64_t>(value);
  return value < 0 ? 0 - bits : bits;
}

inline bool fitsValue(UInt128 magnitude) {
  return highWord(magnitude) >> 63 == 0;
}

inline Int128 signedValue(UInt128 magnitude, bool negative) {
  return static_cast<Int128>(negative ? 0 - magnitude : magnitude);
}

// A product of four words, the first one topmost. Word by word, and the carries by hand: of 128-bit
// integers the compiler keeps halves in memory here, and waits for them.
struct Product {
  std::uint64_t word[4];
};

// high:low = a * b.
inline void multiplyWords(std::uint64_t a, std::uint64_t b, std::uint64_t& high,
                          std::uint64_t& low) {
  __asm__("mulq %[b]" : "=a"(low), "=d"(high) : "a"(a), [b] "r"(b) : "cc");
}

// top:high:low += a * b.
inline void addProduct(std::uint64_t a, std::uint64_t b, std::uint64_t& top, std::uint64_t& high,
                       std::uint64_t& low) {
  std::uint64_t productLow = a;
  std::uint64_t productHigh;
  __asm__(
      "mulq %[b]\n\t"
      "addq %[productLow], %[low]\n\t"
      "adcq %[productHigh], %[high]\n\t"
      "adcq $0, %[top]"
      : [productLow] "+a"(productLow), [productHigh] "=&d"(productHigh), [top] "+r"(top),
        [high] "+r"(high), [low] "+r"(low)
      : [b] "r"(b)
      : "cc");
}

// high:low -= byHigh:byLow.
inline void subtractWords(std::uint64_t& high, std::uint64_t& low, std::uint64_t byHigh,
                          std::uint64_t byLow) {
  __asm__(
      "subq %[byLow], %[low]\n\t"
      "sbbq %[byHigh], %[high]"
      : [high] "+r"(high), [low] "+&r"(low)
      : [byHigh] "r"(byHigh), [byLow] "r"(byLow)
      : "cc");
}

inline Product multiplyMagnitudes(UInt128 a, UInt128 b) {
  Product product;
  std::uint64_t(&word)[4] = product.word;
  multiplyWords(highWord(a), highWord(b), word[0], word[1]);
  multiplyWords(lowWord(a), lowWord(b), word[2], word[3]);
  addProduct(highWord(a), lowWord(b), word[0], word[1], word[2]);
  addProduct(lowWord(a), highWord(b), word[0], word[1], word[2]);
  return product;
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
  std::uint64_t high;
  std::uint64_t low;
  multiplyWords(estimate, lowWord(divisor), high, low);
  const UInt128 product = joinWords(high, low);
  top = rest - product;
  for (bool below = product > rest; below;) {
    --estimate;
    below = !__builtin_add_overflow(top, divisor, &top);
  }
  return estimate;
}

// A dividend of realDivide, raised by 10^23 = 5^23 * 2^23, as far as 5^23 goes: three words, and
// the 23 bits are left to the shift that divisors of two words need anyway. REQUIRES: top < 2^41.
struct Raised {
  std::uint64_t top;
  std::uint64_t high;
  std::uint64_t low;
};
constexpr unsigned kTwos = 23;
constexpr std::uint64_t kFiveTo23 = 11'920'928'955'078'125;
static_assert(UInt128{kFiveTo23} << kTwos == UInt128{powerOfTen(19)} * powerOfTen(4));

// dividend * 2^23 / divisor for a divisor of one word. False when the quotient exceeds 127 bits or
// the divisor is 0.
inline bool divideByOneWord(const Raised& dividend, std::uint64_t divisor, UInt128& quotient) {
  std::uint64_t rest = shiftedHigh(dividend.top, dividend.high, kTwos);
  if (rest >= divisor) return false;
  const std::uint64_t middle = shiftedHigh(dividend.high, dividend.low, kTwos);
  const std::uint64_t high = divideTwoByOne(rest, middle, divisor, rest);
  const std::uint64_t low = divideTwoByOne(rest, dividend.low << kTwos, divisor, rest);
  quotient = joinWords(high, low);
  return fitsValue(quotient);
}

// The same for a divisor of two words.
inline bool divideByTwoWords(const Raised& dividend, UInt128 divisor, UInt128& quotient) {
  const auto [top, high, low] = dividend;
  const auto shift = static_cast<unsigned>(std::countl_zero(highWord(divisor)));
  const UInt128 normal =
      joinWords(shiftedHigh(highWord(divisor), lowWord(divisor), shift), lowWord(divisor) << shift);
  UInt128 rest;
  std::uint64_t next;
  std::uint64_t last;
  if (shift + kTwos >= 64) [[likely]] {
    const unsigned left = shift + kTwos - 64;
    rest = joinWords(shiftedHigh(top, high, left), shiftedHigh(high, low, left));
    next = low << left;
    last = 0;
  } else {
    const unsigned left = shift + kTwos;
    rest = joinWords(top >> (64 - left), shiftedHigh(top, high, left));
    next = shiftedHigh(high, low, left);
    last = low << left;
  }
  // The rest is below the divisor: its top word is less than 2^63.
  const std::uint64_t upper = divideStep(rest, next, normal);
  quotient = joinWords(upper, divideStep(rest, last, normal));
  return fitsValue(quotient);
}

// 2^64 is 1 modulo 5, so the words of a value and their carry add up; the multiples of 5 are the
// least fifth of the numbers when all are multiplied by its inverse.
inline bool isDivisibleByTen(UInt128 value) {
  constexpr std::uint64_t kInverseOfFive = 0xcccccccccccccccd;
  static_assert(kInverseOfFive * 5 == 1);
  std::uint64_t sum;
  const bool carry = __builtin_add_overflow(lowWord(value), highWord(value), &sum);
  const bool byFive = (sum + carry) * kInverseOfFive <= ~std::uint64_t{0} / 5;
  // No shortcut for odd values: half of them are, and a branch would be mispredicted.
  return static_cast<int>(byFive) & static_cast<int>((lowWord(value) & 1) == 0);
}

// A count of zero digits, and what tells whether a value has them and takes them off: the value's
// last bits are 0, and among the products with the inverse of 5^places modulo 2^128 the quotients
// are the least.
struct Zeros {
  int places;
  UInt128 inverse;
  UInt128 largestQuotient;
};
constexpr auto kZeros = [] {
  std::array<Zeros, 5> table{};
  int places = 16;
  for (Zeros& zeros : table) {
    UInt128 power = 1;
    for (int i = 0; i < places; ++i) power *= 5;
    // The power is its own inverse modulo 8; each step of Newton's doubles the bits that are right.
    UInt128 inverse = power;
    for (int bits = 3; bits < 128; bits *= 2) inverse *= 2 - power * inverse;
    zeros = {places, inverse, ~UInt128{0} / power};
    places /= 2;
  }
  return table;
}();

// Takes trailing zero digits off a value, at most 23 of them; returns the places left of 23.
[[gnu::noinline]] int stripZeros(UInt128& value) {
  int left = kMaxStoredPlaces;
  if (value == 0) return left;
  // Each step once, since 31 = 16 + 8 + 4 + 2 + 1.
  for (const Zeros& zeros : kZeros) {
    const std::uint64_t lastBits = (std::uint64_t{1} << zeros.places) - 1;
    if ((lowWord(value) & lastBits) != 0 || left < zeros.places) continue;
    const UInt128 quotient = value * zeros.inverse;
    if (quotient > zeros.largestQuotient) continue;
    value = quotient >> zeros.places;
    left -= zeros.places;
  }
  return left;
}

// realDivide in registers: the magnitude of dividend * 10^23 / divisor, cut. False when a register
// does not hold it, or the divisor is 0.
inline bool divideMagnitudes(std::uint64_t dividend, std::uint64_t divisor, UInt128& quotient) {
  Raised raised = {};
  multiplyWords(dividend, kFiveTo23, raised.high, raised.low);
  return divideByOneWord(raised, divisor, quotient);
}
inline bool divideMagnitudes(UInt128 dividend, UInt128 divisor, UInt128& quotient) {
  Raised raised = {};
  multiplyWords(highWord(dividend), kFiveTo23, raised.top, raised.high);
  std::uint64_t carried;
  multiplyWords(lowWord(dividend), kFiveTo23, carried, raised.low);
  raised.top +=
      static_cast<std::uint64_t>(__builtin_add_overflow(raised.high, carried, &raised.high));
  if (raised.top >> (64 - kTwos) != 0) return false;
  return highWord(divisor) == 0 ? divideByOneWord(raised, lowWord(divisor), quotient)
                                : divideByTwoWords(raised, divisor, quotient);
}

// The normal form of a quotient of 23 places.
inline Decimal quotientOf(UInt128 magnitude, bool negative) {
  const int places = isDivisibleByTen(magnitude) ? stripZeros(magnitude) : kMaxStoredPlaces;
  return Access::fromValue(signedValue(magnitude, negative), static_cast<std::uint8_t>(places));
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

// All ones when the word is negative.
inline std::uint64_t signMask(std::uint64_t word) {
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(word) >> 63);
}

// A product needs no shift of its operands: each is multiplied where it stands, at the top of its
// words, and the product comes out at the top as well.
[[gnu::noinline]] Decimal multiplyValues(const Decimal& left, const Decimal& right) {
  if (Access::areShort(left, right)) {
    const auto a = static_cast<std::uint64_t>(Access::topWord(left));
    const auto b = static_cast<std::uint64_t>(Access::topWord(right));
    const std::uint64_t aNext = Access::nextWord(left);
    const std::uint64_t bNext = Access::nextWord(right);
    Product product = multiplyMagnitudes(joinWords(a, aNext), joinWords(b, bNext));
    // Read as a magnitude, a negative factor is larger by 2^128.
    const std::uint64_t aSign = signMask(a);
    const std::uint64_t bSign = signMask(b);
    subtractWords(product.word[0], product.word[1], b & aSign, bNext & aSign);
    subtractWords(product.word[0], product.word[1], a & bSign, aNext & bSign);
    // Of normal operands that are not 0 at most 2 limbs of the product are redundant, and 2 seldom.
    const std::uint64_t size = product.word[0] ^ signMask(product.word[0]);
    if (size >> 31 != 0) [[likely]] {
      return Access::fromProduct(product.word, size >> 47 == 0,
                                 Access::header(left) + Access::header(right));
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
  if (loadWords(left, right, word, addend) && !__builtin_add_overflow(word, addend, &word))
      [[likely]] {
    return Access::fromWord(word, commonScale(left, right));
  }
  return addValues(left, right);
}

Decimal operator-(const Decimal& left, const Decimal& right) {
  std::int64_t word;
  std::int64_t subtrahend;
  if (loadWords(left, right, word, subtrahend) && !__builtin_sub_overflow(word, subtrahend, &word))
      [[likely]] {
    return Access::fromWord(word, commonScale(left, right));
  }
  return subtractValues(left, right);
}

Decimal operator*(const Decimal& left, const Decimal& right) {
  std::int64_t product;
  if (Access::areWords(left, right) &&
      !__builtin_mul_overflow(Access::word(left), Access::word(right), &product)) [[likely]] {
    return Access::fromWord(product, productScale(left, right));
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
  std::int64_t word;
  std::int64_t by;
  UInt128 quotient;
  if (loadWords(*this, divisor, word, by) &&
      divideMagnitudes(magnitudeOf(word), magnitudeOf(by), quotient)) {
    return quotientOf(quotient, (word < 0) != (by < 0));
  }
  Int128 a;
  Int128 b;
  if (loadValues(*this, divisor, a, b) &&
      divideMagnitudes(magnitudeOf(a), magnitudeOf(b), quotient)) [[likely]] {
    return quotientOf(quotient, (a < 0) != (b < 0));
  }
  return generalRealDivide(*this, divisor);
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
