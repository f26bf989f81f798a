// Decimal against a second, simple implementation: 768-bit two's-complement integers of 16-bit
// limbs with schoolbook addition and multiplication, and places kept beside them. Quotients are
// checked by the law that defines them, a = q * b + r with |r| < |b|, so that the model never
// divides by more than ten. Short operands take the fast paths, all others the general ones.
#include "decimalshow.h"

#include <algorithm>
#include <array>
#include <random>

namespace {

using nomtest::dec;
using nomtest::show;

constexpr std::uint64_t kSeed = 20240229;

// Two's complement, least significant limb first; what exceeds the limbs is lost.
struct Integer {
  std::array<std::uint16_t, 48> limb{};

  bool operator==(const Integer&) const = default;
  bool isNegative() const { return limb.back() >= 0x8000; }
};

Integer operator+(const Integer& left, const Integer& right) {
  Integer sum;
  unsigned carry = 0;
  for (std::size_t i = 0; i < sum.limb.size(); ++i, carry >>= 16) {
    carry += unsigned{left.limb[i]} + right.limb[i];
    sum.limb[i] = static_cast<std::uint16_t>(carry);
  }
  return sum;
}

Integer operator-(Integer value) {
  for (std::uint16_t& limb : value.limb) limb = static_cast<std::uint16_t>(~limb);
  return value + Integer{{1}};
}

Integer operator-(const Integer& left, const Integer& right) {
  return left + -right;
}

Integer operator*(const Integer& left, const Integer& right) {
  Integer product;
  for (std::size_t i = 0; i < left.limb.size(); ++i) {
    unsigned carry = 0;
    for (std::size_t j = i; left.limb[i] != 0 && j < left.limb.size(); ++j, carry >>= 16) {
      carry += unsigned{left.limb[i]} * right.limb[j - i] + product.limb[j];
      product.limb[j] = static_cast<std::uint16_t>(carry);
    }
  }
  return product;
}

Integer magnitudeOf(const Integer& value) {
  return value.isNegative() ? -value : value;
}

// value / 10^places, cut toward zero.
Integer cut(const Integer& value, unsigned places) {
  Integer result = magnitudeOf(value);
  for (; places > 0; --places) {
    unsigned rest = 0;
    for (std::size_t i = result.limb.size(); i-- > 0; rest %= 10) {
      rest = rest << 16 | result.limb[i];
      result.limb[i] = static_cast<std::uint16_t>(rest / 10);
    }
  }
  return value.isNegative() ? -result : result;
}

const auto kTenTo = [] {
  std::array<Integer, 102> powers{Integer{{1}}};
  for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = Integer{{10}} * powers[i - 1];
  return powers;
}();

// The fewest limbs that hold the value.
std::size_t limbCount(const Integer& value) {
  const auto& limb = value.limb;
  std::size_t count = limb.size();
  while (count > 1 && limb[count - 1] == (limb[count - 2] >= 0x8000 ? 0xFFFF : 0)) --count;
  return count;
}

// The limbs of a Decimal: the low ones of more than 21.
std::vector<std::uint16_t> limbsOf(const Integer& value) {
  const auto count = static_cast<std::ptrdiff_t>(std::min<std::size_t>(limbCount(value), 21));
  return {value.limb.rend() - count, value.limb.rend()};
}

struct Model {
  Integer digits;
  unsigned places = 0;
  std::size_t length = 0;  // limbs of an operand, redundant ones too
};

const Model kMax = {kTenTo[100]};
const Model kMin = {-kTenTo[96]};

Model modelOf(const Decimal& value) {
  Model model{{}, value.getScaleFactor(), value.getLength()};
  if (value.isneg()) model.digits = -Integer{{1}};
  std::reverse_copy(value.getValue(), value.getValue() + value.getLength(),
                    model.digits.limb.begin());
  return model;
}

Decimal decimalOf(const Integer& digits, unsigned places) {
  const std::vector<std::uint16_t> limbs = limbsOf(digits);
  return Decimal(limbs.data(), static_cast<int>(limbs.size()), static_cast<std::uint8_t>(places));
}

// The limbs behind the length are 0.
void expectIs(const Decimal& value, const Model& model, const char* what) {
  std::vector<std::uint16_t> limbs = limbsOf(model.digits);
  const bool hasForm = value.isvalid() && value.getLength() == limbs.size();
  limbs.resize(21);
  EXPECT_TRUE(hasForm && value.getScaleFactor() == model.places &&
              std::equal(limbs.begin(), limbs.end(), value.getValue()))
      << what << ": " << show(value) << " and not "
      << nomtest::showLimbs(limbsOf(model.digits), model.places);
}

// Raises a value by ten to the power n as the limb counts allow: a negative one by a product that
// saturates, any other until it needs a 22nd limb, which fails.
bool raise(Model& model, unsigned n) {
  if (n == 0) return true;
  if (model.digits.isNegative()) {
    const bool fits = limbCount(-model.digits) + limbCount(kTenTo[n]) + 1 <= 21;
    model.digits = fits ? kTenTo[n] * model.digits : kMin.digits;
  }
  for (unsigned i = 0; i < n && !model.digits.isNegative(); ++i) {
    model.digits = Integer{{10}} * model.digits;
    if (limbCount(model.digits) > 21) {
      model = model.digits.limb[20] >= 0x8000 ? kMin : kMax;
      return false;
    }
  }
  model.places += n;
  model.length = limbCount(model.digits);
  return true;
}

bool align(Model& a, Model& b) {
  return a.places < b.places ? raise(a, b.places - a.places) : raise(b, a.places - b.places);
}

class Source {
 public:
  unsigned below(unsigned bound) { return static_cast<unsigned>(_next() % bound); }

