// The forms of a decimal: limbs in normal form, the two zeros, the constants, the powers of ten,
// the 46-byte image, and what rescaling leaves of them.
#include "decimalshow.h"

#include <algorithm>
#include <climits>
#include <type_traits>

namespace {

using namespace nomtest;

// Constants are ready before any object of another library or file is built.
const Decimal globalSum = Decimal::KoraMax + Decimal::power10(96) + Decimal::Min;

constexpr const char* kNoPower = "power < NUM_ELEMS(values)";

// 21 limbs, the first one as given. An array of just this size is limbs like any other.
Decimal longest(std::uint16_t first, std::uint16_t others) {
  std::uint16_t limbs[21] = {first};
  std::fill_n(limbs + 1, 20, others);
  return Decimal(limbs, 21, 0);
}
const Decimal kLargest = longest(0x7FFF, 0xFFFF);  // 2^335 - 1
const Decimal kSmallest = longest(0x8000, 0);      // -(2^335), whose negation needs a 22nd limb

TEST(DecimalConstants, HoldTheirValuesBeforeMain) {
  EXPECT_EQ(showAll({globalSum, Decimal::Zero, Decimal::One, Decimal::MinusOne, Decimal::Half,
                     Decimal::Max, Decimal::Min, Decimal::KoraMax, Decimal::KoraMin}),
            expand("9{23} 0 1 -1 0.5 10{100} -10{96} 9{23} -9{23}"));
}

TEST(DecimalPower10, IsOneWithThatManyZeros) {
  std::uint8_t power = 0;
  for (; power <= 100; ++power) EXPECT_EQ(show(Decimal::power10(power)), "1" + zeros(power));
  Recorder recorder;
  EXPECT_EQ(showAll({Decimal::power10(101), Decimal::power10(255)}), expand("10{100} 10{100}"));
  const auto reported = recorder.takeAssertions();
  ASSERT_EQ(reported.size(), 2u);
  EXPECT_EQ(reported[1].expression, kNoPower);
  EXPECT_EQ(reported[1].kind, "Assertion failed");
}

TEST(DecimalInteger, TakesMinimalLimbsOfEveryWidth) {
  EXPECT_EQ(showAll({0, '\0', 32767, 32768L, -32768LL, -32769, INT32_MIN, UINT32_MAX, INT64_MAX,
                     INT64_MIN, ULLONG_MAX, static_cast<std::int8_t>(-5)}),
            "0 0 32767 32768 -32768 -32769 -2147483648 4294967295 9223372036854775807 "
            "-9223372036854775808 18446744073709551615 -5");
}

static_assert(!std::is_assignable_v<Decimal&, bool>);
static_assert(!std::is_assignable_v<Decimal&, std::nullptr_t>);

TEST(DecimalAssignment, ReplacesEverything) {
  const HighPrecisionNumber number{2, -1, {0, 0, 0, 125}};
  Decimal value(static_cast<const std::uint8_t*>(nullptr), 0);
  EXPECT_EQ(showAll({value = std::int32_t{-70000}, value = stored("-12.50"), value = 4000000000u,
                     value = std::int64_t{-1}, value = -0.25, value = std::uint64_t{UINT64_MAX},
                     value = &number}),
            "-70000 -12.50 4000000000 -1 -0.25 18446744073709551615 -1.25");
}

TEST(DecimalLimbs, AreNormalisedButKeepTheirSign) {
  const auto make = [](const std::vector<std::uint16_t>& limbs, std::uint8_t scale) {
    return Decimal(limbs.data(), static_cast<int>(limbs.size()), scale);
  };
  EXPECT_EQ(showAll({make({0, 0, 0}, 2), make({0, 0, 5}, 0), make({0, 0, 0x8000}, 0),
                     make({0xFFFF, 0xFFFF, 0xFFFF}, 1), make({0xFFFF, 0x8000}, 0),
                     make({0xFFFF, 0xFFFF, 0x7FFF}, 0), longest(0xFFFF, 0xFFFF)}),
            "0.00 5 32768 -0.1 -32768 -32769 -1");
}

TEST(DecimalLimbs, ATwentySecondIsReportedAndDropped) {
  Recorder recorder;
  std::vector<std::uint16_t> limbs(24);
  limbs.back() = 5;
  EXPECT_EQ(show(Decimal(limbs.data(), 24, 0)), "5");
  EXPECT_EQ(recorder.takeExpressions(), "");
  EXPECT_EQ(show(Decimal(limbs.data(), -1, 0)), "0");
  EXPECT_EQ(recorder.takeAssertions().size(), 1u);
  limbs.assign(22, 0x4000);
  EXPECT_EQ(show(Decimal(limbs.data(), 22, 0)), show(longest(0x4000, 0x4000)));
  EXPECT_EQ(recorder.takeExpressions(), "_length <= MaxDecimalValueSize");
  EXPECT_EQ((-kSmallest).getLength() | (kSmallest + kSmallest).getLength() |
                (kLargest - kSmallest).getLength(),
            21);
  EXPECT_EQ(recorder.takeAssertions().size(), 3u);

  // What takes the absolute value on its way may report; it must stay inside its arrays.
  char text[120];
  EXPECT_EQ(show(kSmallest * Decimal(2)), show(Decimal::Min));
  EXPECT_EQ(kSmallest.getMagnitude(), 100);

  // Redundant limbs count where a product is not tried.
  const Decimal five(bytesOf("1400" + zeros(76) + "0500").data(), 42);
  EXPECT_EQ(showAll({five * Decimal(1), Decimal(-1) * five}), expand("10{100} -10{96}"));
  EXPECT_EQ(kSmallest.decimalToString(text, sizeof text, 0), std::string(119, '*'));
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
      0 - 00 invalid   47 010005 01 invalid   1 00 00 0   1 FF 00 255   2 0102 00 0.00
      4 01017D00 00 12.5   3 020001 00 65536   44 010005 00 5   2 0000 00 invalid
      44 0000 00 invalid   45 0000 01 0(empty)   46 0000 00 invalid   46 010005 00 5
      46 0000 FF 0(empty)   46 010005 80 5   3 000001 00 invalid   46 160001 01 invalid
      46 00000001 01 invalid   46 FF0001 01 invalid   46 016501 01 invalid
      46 01FE01 01 invalid   46 016401 01 0.0{99}1   46 01FF01 01 0.0{254}1
      46 020000000500 01 5(redundant)   46 1500F{84} 01 -1(redundant))");
}

