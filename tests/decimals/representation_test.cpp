// The forms of a decimal: limbs in normal form, the two zeros, the constants, the powers of ten and
// the 46-byte image; and operations where the random operands of the oracle do not go: division by
// zero, places beyond the table of powers, sizes of 22 limbs.
#include "decimalshow.h"

#include <algorithm>
#include <climits>
#include <type_traits>

namespace {

using namespace nomtest;

// Constants are ready before any object of another library or file is built.
const Decimal globalSum = Decimal::KoraMax + Decimal::power10(96) + Decimal::Min;

TEST(DecimalConstants, HoldTheirValuesBeforeMain) {
  EXPECT_EQ(showAll({globalSum, Decimal::Zero, Decimal::One, Decimal::MinusOne, Decimal::Half,
                     Decimal::Max, Decimal::Min, Decimal::KoraMax, Decimal::KoraMin}),
            expand("9{23} 0 1 -1 0.5 10{100} -10{96} 9{23} -9{23}"));
  std::uint8_t power = 0;
  for (; power <= 100; ++power) EXPECT_EQ(show(Decimal::power10(power)), "1" + zeros(power));
  Recorder recorder;
  EXPECT_EQ(showAll({Decimal::power10(101), Decimal::power10(255)}), expand("10{100} 10{100}"));
  EXPECT_EQ(recorder.takeAssertions().size(), 2u);
}

static_assert(!std::is_assignable_v<Decimal&, bool>);
static_assert(!std::is_assignable_v<Decimal&, std::nullptr_t>);

TEST(DecimalAssignment, ReplacesEverythingByMinimalLimbs) {
  const HighPrecisionNumber number{2, -1, {0, 0, 0, 125}};
  Decimal value(static_cast<const std::uint8_t*>(nullptr), 0);
  EXPECT_EQ(showAll({value = std::int32_t{-70000}, value = stored("-12.50"), value = UINT32_MAX,
                     value = -0.25, value = std::int64_t{-1}, value = INT64_MIN, value = &number,
                     value = std::uint64_t{UINT64_MAX}, '\0', 32768L, -32768LL, -32769}),
            "-70000 -12.50 4294967295 -0.25 -1 -9223372036854775808 -1.25 18446744073709551615 0 "
            "32768 -32768 -32769");
}

TEST(DecimalLimbs, AreNormalisedAndNoMoreThan21) {
  Recorder recorder;
  const auto make = [](std::vector<std::uint16_t> limbs, std::size_t count, std::uint8_t scale) {
    limbs.insert(limbs.begin(), count - limbs.size(), limbs[0]);
    limbs.shrink_to_fit();
    return Decimal(limbs.data(), static_cast<int>(count), scale);
  };
  EXPECT_EQ(showAll({make({0, 0}, 3, 2), make({0, 5}, 24, 0), make({0, 0x8000}, 3, 0),
                     make({0xFFFF, 0xFFFF}, 21, 1), make({0xFFFF, 0x8000}, 2, 0),
                     make({0xFFFF, 0x7FFF}, 3, 0)}),
            "0.00 5 32768 -0.1 -32768 -32769");
  EXPECT_EQ(recorder.takeExpressions(), "");
  EXPECT_EQ(show(make({0x4000, 5}, 22, 0)), show(make({0x4000, 5}, 21, 0)));
  EXPECT_EQ(show(Decimal(Decimal::One.getValue(), -1, 0)), "0");
  const auto reported = recorder.takeAssertions();
  ASSERT_EQ(reported.size(), 2u);
  EXPECT_EQ(reported[1].expression, "_length <= MaxDecimalValueSize");
  EXPECT_EQ(reported[1].kind, "Assertion failed");
}

TEST(DecimalZero, TheEmptyOneIsUnequalAndFirst) {
  const Decimal empty;
  EXPECT_TRUE(empty != Decimal::Zero && empty < Decimal(0) && dec("0.0") > empty);
  EXPECT_FALSE(empty == Decimal::Zero || Decimal(0) < empty);
  EXPECT_TRUE(empty == Decimal() && Decimal(-1) < empty && empty < Decimal(1));
  EXPECT_EQ(showAll({empty, "", DskDecimal{}, Decimal(0) * empty, 0.0}), "0(empty) 0 0 0 0");
}

TEST(DecimalImage, ReadsEverySizeAndNothingBeyond) {
  // Size, first bytes (then 00), byte 44 (if there is one). A single byte is an integer; limbs that
  // are not given are 0; one may be cut in two. Byte 44 matters to the empty zero alone, which
  // has no limbs; any value but 0 is true. Limits are 21 limbs and 100 places, 255 apart.
  const auto read = [](const Row& row) {
    const std::size_t size = std::stoul(row[0]);
    std::vector<std::uint8_t> image = bytesOf(row[1]);
    image.resize(size);
    image.shrink_to_fit();
    if (size > 44) image[44] = byteOf(row[2], 16);
    const Decimal value(image.data(), static_cast<std::uint32_t>(size));
    const bool isZero = Decimal::MinusOne < value && value < Decimal::One;
    return value.isvalid() ? show(value) : isZero ? "invalid" : "not zero";
  };
  expectRows(4, read, R"(
      0 - 00 invalid   47 010005 01 invalid   1 00 00 0   1 FF 00 255   4 01017D00 00 12.5
      3 020001 00 65536   2 0000 00 invalid   44 0000 00 invalid   45 0000 01 0(empty)
      46 0000 00 invalid   46 010005 00 5   46 0000 FF 0(empty)   46 160001 01 invalid
      46 00000001 01 invalid   46 016501 01 invalid   46 01FE01 01 invalid   46 016401 01 0.0{99}1
      46 01FF01 01 0.0{254}1   46 020000000500 01 5(redundant)   46 1500F{84} 01 -1(redundant))");
}

TEST(DecimalImage, IsTheObjectItself) {
  const std::vector<std::uint8_t> image = bytesOf("0202FEFFC01D" + zeros(76) + "0100");
  const Decimal value = dec("-1234.56");
  EXPECT_EQ(std::memcmp(&value, image.data(), sizeof value), 0);
}

constexpr const char* kNoPower = "power < NUM_ELEMS(values)";

TEST(DecimalDivide, ByZeroIsReportedAndGivesTheAlignedDividend) {
  const auto divide = [](const Row& row) {
    const Decimal dividend = dec(row[0]), divisor = dec(row[1]);
    Recorder recorder;
    std::string all = show(dividend / divisor) + "," + show(dividend % divisor) + "," +
                      show(dividend.realDivide(divisor));
    for (const auto& [file, module, expression, kind] : recorder.takeAssertions()) {
      EXPECT_EQ(file + " " + module + ": " + expression + ": " + kind,
                "objman/common/source/decimals nomutil: DivisionByZero: Precondition contract "
                "violated");
      all += "!";
    }
    return all;
  };
  expectRows(3, divide, R"(
      -7 0 -7,-7,-7!!!   7 0.00 7.00,7.00,7!!!   7.5 empty 7.5,7.5,7.5!!!   0 0 0,0,0.0{23}!!!)");
}

TEST(DecimalScale, MovesThePointAndRoundsAwayFromZero) {
  // One that fails ('!') leaves no places: when there are fewer than to be removed, the digits
  // stay; a value that outgrows 21 limbs is Max, or Min when the sign bit was reached. A zero never
  // outgrows, its places count modulo 256. A negative value goes up through the product with 10^n,
  // which saturates and succeeds.
  const auto scaled = [](const Row& row) {
    Decimal value = dec(row[0]);
    const bool result = value.scale(std::stoi(row[1]));
    return show(value) + (result ? "" : "!");
  };
  expectRows(3, scaled, R"(
      -0.15 -1 -0.2   12.34 0 12.34   empty 2 0.00(empty)   1.5 -300 15!   1.5 -2147483648 15!
      1 300 -10{96}!   1 2147483647 -10{96}!   0.0 300 0.0{45}   0 2147483647 0.0{255}
      60{99} 2 10{100}!   -1 91 -1.0{91}   -1 92 -10{4}.0{92}   -20{95} 1 -10{95}.0)");
}

// 21 limbs, the first one as given.
Decimal longest(std::uint16_t first, std::uint16_t others) {
  std::uint16_t limbs[21] = {first};
  std::fill_n(limbs + 1, 20, others);
  return Decimal(limbs, 21, 0);
}
const Decimal kLargest = longest(0x7FFF, 0xFFFF);  // 2^335 - 1
const Decimal kSmallest = longest(0x8000, 0);      // -(2^335), whose negation needs a 22nd limb

TEST(DecimalScale, BeyondThePowerTableReportsAndStaysExact) {
  const Decimal half =
      Decimal::Max + Decimal::Max + Decimal::Max + Decimal::Max + Decimal::Max;  // of 10^101
  const auto scaled = [&](Decimal value, std::uint8_t before, int places) {
    Recorder recorder;
    value.setScaleFactor(before);
    EXPECT_TRUE(value.scale(places));
    return show(value) + (recorder.takeExpressions() == kNoPower ? "!" : "");
  };
  EXPECT_EQ(scaled(kLargest, 100, -100) + scaled(kSmallest, 100, -100), "7-7");
  EXPECT_EQ(scaled(-half, 101, -101) + scaled(half - Decimal(1), 101, -101), "-1!0!");
  EXPECT_EQ(scaled(7, 255, -200), expand("0.0{55}!"));
  EXPECT_EQ(scaled(-1, 0, 101), expand("-0.000010{96}!"));  // Min with 101 places
}

// What takes an absolute value or a sum on its way may report; it stays inside its arrays.
TEST(DecimalLimbs, ATwentySecondIsReportedAndDropped) {
  Recorder recorder;
  EXPECT_EQ((-kSmallest).getLength() | (kSmallest + kSmallest).getLength() |
                (kLargest - kSmallest).getLength(),
            21);
  EXPECT_EQ(recorder.takeAssertions().size(), 3u);
  char text[120];
  EXPECT_EQ(show(kSmallest * Decimal(2)), show(Decimal::Min));
  EXPECT_EQ(kSmallest.getMagnitude(), 100);
  EXPECT_EQ(kSmallest.decimalToString(text, sizeof text, 0), std::string(119, '*'));

  // Redundant limbs count where a product is not tried.
  const Decimal five(bytesOf("1400" + zeros(76) + "0500").data(), 42);
  EXPECT_EQ(showAll({five * Decimal(1), Decimal(-1) * five}), expand("10{100} -10{96}"));
}

TEST(DecimalMagnitude, CountsIntegerDigits) {
  const auto count = [](const Row& row) { return std::to_string(dec(row[0]).getMagnitude()); };
  expectRows(2, count, R"(
      0 0   -0.99 0   1 1   -9.99 1   10 2   -999.999 3   1000 4   90{22} 23   9{99} 99   10{99} 100
      10{100} 100   0.1{99} 0   -10{96} 97   9.9{99} 1   99.9{98} 2)");
}

}  // namespace
