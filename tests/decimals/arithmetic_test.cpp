// The operators of decimals: worked examples at the limb boundaries, saturation, division by zero,
// real division, and the order of values.
#include "decimalshow.h"
#include "recorder.h"
#include "sys/decimals.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>

namespace {

using nomtest::dec;
using nomtest::Recorder;
using nomtest::show;
using nomtest::zeros;

const std::string kMax = "1" + zeros(100);
const std::string kMin = "-1" + zeros(96);
const std::string kTiny = "0." + zeros(49) + "1";  // 50 places
const std::string kHuge = "1" + zeros(90);         // cannot be given 50 places

// Two to the power n, by doubling.
Decimal powerOfTwo(int n) {
  Decimal value(1);
  while (n-- > 0) value = value + value;
  return value;
}

std::string apply(const Decimal& left, char operation, const Decimal& right) {
  switch (operation) {
    case '+':
      return show(left + right);
    case '-':
      return show(left - right);
    case '*':
      return show(left * right);
    case '/':
      return show(left / right);
    case '%':
      return show(left % right);
    default:
      return show(left.realDivide(right));
  }
}

// Equations, ':' being realDivide. The six divisions by a divisor of three limbs, and of two, are
// those where the estimate of a quotient limb is too large and the divisor is added back. A zero
// quotient of a real division keeps its 23 places.
constexpr const char* kWorkedResults = R"(
    0.1 + 0.02 = 0.12   9.99 + 0.01 = 10.00   -0.5 + 0.25 = -0.25   -1 + 1 = 0
    32767 + 1 = 32768   -32768 + -1 = -32769   65535 + 1 = 65536   -65536 + 1 = -65535
    1267650600228229401496703205376 + -1 = 1267650600228229401496703205375
    -1 + 1267650600228229401496703205376 = 1267650600228229401496703205375
    1 + -1267650600228229401496703205376 = -1267650600228229401496703205375
    1.5 - 1.5 = 0.0   1.5 - 1.50 = 0.00   1 - 0.001 = 0.999   0 - 32768 = -32768
    -32768 - 1 = -32769   0 - -32768 = 32768
    1 - 1267650600228229401496703205377 = -1267650600228229401496703205376
    -1267650600228229401496703205376 - 1 = -1267650600228229401496703205377
    2.5 * 0.2 = 0.50   -1.5 * 1.5 = -2.25   -1.5 * -0.2 = 0.30   0 * -0.5 = 0.0
    65535 * 65535 = 4294836225   -32768 * -32768 = 1073741824
    7 / -2 = -3   -7 / 2 = -3   7.5 / 2 = 3   -7.5 / 2 = -3   7 / 0.5 = 14   1 / 3 = 0
    -1 / 65536 = 0   4294967295 / 65535 = 65537   -4294967296 / -32768 = 131072
    1 / 0.0001 = 10000
    7 % -2 = 1   -7 % 2 = -1   7.5 % 2 = 1.5   -7.5 % -2 = -1.5   7.50 % 2 = 1.50
    7 % 0.5 = 0.0   5 % 7.00 = 5.00   -5 % 7 = -5   -4294967295 % 65535 = 0
    4294967295 % 32767 = 3   98303 % -32768 = 32767
    140737488355331 / 35184372088833 = 3
    140737488355331 % 35184372088833 = 35184372088832
    9223231299366420480 / 140737488355329 = 65534
    9223231299366420480 % 140737488355329 = 140737488289794
    140741783191552 / 2147549183 = 65535
    140741783191552 % 2147549183 = 2147483647
    1 : 3 = 0.33333333333333333333333   2 : -3 = -0.66666666666666666666666   1 : 8 = 0.125
    1 : 4 = 0.25   0.1 : 3 = 0.03333333333333333333333   10 : 5 = 2   100 : 1 = 100
    1000.00 : 0.5 = 2000   1.5 : 0.5 = 3   1.5 : 0.25 = 6   -1.5 : -0.25 = 6
    0.01 : 100 = 0.0001   0 : 7 = 0.00000000000000000000000
    1 : 1000000000000000000000000 = 0.00000000000000000000000
)";