TEST(DecimalImage, IsTheObjectItself) {
  const std::vector<std::uint8_t> image = bytesOf("0202FEFFC01D" + zeros(76) + "0100");
  const Decimal value = dec("-1234.56");
  EXPECT_EQ(std::memcmp(&value, image.data(), sizeof value), 0);
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
      0.15 -1 0.2   -0.15 -1 -0.2   0.14 -1 0.1   -0.04 -1 0.0   0.9{100} -100 1   12.34 0 12.34
      -1.5 2 -1.500   0 3 0.000   empty 2 0.00(empty)   1 100 1.0{100}   12.34 -3 1234!   -12.34 -3 -1234!   7 -1 7!
      6553.5 20 6553.50{20}   1.5 -300 15!   1.5 -2147483648 15!   10{99} 2 -10{96}!
      70{99} 1 -10{96}!   60{99} 2 10{100}!   50{99} 1 50{99}.0   1 300 -10{96}!
      1 2147483647 -10{96}!   0.0 300 0.0{45}   -1 91 -1.0{91}   -1 92 -10{4}.0{92}
      0 2147483647 0.0{255}   -10{95} 1 -10{95}.0   -20{95} 1 -10{95}.0)");
}

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
  EXPECT_EQ(scaled(half, 101, -101) + scaled(-half, 101, -101), "1!-1!");
  EXPECT_EQ(scaled(half - Decimal(1), 101, -101), "0!");
  EXPECT_EQ(scaled(7, 255, -200), expand("0.0{55}!"));
  EXPECT_EQ(scaled(-1, 0, 101), expand("-0.000010{96}!"));  // Min with 101 places
}

TEST(DecimalMagnitude, CountsIntegerDigits) {
  const auto count = [](const Row& row) { return std::to_string(dec(row[0]).getMagnitude()); };
  expectRows(2, count, R"(
      0 0   -0.99 0   1 1   9.99 1   -9.99 1   10 2   123.45 3   -999.999 3   1000 4   0.0001 0
      90{22} 23   9{99} 99   10{99} 100   10{100} 100   0.1{99} 0   -10{96} 97   9.9{99} 1
      99.9{98} 2)");
}

TEST(DecimalLength, GrowsByOneLimbAtThesePrecisions) {
  const auto length = [](const Row& row) {
    return std::to_string(Decimal::getDecimalLength(byteOf(row[0])));
  };
  // 2 + 2 x limbs; from exact arithmetic on precision x log2(10) + 2 bits.
  expectRows(2, length, R"(
      0 4   4 4   5 6   9 6   10 8   13 8   14 10   18 10   19 12   23 12   24 14   38 20
      91 42   95 42   96 44   153 66   154 68   182 78   183 80   254 108   255 110)");
}

}  // namespace
