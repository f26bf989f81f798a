// The general path: every operation on Wide integers, for operands of any length and form. Limb
// counts matter here where the rules ask for them: the product that is not tried, the comparison of
// operands with redundant limbs, the places of a real division.

#include "access.h"

#include "sys/decimals.h"

#include <cstdint>

namespace nomutil::decimals {
namespace {

Decimal signedResult(const Wide& magnitude, bool negative, std::uint8_t scaleFactor) {
  if (negative) return Access::fromWide(negate(magnitude), scaleFactor);
  return Access::fromWide(magnitude, scaleFactor);
}

bool haveOneScale(const Decimal& left, const Decimal& right) {
  return left.getScaleFactor() == right.getScaleFactor();
}

// Limbs of the absolute value of an operand: as many as the operand has when it is not negative,
// redundant ones too.
int absoluteLength(const Decimal& value, const Wide& size) {
  return value.isneg() ? normalLimbCount(size) : value.getLength();
}

// Multiplies a non-negative value by ten `places` times. False as soon as 21 limbs do not hold it:
// the value is then the saturated one, Min when the sign bit of 21 limbs was reached.
bool raise(Decimal& value, unsigned places) {
  constexpr int kSignBit = 16 * kMaxLimbs - 1;
  if (value.getLength() == 0) return true;  // the empty zero stays empty
  Wide digits = Access::wide(value);
  if (isZero(digits)) places = 0;
  while (places > 0) {
    // A step of several places is safe while even its largest factor cannot reach the sign bit.
    const bool far = bitLength(digits) + 64 <= kSignBit;
    const int step = !far ? 1 : places < kWordDigits ? static_cast<int>(places) : kWordDigits;
    multiplyAdd(digits, powerOfTen(step), 0);
    if (bitLength(digits) > kSignBit) {
      const bool negative = (digits.word[kSignBit / 64] >> (kSignBit % 64) & 1) != 0;
      value = negative ? Decimal::Min : Decimal::Max;
      return false;
    }
    places -= static_cast<unsigned>(step);
  }
  value = Access::fromWide(digits, 0);
  return true;
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

bool alignScales(Decimal& left, Decimal& right) {
  const int difference = left.getScaleFactor() - right.getScaleFactor();
  if (difference < 0) return left.scale(-difference);
  return difference == 0 || right.scale(difference);
}

Wide removePlaces(const Wide& digits, unsigned places, bool round) {
  if (places == 0) return digits;
  // 21 limbs are below 10^101: beyond that only the rounding of the last place could remain.
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

bool generalScale(Decimal& value, int places) {
  if (places == 0) return true;
  const std::uint8_t before = value.getScaleFactor();
  const bool valid = value.isvalid();
  value.setScaleFactor(0);
  const unsigned count =
      places < 0 ? 0u - static_cast<unsigned>(places) : static_cast<unsigned>(places);
  if (places < 0) {
    if (before < count) return false;
    checkPower(count);
    const bool negative = value.isneg();
    value = signedResult(removePlaces(magnitude(Access::wide(value)), count, true), negative, 0);
    Access::setValid(value, valid);
    value.setScaleFactor(static_cast<std::uint8_t>(before - count));
    return true;
  }
  if (value.isneg()) {
    // A product that saturates is no failure here: Min takes the places on.
    const unsigned power = count <= kMaxPower ? count : kMaxPower;
    checkPower(count);
    value = generalMultiply(value, Decimal::power10(static_cast<std::uint8_t>(power)));
  } else if (!raise(value, count)) {
    return false;
  }
  Access::setValid(value, valid);
  value.setScaleFactor(static_cast<std::uint8_t>(before + count));
  return true;
}

// Operands of unequal scales are aligned first and then come back with equal ones.

Decimal generalAdd(const Decimal& left, const Decimal& right) {
  if (haveOneScale(left, right)) {
    return Access::fromWide(add(Access::wide(left), Access::wide(right)), left.getScaleFactor());
  }
  Decimal a = left;
  Decimal b = right;
  return alignScales(a, b) ? generalAdd(a, b) : Decimal::Max;
}

Decimal generalSubtract(const Decimal& left, const Decimal& right) {
  if (haveOneScale(left, right)) {
    return Access::fromWide(subtract(Access::wide(left), Access::wide(right)),
                            left.getScaleFactor());
  }
  Decimal a = left;
  Decimal b = right;
  return alignScales(a, b) ? generalSubtract(a, b) : Decimal::Max;
}

Decimal generalMultiply(const Decimal& left, const Decimal& right) {
  Wide a = Access::wide(left);
  Wide b = Access::wide(right);
  makeMagnitude(a);
  makeMagnitude(b);
  const bool negative = left.isneg() != right.isneg();
  // The count of limbs decides, not the product, so that the check is cheap: some products that
  // would fit saturate as well.
  if (absoluteLength(left, a) + absoluteLength(right, b) + 1 > kMaxLimbs) {
    return negative ? Decimal::Min : Decimal::Max;
  }
  const auto places = static_cast<std::uint8_t>(left.getScaleFactor() + right.getScaleFactor());
  return signedResult(multiply(a, b), negative, places);
}

bool generalDivide(const Decimal& dividend, const Decimal& divisor, Decimal& quotient,
                   Decimal& remainder) {
  if (!haveOneScale(dividend, divisor)) {
    Decimal a = dividend;
    Decimal b = divisor;
    return alignScales(a, b) && generalDivide(a, b, quotient, remainder);
  }
  Wide dividendSize = Access::wide(dividend);
  Wide divisorSize = Access::wide(divisor);
  makeMagnitude(dividendSize);
  makeMagnitude(divisorSize);
  if (isZero(divisorSize)) {
    nosAssertFail(kSource, "nomutil", "DivisionByZero", kNosPrecondition, __LINE__);
    quotient = dividend;
    remainder = dividend;
    return true;
  }
  const std::uint8_t places = dividend.getScaleFactor();
  const bool dividendNegative = dividend.isneg();
  const bool quotientNegative = dividendNegative != divisor.isneg();
  Wide quotientSize;
  Wide remainderSize;
  divide(dividendSize, divisorSize, quotientSize, remainderSize);
  quotient = signedResult(quotientSize, quotientNegative, 0);
  remainder = signedResult(remainderSize, dividendNegative, places);
  return true;
}

Decimal generalRealDivide(const Decimal& dividend, const Decimal& divisor) {
  constexpr int kLimbsOfScale = 5;  // of 10^23
  int places = dividend.getLength() + kLimbsOfScale < 20 ? kMaxStoredPlaces : 0;
  // The raised digits keep the dividend's own scale: aligning them must not undo the raise.
  Decimal raised = dividend;
  raised.scale(places);
  raised.setScaleFactor(dividend.getScaleFactor());

  Decimal quotient;
  Decimal remainder;
  if (!generalDivide(raised, divisor, quotient, remainder)) return Decimal::Max;
  const Decimal ten = Decimal::power10(1);
  while (places > 0 && quotient.iseven() && !isZero(Access::wide(quotient))) {
    Decimal shorter;
    if (!generalDivide(quotient, ten, shorter, remainder)) break;
    if (!isZero(Access::wide(remainder))) break;
    quotient = shorter;
    --places;
  }
  quotient.setScaleFactor(static_cast<std::uint8_t>(quotient.getScaleFactor() + places));
  return quotient;
}

bool generalEqual(const Decimal& left, const Decimal& right) {
  Decimal a = left;
  Decimal b = right;
  if (!alignScales(a, b)) return false;
  return a.getLength() == b.getLength() &&
         std::memcmp(a.getValue(), b.getValue(), a.getValueLength()) == 0;
}

bool generalLess(const Decimal& left, const Decimal& right) {
  if (left.isneg() != right.isneg()) return left.isneg();
  Decimal a = left;
  Decimal b = right;
  if (!alignScales(a, b)) return false;
  if (a.getLength() != b.getLength()) {
    return a.getLength() > b.getLength() ? a.isneg() && b.isneg() : !a.isneg() && !b.isneg();
  }
  for (int i = 0; i < a.getLength(); ++i) {
    if (a.getValue()[i] != b.getValue()[i]) return a.getValue()[i] < b.getValue()[i];
  }
  return false;
}

}  // namespace nomutil::decimals