TEST(DecimalArithmetic, GivesTheWorkedResults) {
  std::istringstream equations(kWorkedResults);
  std::string left, right, equals, expected;
  char operation = 0;
  int count = 0;
  for (; equations >> left >> operation >> right >> equals >> expected; ++count) {
    EXPECT_EQ(apply(dec(left), operation, dec(right)), expected)
        << left << " " << operation << " " << right;
  }
  EXPECT_EQ(count, 66) << "the table was not read to its end";
}

TEST(DecimalArithmetic, SaturatesWhenScalesCannotAlign) {
  for (const char operation : {'+', '-', '/', '%', ':'}) {
    EXPECT_EQ(apply(dec(kHuge), operation, dec(kTiny)), kMax) << operation;
    EXPECT_EQ(apply(dec(kTiny), operation, dec(kHuge)), kMax) << operation;
    EXPECT_EQ(apply(dec("-" + kTiny), operation, dec(kHuge)), kMax) << operation;
  }
  // A negative value is raised through the product, which saturates without failing:
  // -(10^96) with 50 places.
  EXPECT_EQ(show(dec("-" + kHuge) + dec(kTiny)),
            "-" + std::string(46, '9') + "." + std::string(50, '9'));
  EXPECT_EQ(show(dec("0." + zeros(89) + "1").realDivide(Decimal(3))), "0." + zeros(23));
  EXPECT_EQ(show(Decimal(1).realDivide(dec("0." + zeros(89) + "1"))), kMax);
}

TEST(DecimalMultiply, SaturatesByLimbCountNotByProduct) {
  const Decimal ten = powerOfTwo(150);                // 10 limbs
  const Decimal edge = powerOfTwo(159) - Decimal(1);  // the largest of 10 limbs
  const Decimal eleven = powerOfTwo(160);
  ASSERT_EQ(ten.getLength(), 10);
  ASSERT_EQ(edge.getLength(), 10);
  ASSERT_EQ(eleven.getLength(), 11);
  EXPECT_EQ(show(ten * ten),
            "2037035976334486086268445688409378161051468393665936250636140449354381299763336706183"
            "397376");
  EXPECT_EQ(show(-ten * ten), "-" + show(ten * ten));
  EXPECT_EQ(show(edge * -edge),
            "-53399675898022752059875542654238802865067613058770169084942949903735124661244385448"
            "6084589191169");
  EXPECT_EQ(show(eleven * eleven), kMax);
  EXPECT_EQ(show(eleven * -eleven), kMin);
  EXPECT_EQ(show(-eleven * -eleven), kMax);
  EXPECT_EQ(show(ten * eleven), kMax);
  // The absolute value of -(2^159) has a limb more than it has itself.
  const Decimal low = -edge - Decimal(1);
  ASSERT_EQ(low.getLength(), 10);
  EXPECT_EQ(show(low * ten), kMin);
  EXPECT_EQ(show(low * -ten), kMax);
  EXPECT_EQ(show(Decimal::Max * Decimal(0)), kMax);
  EXPECT_EQ(show(Decimal::Min * Decimal(0)), kMin);
}

TEST(DecimalDivide, ByZeroIsReportedAndGivesTheDividend) {
  struct {
    const char* left;
    char operation;
    Decimal zero;
    const char* shown;
  } const rows[] = {
      {"7", '/', Decimal(0), "7"},
      {"7", '%', Decimal(0), "7"},
      {"-7", '/', Decimal(0), "-7"},
      {"7", '/', dec("0.00"), "7.00"},
      {"7.5", '%', dec("0"), "7.5"},
      {"7", '/', Decimal(), "7"},
      {"7", '%', Decimal(), "7"},
      {"5", ':', Decimal(0), "5"},
      {"5", ':', Decimal(), "5"},
      {"0", '/', Decimal(0), "0"},
      {"18446744073709551616", '/', Decimal(0), "18446744073709551616"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.left) + " " + row.operation);
    Recorder recorder;
    EXPECT_EQ(apply(dec(row.left), row.operation, row.zero), row.shown);
    const auto reported = recorder.takeAssertions();
    ASSERT_EQ(reported.size(), 1u);
    EXPECT_EQ(reported[0].expression, "DivisionByZero");
    EXPECT_EQ(reported[0].file, "objman/common/source/decimals");
    EXPECT_EQ(reported[0].module, "nomutil");
  }
}

