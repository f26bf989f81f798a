// Decimal against a second, simple implementation: 768-bit two's-complement integers of 16-bit
// limbs with schoolbook addition and multiplication, and places kept beside them. Quotients are
// checked by the law that defines them, a = q * b + r with |r| < |b|, so that the model never
// divides by more than ten. The fast paths are checked against the general ones limb for limb.
#include "decimals/access.h"
#include "decimalshow.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace nomutil::decimals;
using nomtest::dec;
using nomtest::Recorder;
using nomtest::show;

constexpr std::uint64_t kSeed = 20240229;
constexpr std::size_t kModelLimbs = 48;

// Two's complement, least significant limb first.
using Integer = std::array<std::uint16_t, kModelLimbs>;

bool negative(const Integer& value) {
  return value.back() >= 0x8000;
}

Integer sum(const Integer& left, const Integer& right) {
  Integer result;
  std::uint32_t carry = 0;
  for (std::size_t i = 0; i < kModelLimbs; ++i) {
    carry += std::uint32_t{left[i]} + right[i];
    result[i] = static_cast<std::uint16_t>(carry);
    carry >>= 16;
  }
  return result;
}

Integer negation(Integer value) {
  for (std::uint16_t& limb : value) limb = static_cast<std::uint16_t>(~limb);
  return sum(value, Integer{1});
}

Integer magnitudeOf(const Integer& value) {
  return negative(value) ? negation(value) : value;
}

Integer product(const Integer& left, const Integer& right) {
  Integer result{};
  for (std::size_t i = 0; i < kModelLimbs; ++i) {
    std::uint32_t carry = 0;
    for (std::size_t j = 0; left[i] != 0 && i + j < kModelLimbs; ++j) {
      carry += std::uint32_t{left[i]} * right[j] + result[i + j];
      result[i + j] = static_cast<std::uint16_t>(carry);
      carry >>= 16;
    }
  }
  return result;
}

int compareIntegers(const Integer& left, const Integer& right) {
  const Integer difference = sum(left, negation(right));
  return negative(difference) ? -1 : difference == Integer{} ? 0 : 1;
}

// value / 10^places, cut toward zero.
Integer cut(const Integer& value, unsigned places) {
  Integer result = magnitudeOf(value);
  for (; places > 0; --places) {
    std::uint32_t remainder = 0;
    for (std::size_t i = kModelLimbs; i-- > 0;) {
      remainder = remainder << 16 | result[i];
      result[i] = static_cast<std::uint16_t>(remainder / 10);
      remainder %= 10;
    }
  }
  return negative(value) ? negation(result) : result;
}

const Integer& tenTo(unsigned power) {
  static const auto powers = [] {
    std::vector<Integer> table{{1}};
    while (table.size() <= 101) table.push_back(product(Integer{10}, table.back()));
    return table;
  }();
  return powers.at(power);
}

// The fewest limbs that hold the value.
std::size_t limbCount(const Integer& value) {
  std::size_t count = kModelLimbs;
  const std::uint16_t sign = negative(value) ? 0xFFFF : 0;
  while (count > 1 && value[count - 1] == sign && (value[count - 2] >= 0x8000) == (sign != 0)) {
    --count;
  }
  return count;
}

struct Model {
  Integer digits{};
  unsigned places = 0;

  bool operator==(const Model&) const = default;
};

const Model kMax = {tenTo(100), 0};
const Model kMin = {negation(tenTo(96)), 0};

Model modelOf(const Decimal& value) {
  Model model;
  model.places = value.getScaleFactor();
  if (value.isneg()) model.digits.fill(0xFFFF);
  for (std::size_t i = 0; i < value.getLength(); ++i) {
    model.digits[i] = value.getValue()[value.getLength() - 1 - i];
  }
  return model;
}

// Whether a Decimal is what the model says: of more than 21 limbs the low ones are kept.
bool operator==(const Decimal& value, const Model& model) {
  const std::size_t count = std::min<std::size_t>(limbCount(model.digits), 21);
  return value.isvalid() && value.getScaleFactor() == model.places && value.getLength() == count &&
         std::equal(value.getValue(), value.getValue() + count,
                    model.digits.rend() - static_cast<std::ptrdiff_t>(count));
}

