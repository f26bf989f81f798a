// The general path: every operation on Wide integers, for operands of any length and form. Limb
// counts matter here where the rules ask for them: the product that is not tried, the comparison of
// operands with redundant limbs, the places of a real division.

#include "access.h"

#include "sys/decimals.h"

#include <compare>
#include <cstdint>

namespace nomutil::decimals {
namespace {

// An operand as an integer, and the limbs that it has as a Decimal.
struct Operand {
  explicit Operand(const Decimal& value) : digits(Access::wide(value)), length(value.getLength()) {}

  Wide digits;
  int length;
};

Decimal signedResult(const Wide& magnitude, bool negative, std::uint8_t scaleFactor) {
  if (negative) return Access::fromWide(negate(magnitude), scaleFactor);
  return Access::fromWide(magnitude, scaleFactor);
}

// Limbs of the absolute value of an operand: as many as the operand has when it is not negative,
// redundant ones too.
int absoluteLength(const Decimal& value, const Wide& size) {
  return value.isneg() ? normalLimbCount(size) : value.getLength();
}

// The digits of a negative value raised as a product: one that saturates is Min.
Wide raiseNegative(const Wide& digits, unsigned places) {
  assertPower(places);
  const int power = places <= kMaxPower ? static_cast<int>(places) : kMaxPower;
  const Wide size = negate(digits);
  const Wide& factor = widePowerOfTen(power);
  if (productSaturates(normalLimbCount(size), normalLimbCount(factor))) {
    return Access::wide(Decimal::Min);
  }
  return negate(multiply(size, factor));
}

// Multiplies by 10^places. False as soon as 21 limbs do not hold a value that is not negative: it
// is then the saturated one, Min when the sign bit of 21 limbs was reached.
bool raise(Operand& operand, unsigned places) {
  constexpr int kSignBit = 16 * kMaxLimbs - 1;
  if (places == 0 || operand.length == 0) return true;  // the empty zero stays empty
  Wide& digits = operand.digits;
  if (isNegative(digits)) {
    digits = raiseNegative(digits, places);
  } else if (!isZero(digits)) {
    while (places > 0) {
      // A step of several places is safe while even its largest factor cannot reach the sign bit.
      const bool far = bitLength(digits) + 64 <= kSignBit;
      const int step = !far ? 1 : places < kWordDigits ? static_cast<int>(places) : kWordDigits;
      multiplyAdd(digits, powerOfTen(step), 0);
      if (bitLength(digits) > kSignBit) {
        const bool signSet = (digits.word[kSignBit / 64] >> (kSignBit % 64) & 1) != 0;
        operand = Operand(signSet ? Decimal::Min : Decimal::Max);
        return false;
      }
      places -= static_cast<unsigned>(step);
    }
  }
  operand.length = normalLimbCount(digits);
  return true;
}

// Raises the operand of the smaller scale. False when that fails.
bool alignScales(const Decimal& left, const Decimal& right, Operand& a, Operand& b) {
  const int missing = right.getScaleFactor() - left.getScaleFactor();
  return missing >= 0 ? raise(a, static_cast<unsigned>(missing))
                      : raise(b, static_cast<unsigned>(-missing));
}

}  // namespace

Decimal Access::fromWide(const Wide& value, std::uint8_t scaleFactor) {
  int length = normalLimbCount(value);
  if (length > kMaxLimbs) {
    NOMUTIL_ASSERT_TEXT(kSource, length <= kMaxLimbs, "_length <= MaxDecimalValueSize");
    length = kMaxLimbs;
  }
  Decimal result;
  result._length = static_cast<std::uint8_t>(length);
  result._scaleFactor = scaleFactor;
  storeLimbs(value, length, result._value);
  return result;
}

Decimal absolute(const Decimal& value) {
  return value.isneg() ? -value : value;
}

Wide removePlaces(const Wide& digits, unsigned places, bool round) {
  if (places == 0) return digits;
  // 21 limbs are below 10^101: 101 places less, they may round up to 1, but no further.
  if (places > kMaxPower + 1) return {};
  Wide dividend = digits;
  if (round) {
    Wide half = widePowerOfTen(static_cast<int>(places) - 1);
    multiplyAdd(half, 5, 0);
    dividend = add(digits, half);
  }
  Wide quotient;
  Wide remainder;
  divide(dividend, widePowerOfTen(static_cast<int>(places)), quotient, remainder);
  return quotient;
}

int stripZeros(Wide& digits, int places) {
  if (isZero(digits)) return places;
  for (int step = 16; step >= 1; step /= 2) {
    // Multiples of 10^step end in as many bits of 0.
    const std::uint64_t lastBits = (std::uint64_t{1} << step) - 1;
    while (places >= step && (digits.word[0] & lastBits) == 0) {
      Wide shorter = digits;
      if (divideByWord(shorter, powerOfTen(step)) != 0) break;
      digits = shorter;
      places -= step;
    }
  }
  return places;
}

bool generalScale(Decimal& value, int places) {
  if (places == 0) return true;
  const std::uint8_t before = value.getScaleFactor();
  const bool valid = value.isvalid();
  value.setScaleFactor(0);
  Operand operand(value);
  bool raised = true;
  if (places < 0) {
    const unsigned count = 0u - static_cast<unsigned>(places);
    if (before < count) return false;
    assertPower(count);
    const bool negative = value.isneg();
    makeMagnitude(operand.digits);
    value = signedResult(removePlaces(operand.digits, count, true), negative, 0);
  } else {
    raised = raise(operand, static_cast<unsigned>(places));
    if (operand.length != 0) value = Access::fromWide(operand.digits, 0);
  }
  Access::setValid(value, valid);
  if (raised) value.setScaleFactor(static_cast<std::uint8_t>(before + places));
  return raised;
}

Decimal generalAdd(const Decimal& left, const Decimal& right) {
  Operand a(left);
  Operand b(right);
  if (!alignScales(left, right, a, b)) return Decimal::Max;
  return Access::fromWide(add(a.digits, b.digits), commonScale(left, right));
}

Decimal generalSubtract(const Decimal& left, const Decimal& right) {
  Operand a(left);
  Operand b(right);
  if (!alignScales(left, right, a, b)) return Decimal::Max;
  return Access::fromWide(subtract(a.digits, b.digits), commonScale(left, right));
}

Decimal generalMultiply(const Decimal& left, const Decimal& right) {
  Wide a = Access::wide(left);
  Wide b = Access::wide(right);
  makeMagnitude(a);
  makeMagnitude(b);
  const bool negative = left.isneg() != right.isneg();
  if (productSaturates(absoluteLength(left, a), absoluteLength(right, b))) {
    return negative ? Decimal::Min : Decimal::Max;
  }
  return signedResult(multiply(a, b), negative, productScale(left, right));
}

bool generalDivide(const Decimal& dividend, const Decimal& divisor, Decimal& quotient,
                   Decimal& remainder) {
  Operand a(dividend);
  Operand b(divisor);
  if (!alignScales(dividend, divisor, a, b)) return false;
  if (isZero(b.digits)) {
    nosAssertFail(kSource, "nomutil", "DivisionByZero", kNosPrecondition, __LINE__);
    Decimal aligned = dividend;
    const int missing = divisor.getScaleFactor() - dividend.getScaleFactor();
    if (missing > 0) aligned.scale(missing);
    quotient = aligned;
    remainder = aligned;
    return true;
  }
  const std::uint8_t places = commonScale(dividend, divisor);
  const bool dividendNegative = dividend.isneg();
  const bool quotientNegative = dividendNegative != divisor.isneg();
  makeMagnitude(a.digits);
  makeMagnitude(b.digits);
  Wide quotientSize;
  Wide remainderSize;
  divide(a.digits, b.digits, quotientSize, remainderSize);
  quotient = signedResult(quotientSize, quotientNegative, 0);
  remainder = signedResult(remainderSize, dividendNegative, places);
  return true;
}

namespace {

// The division is reported; what it leaves, the raised dividend, is stripped as a quotient would
// be. Its own places go with the first zero.
Decimal realDivideByZero(const Decimal& dividend, const Decimal& zero, int places) {
  Decimal raised = dividend;
  raised.scale(places);
  raised.setScaleFactor(dividend.getScaleFactor());
  Decimal quotient;
  Decimal remainder;
  generalDivide(raised, zero, quotient, remainder);
  while (places > 0 && quotient.iseven() && !isZero(Access::wide(quotient))) {
    Decimal shorter;
    if (!generalDivide(quotient, Decimal::power10(1), shorter, remainder)) break;
    if (!isZero(Access::wide(remainder))) break;
    quotient = shorter;
    --places;
  }
  quotient.setScaleFactor(static_cast<std::uint8_t>(quotient.getScaleFactor() + places));
  return quotient;
}

}  // namespace

Decimal generalRealDivide(const Decimal& dividend, const Decimal& divisor) {
  constexpr int kLimbsOfScale = 5;  // of 10^23
  const int places = dividend.getLength() + kLimbsOfScale < 20 ? kMaxStoredPlaces : 0;
  // The raised digits keep the dividend's own scale: aligning them must not undo the raise.
  Operand a(dividend);
  Operand b(divisor);
  raise(a, static_cast<unsigned>(places));
  if (!alignScales(dividend, divisor, a, b)) return Decimal::Max;
  if (isZero(b.digits)) return realDivideByZero(dividend, divisor, places);
  makeMagnitude(a.digits);
  makeMagnitude(b.digits);
  Wide quotient;
  Wide remainder;
  divide(a.digits, b.digits, quotient, remainder);
  const int left = stripZeros(quotient, places);
  return signedResult(quotient, dividend.isneg() != divisor.isneg(),
                      static_cast<std::uint8_t>(left));
}

std::partial_ordering generalCompare(const Decimal& left, const Decimal& right) {
  const bool negative = left.isneg();
  if (negative != right.isneg()) {
    return negative ? std::partial_ordering::less : std::partial_ordering::greater;
  }
  Operand a(left);
  Operand b(right);
  if (!alignScales(left, right, a, b)) return std::partial_ordering::unordered;
  // More limbs are larger in size, redundant ones too.
  if (a.length != b.length) return negative ? b.length <=> a.length : a.length <=> b.length;
  // Of one sign, the words in two's complement are in the order of the values.
  return compareMagnitudes(a.digits, b.digits) <=> 0;
}

}  // namespace nomutil::decimals