TEST(DecimalRealDivide, LongDividendsGetNoPlaces) {
  const Decimal fourteen = powerOfTwo(215);
  const Decimal edge = powerOfTwo(223) - Decimal(1);  // the largest of 14 limbs
  const Decimal fifteen = powerOfTwo(223);
  ASSERT_EQ(fourteen.getLength(), 14);
  ASSERT_EQ(edge.getLength(), 14);
  ASSERT_EQ(fifteen.getLength(), 15);
  EXPECT_EQ(show(fourteen.realDivide(Decimal(3))),
            "17552048611426197782986337947278405386482515900091518542385162922."
            "66666666666666666666666");
  EXPECT_EQ(show(edge.realDivide(Decimal(7))),
            "1925710476225045699619072506215687905259796030181469462935972160658."
            "14285714285714285714285");
  EXPECT_EQ(show(fifteen.realDivide(Decimal(3))),
            "4493324444525106632444502514503271778939524070423428746850601708202");
  EXPECT_EQ(show(fifteen.realDivide(Decimal(-3))),
            "-4493324444525106632444502514503271778939524070423428746850601708202");
  EXPECT_EQ(show(dec("1" + zeros(70)).realDivide(Decimal(1))), "1" + zeros(70));
  EXPECT_EQ(show(Decimal::Max.realDivide(Decimal(3))), std::string(100, '3'));
  // As -(2^223) a dividend still has 14 limbs.
  EXPECT_EQ(show((-fifteen).realDivide(Decimal(3))),
            "-4493324444525106632444502514503271778939524070423428746850601708202."
            "66666666666666666666666");
}

TEST(DecimalCompare, SixOperatorsAgreeOnTheOrder) {
  // '?' stands for a pair that cannot be aligned.
  std::istringstream rows(
      "1.0 = 1   1.5 = 1.50   0 = -0.0   0.00 = 0   -1 < 0   -0.001 < 0   32767 < 32768 "
      "65535 < 65536   -32769 < -32768   -65536 < -1   -32768 < -32767   0.09 < 0.1 "
      "-0.1 < -0.09   65536 < 65537   2147450880 < 2147483648   -2 < -1.99   9.99 < 10 "
      "18446744073709551615 < 18446744073709551616 " +
      kMin + " < " + kMax + " " + kHuge + " ? " + kTiny + " " + kTiny + " ? " + kHuge + " -" +
      kTiny + " < " + kHuge + " -" + kHuge + " < " + kTiny + " -" + kHuge + " < -" + kTiny);
  const auto operators = [](const Decimal& left, const Decimal& right) {
    std::string all;
    if (left < right) all += "<";
    if (left <= right) all += "<=";
    if (left == right) all += "==";
    if (left != right) all += "!=";
    if (left >= right) all += ">=";
    if (left > right) all += ">";
    return all;
  };
  std::string leftText, rightText;
  char order = 0;
  int count = 0;
  for (; rows >> leftText >> order >> rightText; ++count) {
    SCOPED_TRACE(leftText + " " + order + " " + rightText);
    const Decimal left = dec(leftText);
    const Decimal right = dec(rightText);
    const bool equal = order == '=';
    const bool less = order == '<';
    EXPECT_EQ(operators(left, right), less ? "<<=!=" : equal ? "<===>=" : "<=!=>=");
    EXPECT_EQ(operators(right, left), less ? "!=>=>" : equal ? "<===>=" : "<=!=>=");
  }
  EXPECT_EQ(count, 24) << "the table was not read to its end";
}

}  // namespace