std::string show(const Model& model) {
  return nomtest::showLimbs({model.digits.rbegin(), model.digits.rend()}, model.places);
}

void expectIs(const Decimal& value, const Model& model, const char* what) {
  EXPECT_TRUE(value == model) << what << ": " << show(value) << " and not " << show(model);
}

// Raises a value by ten to the power n as the limb counts allow: a negative one by a product that
// saturates, any other until it needs a 22nd limb, which fails.
bool raise(Model& model, unsigned n) {
  if (n == 0) return true;
  if (negative(model.digits)) {
    const bool fits = limbCount(negation(model.digits)) + limbCount(tenTo(n)) + 1 <= 21;
    model.digits = fits ? product(model.digits, tenTo(n)) : kMin.digits;
  }
  for (unsigned i = 0; i < n && !negative(model.digits); ++i) {
    model.digits = product(Integer{10}, model.digits);
    if (limbCount(model.digits) > 21) {
      model = model.digits[20] >= 0x8000 ? kMin : kMax;
      return false;
    }
  }
  model.places += n;
  return true;
}

bool align(Model& a, Model& b) {
  return a.places < b.places ? raise(a, b.places - a.places) : raise(b, a.places - b.places);
}

// The patterns that carries, borrows and trial quotients stumble over, and the ends of words.
class Source {
 public:
  std::uint32_t below(std::uint32_t bound) { return static_cast<std::uint32_t>(_next() % bound); }

  // Half of the values have at most 8 limbs, where the fast paths end.
  std::vector<std::uint16_t> limbs() {
    std::vector<std::uint16_t> result(1 + below(below(2) == 0 ? 8 : 21));
    if (below(4) == 0) {
      // The sign bit of a limb, or the bit in its middle, less 2 to plus 2, or its negation.
      Integer value{};
      value[result.size() - 1] = below(2) == 0 ? 0x8000 : 0x80;
      value = sum(value, Integer{static_cast<std::uint16_t>(below(5))});
      value = sum(value, negation(Integer{2}));
      if (below(2) == 0) value = negation(value);
      result.resize(std::min<std::size_t>(limbCount(value), 21));
      std::copy_n(value.begin(), result.size(), result.rbegin());
      return result;
    }
    const std::uint16_t patterns[] = {0, 1, 0x7FFF, 0x8000, 0xFFFF};
    for (std::uint16_t& limb : result) {
      const std::uint32_t choice = below(8);
      limb = choice < 5 ? patterns[choice] : static_cast<std::uint16_t>(_next());
    }
    return result;
  }
  // Most values have few places.
  std::uint8_t places() {
    const std::uint32_t bounds[] = {1, 3, 3, 3, 10, 10, 30, 101};
    return static_cast<std::uint8_t>(below(bounds[below(8)]));
  }
  Decimal normal() {
    const std::vector<std::uint16_t> value = limbs();
    return Decimal(value.data(), static_cast<int>(value.size()), places());
  }

  // A dividend whose real division passes just below a multiple of 2^64 times the divisor, where
  // a division by 64-bit words has the top words of rest and divisor equal; or whose quotient has
  // up to 128 bits, one more than a signed value takes. It may lack some of the divisor's places.
  Decimal beside(const Decimal& divisor) {
    Integer factor{};
    factor[below(2) == 0 ? 4 : 7] = static_cast<std::uint16_t>(1 + below(0xFFFF));
    const unsigned missing = below(std::min<std::uint32_t>(divisor.getScaleFactor(), 3) + 1);
    const Integer multiple = product(modelOf(divisor).digits, factor);
    const Integer digits = cut(sum(multiple, negation(Integer{1})), 23 + missing);
    const std::size_t count = std::min<std::size_t>(limbCount(digits), 21);
    std::vector<std::uint16_t> value(count);
    std::copy_n(digits.begin(), count, value.rbegin());
    return Decimal(value.data(), static_cast<int>(count),
                   static_cast<std::uint8_t>(divisor.getScaleFactor() - missing));
  }