  // Half of the lengths are at most 8 limbs, where the fast paths end.
  std::size_t length() { return 1 + below(below(2) == 0 ? 8 : 21); }

  // The patterns that carries, borrows and trial quotients stumble over, and the ends of words.
  Integer integer() {
    const std::size_t size = length();
    Integer value;
    if (below(4) == 0) {
      // The sign bit of a limb, or the bit in its middle, less 2 to plus 2, or its negation.
      value.limb[size - 1] = below(2) == 0 ? 0x8000 : 0x80;
      value = value + Integer{{static_cast<std::uint16_t>(below(5))}} - Integer{{2}};
      return below(2) == 0 ? value : -value;
    }
    const std::uint16_t patterns[] = {0, 1, 0x7FFF, 0x8000, 0xFFFF};
    for (std::size_t i = 0; i < size; ++i) {
      const unsigned choice = below(8);
      value.limb[i] = choice < 5 ? patterns[choice] : static_cast<std::uint16_t>(_next());
    }
    if (value.limb[size - 1] >= 0x8000) std::fill(&value.limb[size], value.limb.end(), 0xFFFF);
    return value;
  }

  // Most values have few places.
  unsigned places() {
    const unsigned bounds[] = {1, 3, 3, 3, 10, 10, 30, 101};
    return below(bounds[below(8)]);
  }

  Decimal normal() { return decimalOf(integer(), places()); }

  // Redundant limbs too, and remains behind the limbs.
  Decimal anyForm() {
    const Integer value = integer();
    std::uint16_t image[23] = {};
    const std::size_t count = length();
    for (std::size_t i = 1; i <= 21; ++i) {
      image[i] = i <= count ? value.limb[count - i] : static_cast<std::uint16_t>(_next());
    }
    image[0] = static_cast<std::uint16_t>(places() << 8 | count);
    return Decimal(reinterpret_cast<const std::uint8_t*>(image), sizeof image);
  }

  // A dividend whose real division passes just below a multiple of 2^64 times the divisor, where
  // a division by 64-bit words has the top words of rest and divisor equal; or whose quotient has
  // up to 128 bits, one more than a signed value takes. It may lack some of the divisor's places.
  // Or a multiple of the divisor, which leaves no rest.
  Decimal beside(const Decimal& divisor) {
    Integer factor;
    if (below(3) == 0) {
      factor.limb[0] = static_cast<std::uint16_t>(below(0x7FFF));
      return decimalOf(factor * modelOf(divisor).digits, divisor.getScaleFactor());
    }
    factor.limb[below(2) == 0 ? 4 : 7] = static_cast<std::uint16_t>(1 + below(0xFFFF));
    const unsigned missing = below(std::min(divisor.getScaleFactor() + 1u, 4u));
    const Integer digits = cut(factor * modelOf(divisor).digits - Integer{{1}}, 23 + missing);
    return decimalOf(digits, divisor.getScaleFactor() - missing);
  }

