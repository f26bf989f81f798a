// The operators of decimals: worked examples at the limb boundaries, saturation, division by zero,
// and the order of values.
#include "decimalshow.h"

namespace {

using namespace nomtest;

// ':' is realDivide.
std::string apply(const Row& row) {
  const Decimal left = dec(row[0]);
  const Decimal right = dec(row[2]);
  if (row[1] == "+") return show(left + right);
  if (row[1] == "-") return show(left - right);
  if (row[1] == "*") return show(left * right);
  if (row[1] == "/") return show(left / right);
  return row[1] == "%" ? show(left % right) : show(left.realDivide(right));
}

// The divisions of long operands are those where the estimate of a quotient limb is too large and
// the divisor is added back. A zero quotient of a real division keeps its 23 places. A product
// saturates by the limbs of its operands; operands that cannot be aligned give Max, whatever their
// signs. A negative value is raised as a product: -(10^90) aligns as -(10^96) with 50 places.
TEST(DecimalArithmetic, GivesTheWorkedResults) {
  expectRows(5, apply, R"(
      32767 + 1 = 32768   0 - -32768 = 32768   1.5 - 1.50 = 0.00   -1.5 * -0.2 = 0.30
      7 / -2 = -3   7 / 0.5 = 14   7 % -2 = 1   -7.5 % -2 = -1.5   7.50 % 2 = 1.50
      140737488355331 / 35184372088833 = 3   140741783191552 % 2147549183 = 2147483647
      140737488355331 % 35184372088833 = 35184372088832   1 : 3 = 0.3{23}   1 : 8 = 0.125
      9223231299366420480 / 140737488355329 = 65534   2 : -3 = -0.6{23}   0 : 7 = 0.0{23}
      1000.00 : 0.5 = 2000   0.1 : 3 = 0.03{22}   0.01 : 100 = 0.0001   1 : 10{24} = 0.0{23}
      10{100} * 0 = 10{100}   -10{96} * 0 = -10{96}   10{50} * -10{51} = -10{96}
      10{90} + 0.0{49}1 = 10{100}   1 : 0.0{89}1 = 10{100}   0.0{49}1 - 10{90} = 10{100}
      -0.0{49}1 / 10{90} = 10{100}   10{90} % 0.0{49}1 = 10{100}
      -10{90} + 0.0{49}1 = -9{46}.9{50})");
}

TEST(DecimalDivide, ByZeroIsReportedAndGivesTheAlignedDividend) {
  const auto checked = [](const Row& row) {
    Recorder recorder;
    const std::string result = apply(row);
    const auto reported = recorder.takeAssertions();
    EXPECT_EQ(reported.size(), 1u);
    for (const auto& [file, module, expression, kind] : reported) {
      EXPECT_EQ(file + " " + module, "objman/common/source/decimals nomutil");
      EXPECT_EQ(expression + ": " + kind, "DivisionByZero: Precondition contract violated");
    }
    return result;
  };
  expectRows(5, checked, R"(
      7 / 0 = 7   7 % 0 = 7   -7 / 0 = -7   7 / 0.00 = 7.00   7.5 % 0 = 7.5   7 / empty = 7
      7 % empty = 7   5 : 0 = 5   5 : empty = 5   0 / 0 = 0)");
}

TEST(DecimalCompare, OfAPairThatCannotBeAlignedNeitherComesFirst) {
  const Decimal huge = dec("10{90}"), tiny = dec("0.0{49}1");
  EXPECT_TRUE(huge <= tiny && huge >= tiny && huge != tiny);
  EXPECT_FALSE(huge < tiny || huge > tiny || huge == tiny);
  EXPECT_TRUE(-tiny < huge && -huge <= -tiny && dec("1.5") >= dec("1.50"));
  EXPECT_FALSE(dec("1.5") != dec("1.50") || dec("2") <= dec("1.99") || dec("1.99") >= dec("2"));
}

}  // namespace