  // Redundant limbs too: from a stored record, or from an image with remains behind the limbs.
  Decimal anyForm() {
    const std::vector<std::uint16_t> value = limbs();
    std::uint8_t bytes[46] = {static_cast<std::uint8_t>(value.size()), places()};
    for (std::size_t i = 0; i < 21; ++i) {
      const std::uint16_t limb = i < value.size() ? value[i] : static_cast<std::uint16_t>(_next());
      bytes[2 * i + 2] = static_cast<std::uint8_t>(limb);
      bytes[2 * i + 3] = static_cast<std::uint8_t>(limb >> 8);
    }
    if (value.size() > 5 || bytes[1] > 23) return Decimal(bytes, sizeof bytes);
    DskDecimal record{};
    std::memcpy(&record, bytes, 12);
    record.precision = static_cast<std::uint8_t>(2 * value.size());
    return Decimal(record);
  }

 private:
  std::mt19937_64 _next{kSeed};
};

// Calls check(source, step) until one fails.
template <class Check>
void repeat(int steps, Check check) {
  Recorder recorder;  // divisors of zero and sums of 22 limbs are reported
  Source source;
  for (int step = 0; step < steps && !testing::Test::HasFailure(); ++step) {
    const auto [left, right] = check(source, step);
    recorder.takeAssertions();
    if (!testing::Test::HasFailure()) continue;
    ADD_FAILURE() << show(left) << " and " << show(right) << ", step " << step << " of seed "
                  << kSeed;
  }
}

std::string order(const Decimal& a, const Decimal& b) {
  return std::string(a < b ? "<" : "") + (a > b ? ">" : "") + (a == b ? "=" : "");
}

// Unlike signs decide before the places are aligned, which may fail.
std::string order(Model a, Model b) {
  if (negative(a.digits) != negative(b.digits)) return negative(a.digits) ? "<" : ">";
  if (!align(a, b)) return "";
  const int result = compareIntegers(a.digits, b.digits);
  return result < 0 ? "<" : result > 0 ? ">" : "=";
}

// a = q * b + r, |r| < |b|, and r has the sign of a.
void expectDivides(const Integer& a, const Integer& b, const Integer& q, const Integer& r) {
  EXPECT_EQ(sum(product(q, b), r), a) << "quotient times divisor plus remainder";
  EXPECT_LT(compareIntegers(magnitudeOf(r), magnitudeOf(b)), 0) << "size of the remainder";
  EXPECT_TRUE(r == Integer{} || negative(r) == negative(a)) << "sign of the remainder";
}

void checkRealDivide(const Decimal& dividend, const Decimal& divisor) {
  const Decimal quotient = dividend.realDivide(divisor);
  const unsigned places = dividend.getLength() <= 14 ? 23 : 0;
  Model a = modelOf(dividend);
  Model b = modelOf(divisor);
  raise(a, places);
  a.places = dividend.getScaleFactor();
  if (!align(a, b)) {
    expectIs(quotient, kMax, "real quotient");
    return;
  }
  Model q = modelOf(quotient);
  ASSERT_LE(q.places, places);
  const bool zero = q.digits == Integer{};
  EXPECT_TRUE(q.places == 0 || zero || product(cut(q.digits, 1), Integer{10}) != q.digits)
      << "a zero at the end of " << show(quotient);
  EXPECT_TRUE(!zero || q.places == places);
  q.digits = product(q.digits, tenTo(places - q.places));
  expectDivides(a.digits, b.digits, q.digits, sum(a.digits, negation(product(q.digits, b.digits))));
}

void checkOperators(const Decimal& left, const Decimal& right) {
  const Model one = modelOf(left);
  const Model other = modelOf(right);
  const bool unlike = negative(one.digits) != negative(other.digits);
  const bool fits = limbCount(magnitudeOf(one.digits)) + limbCount(magnitudeOf(other.digits)) < 21;
  const Model times = {product(one.digits, other.digits), one.places + other.places};
  expectIs(left * right, fits ? times : unlike ? kMin : kMax, "product");

  Model a = one;
  Model b = other;
  const bool aligned = align(a, b);
  const Model plus = {sum(a.digits, b.digits), a.places};
  const Model minus = {sum(a.digits, negation(b.digits)), a.places};
  expectIs(left + right, aligned ? plus : kMax, "sum");
  expectIs(left - right, aligned ? minus : kMax, "difference");
  EXPECT_EQ(order(left, right), order(one, other)) << "order";

  // The size of -2^335 has a 22nd limb, which is lost.
  if (other.digits == Integer{} || limbCount(magnitudeOf(a.digits)) > 21) return;
  const Model quotient = modelOf(left / right);
  const Model remainder = modelOf(left % right);
  if (aligned) {
    EXPECT_EQ(quotient.places, 0u);
    EXPECT_EQ(remainder.places, a.places);
    expectDivides(a.digits, b.digits, quotient.digits, remainder.digits);
  } else {
    EXPECT_EQ(quotient, kMax) << "quotient";
    EXPECT_EQ(remainder, kMax) << "remainder";
  }
  checkRealDivide(left, right);
}