 private:
  std::mt19937_64 _next{kSeed};
};

// Makes pairs of values, some of them beside each other, until check(left, right) fails.
void repeat(int steps, Decimal (Source::*make)(), void (*check)(const Decimal&, const Decimal&)) {
  nomtest::Recorder recorder;  // divisors of zero and sums of 22 limbs are reported
  Source source;
  for (int step = 0; step < steps && !testing::Test::HasFailure(); ++step) {
    const Decimal right = (source.*make)();
    const Decimal left = step % 8 == 0 ? source.beside(right) : (source.*make)();
    check(left, right);
    recorder.takeAssertions();
    if (!testing::Test::HasFailure()) continue;
    ADD_FAILURE() << show(left) << " and " << show(right) << ", step " << step << " of " << kSeed;
  }
}

std::string order(const Decimal& a, const Decimal& b) {
  EXPECT_TRUE((a != b) == !(a == b) && (a <= b) == !(b < a) && (a >= b) == !(a < b));
  return std::string(a < b ? "<" : "") + (a > b ? ">" : "") + (a == b ? "=" : "");
}

// Unlike signs decide before the places are aligned, which may fail, and then the limbs do.
std::string order(Model a, Model b) {
  const bool isNegative = a.digits.isNegative();
  if (isNegative != b.digits.isNegative()) return isNegative ? "<" : ">";
  if (!align(a, b)) return "";
  if (a.length != b.length) return isNegative == (a.length > b.length) ? "<" : ">";
  return a.digits == b.digits ? "=" : (a.digits - b.digits).isNegative() ? "<" : ">";
}

// Limbs that count where a product of absolute values may not be tried.
std::size_t factorLength(const Model& model) {
  return model.digits.isNegative() ? limbCount(-model.digits) : model.length;
}

// a = q * b + r, |r| < |b|, and r has the sign of a.
void expectDivides(const Integer& a, const Integer& b, const Integer& q, const Integer& r) {
  EXPECT_TRUE(q * b + r == a) << "quotient times divisor plus remainder";
  EXPECT_TRUE((magnitudeOf(r) - magnitudeOf(b)).isNegative()) << "size of the remainder";
  EXPECT_TRUE(r == Integer{} || r.isNegative() == a.isNegative()) << "sign of the remainder";
}

void checkRealDivide(const Decimal& dividend, const Decimal& divisor) {
  const Decimal quotient = dividend.realDivide(divisor);
  const unsigned places = dividend.getLength() <= 14 ? 23 : 0;
  Model a = modelOf(dividend), b = modelOf(divisor);
  raise(a, places);
  a.places = dividend.getScaleFactor();
  if (!align(a, b)) return expectIs(quotient, kMax, "real quotient");
  Model q = modelOf(quotient);
  const bool hasLastZero = q.places > 0 && cut(q.digits, 1) * Integer{{10}} == q.digits;
  EXPECT_TRUE(q.digits == Integer{} ? q.places == places : !hasLastZero) << show(quotient);
  q.digits = kTenTo.at(places - q.places) * q.digits;
  expectDivides(a.digits, b.digits, q.digits, a.digits - q.digits * b.digits);
}

void checkOperators(const Decimal& left, const Decimal& right) {
  const Model one = modelOf(left), other = modelOf(right);
  const bool unlike = one.digits.isNegative() != other.digits.isNegative();
  const bool fits = factorLength(one) + factorLength(other) < 21;
  const Model times = {one.digits * other.digits, (one.places + other.places) & 255};
  expectIs(left * right, fits ? times : unlike ? kMin : kMax, "product");

  Model a = one, b = other;
  const bool aligned = align(a, b);
  expectIs(left + right, aligned ? Model{a.digits + b.digits, a.places} : kMax, "sum");
  expectIs(left - right, aligned ? Model{a.digits - b.digits, a.places} : kMax, "difference");
  EXPECT_EQ(order(left, right), order(one, other)) << "order";

  // The size of -2^335 has a 22nd limb, which is lost.
  if (other.digits == Integer{} || limbCount(magnitudeOf(a.digits)) > 21) return;
  const Decimal quotient = left / right, remainder = left % right;
  if (aligned) {
    EXPECT_TRUE(quotient.getScaleFactor() == 0 && remainder.getScaleFactor() == a.places);
    expectDivides(a.digits, b.digits, modelOf(quotient).digits, modelOf(remainder).digits);
  } else {
    expectIs(quotient, kMax, "quotient");
    expectIs(remainder, kMax, "remainder");
  }
  checkRealDivide(left, right);
}

TEST(DecimalOracle, OperatorsAgreeWithSchoolbookIntegers) {
  repeat(6000, &Source::normal, checkOperators);
  // A quotient of 128 bits by a divisor of two words, which alignment alone makes possible.
  checkRealDivide(nomtest::dec("31385508676933403820880358951"),
                  nomtest::dec("18446744073709.551617"));
  repeat(6000, &Source::anyForm, checkOperators);
}

// The second value gives the places to move by.
void checkRescaling(const Decimal& before, const Decimal& second) {
  const Model model = modelOf(before);
  const unsigned places = second.getScaleFactor();
  Model raised = model;
  Decimal value = before;
  EXPECT_EQ(value.scale(static_cast<int>(places)), raise(raised, places));
  expectIs(value, raised, "raised");

  // Half a unit of the last place that stays, away from zero, and cut.
  const bool enough = places <= model.places;
  Integer half = places == 0 ? Integer{} : Integer{{5}} * kTenTo[places - 1];
  if (model.digits.isNegative()) half = -half;
  const unsigned left = enough ? model.places - places : 0;
  value = before;
  EXPECT_EQ(value.scale(-static_cast<int>(places)), enough);
  expectIs(value, {enough ? cut(model.digits + half, places) : model.digits, left}, "rounded");
  value = before;
  value.truncate(static_cast<std::uint8_t>(places));
  expectIs(value, enough ? Model{cut(model.digits, places), left} : model, "cut");
  expectIs(-before, {-model.digits, model.places}, "negated");

  // The reader takes 100 digits and the writer 103 characters.
  const std::string text = show(before);
  if (text.size() > 100) return;
  char buffer[104];
  EXPECT_EQ(before.decimalToString(buffer, sizeof buffer, model.places), text);
  expectIs(dec(text), model, "read back");
}

TEST(DecimalOracle, RescalingAndTextAgreeWithSchoolbookIntegers) {
  repeat(6000, &Source::normal, checkRescaling);
}

}  // namespace