TEST(DecimalOracle, OperatorsAgreeWithSchoolbookIntegers) {
  repeat(10000, [](Source& source, int step) {
    const Decimal right = source.normal();
    const Decimal left = step % 8 == 0 ? source.beside(right) : source.normal();
    checkOperators(left, right);
    return std::pair(left, right);
  });
}

TEST(DecimalOracle, RescalingAndTextAgreeWithSchoolbookIntegers) {
  repeat(8000, [](Source& source, int) {
    const Decimal before = source.normal();
    const Model model = modelOf(before);
    const unsigned places = source.places();
    Model raised = model;
    Decimal value = before;
    EXPECT_EQ(value.scale(static_cast<int>(places)), raise(raised, places));
    expectIs(value, raised, "raised");

    // Half a unit of the last place that stays, away from zero, and cut.
    const bool enough = places <= model.places;
    Model rounded = {model.digits, enough ? model.places - places : 0};
    if (enough && places != 0) {
      const Integer half = product(Integer{5}, tenTo(places - 1));
      const bool below = negative(model.digits);
      rounded.digits = cut(sum(model.digits, below ? negation(half) : half), places);
    }
    value = before;
    EXPECT_EQ(value.scale(-static_cast<int>(places)), enough);
    expectIs(value, rounded, "rounded");

    value = before;
    value.truncate(static_cast<std::uint8_t>(places));
    const Model truncated = {cut(model.digits, places), model.places - places};
    expectIs(value, enough ? truncated : model, "cut");
    expectIs(-before, {negation(model.digits), model.places}, "negated");

    // The reader takes 100 digits and the writer 103 characters.
    const std::string text = show(before);
    if (text.size() <= 100) {
      char buffer[104];
      EXPECT_EQ(before.decimalToString(buffer, sizeof buffer, before.getScaleFactor()), text);
      expectIs(dec(text), model, "read back");
    }
    return std::pair(before, Decimal(places));
  });
}

// All bytes are compared: the limbs behind the length are 0 in both.
void expectAlike(const Decimal& fast, const Decimal& general, const char* what) {
  EXPECT_EQ(std::memcmp(&fast, &general, sizeof fast), 0)
      << what << ": " << show(fast) << " and not " << show(general);
}

void expectPathsAgree(const Decimal& left, const Decimal& right) {
  expectAlike(left + right, generalAdd(left, right), "sum");
  expectAlike(left - right, generalSubtract(left, right), "difference");
  expectAlike(left * right, generalMultiply(left, right), "product");
  expectAlike(left.realDivide(right), generalRealDivide(left, right), "real quotient");
  const std::partial_ordering order = generalCompare(left, right);
  EXPECT_TRUE(compareDecimals(left, right) == order) << "order";
  EXPECT_TRUE((left == right) == std::is_eq(order) && (left < right) == std::is_lt(order))
      << "comparison";
  Decimal quotient = Decimal::Max;
  Decimal remainder = Decimal::Max;
  generalDivide(left, right, quotient, remainder);
  expectAlike(left / right, quotient, "quotient");
  expectAlike(left % right, remainder, "remainder");
  const int places = right.getScaleFactor() - left.getScaleFactor();
  Decimal fast = left;
  Decimal general = left;
  EXPECT_EQ(fast.scale(places), generalScale(general, places)) << "scale";
  expectAlike(fast, general, "scaled");
}

TEST(DecimalFastPath, EqualsTheGeneralPathForOperandsOfAnyForm) {
  repeat(40000, [](Source& source, int) {
    const Decimal left = source.anyForm();
    const Decimal right = source.anyForm();
    expectPathsAgree(left, right);
    return std::pair(left, right);
  });
}

}  // namespace
