// The forms of a decimal: limbs in normal form, the two zeros, the constants, the powers of ten,
// the 46-byte image, and what rescaling leaves of them.
#include "decimalshow.h"
#include "recorder.h"
#include "sys/decimals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using nomtest::dec;
using nomtest::Recorder;
using nomtest::show;
using nomtest::zeros;

// Constants are ready before any object of another library or file is built.
const Decimal globalMax = Decimal::Max;
const Decimal globalSum = Decimal::KoraMax + Decimal::power10(96) + Decimal::Min;

const std::string kMax = "1" + zeros(100);
const std::string kMin = "-1" + zeros(96);
constexpr const char* kSource = "objman/common/source/decimals";

static_assert(!std::is_constructible_v<Decimal, std::nullptr_t>);
static_assert(!std::is_constructible_v<Decimal, bool>);

// The value 2^335 - 1, the largest of 21 limbs; and -(2^335), whose negation needs a 22nd.
Decimal largest() {
  std::vector<std::uint16_t> limbs(21, 0xFFFF);
  limbs[0] = 0x7FFF;
  return Decimal(limbs.data(), 21, 0);
}
Decimal smallest() {
  std::vector<std::uint16_t> limbs(21);
  limbs[0] = 0x8000;
  return Decimal(limbs.data(), 21, 0);
}

TEST(DecimalConstants, HoldTheirValuesBeforeMain) {
  EXPECT_EQ(show(globalMax), kMax);
  EXPECT_EQ(show(globalSum), "99999999999999999999999");
  EXPECT_EQ(show(Decimal::Zero), "0");
  EXPECT_EQ(show(Decimal::One), "1");
  EXPECT_EQ(show(Decimal::MinusOne), "-1");
  EXPECT_EQ(show(Decimal::Half), "0.5");
  EXPECT_EQ(show(Decimal::Max), kMax);
  EXPECT_EQ(show(Decimal::Min), kMin);
  EXPECT_EQ(show(Decimal::KoraMax), std::string(23, '9'));
  EXPECT_EQ(show(Decimal::KoraMin), "-" + std::string(23, '9'));
}

TEST(DecimalPower10, IsOneWithThatManyZeros) {
  for (unsigned power = 0; power <= 100; ++power) {
    EXPECT_EQ(show(Decimal::power10(static_cast<std::uint8_t>(power))), "1" + zeros(power));
  }
  Recorder recorder;
  for (const unsigned power : {101u, 255u}) {
    EXPECT_EQ(show(Decimal::power10(static_cast<std::uint8_t>(power))), kMax);
    const auto reported = recorder.takeAssertions();
    ASSERT_EQ(reported.size(), 1u);
    EXPECT_EQ(reported[0].file, kSource);
    EXPECT_EQ(reported[0].module, "nomutil");
    EXPECT_EQ(reported[0].expression, "power < NUM_ELEMS(values)");
    EXPECT_EQ(reported[0].kind, "Assertion failed");
  }
}

TEST(DecimalInteger, TakesMinimalLimbsOfEveryWidth) {
  const Decimal zeroLiterals[] = {Decimal(0), Decimal(0L), Decimal(0LL), Decimal(0u),
                                  Decimal('\0')};
  for (const Decimal& zero : zeroLiterals) EXPECT_EQ(show(zero), "0");

  struct {
    Decimal built;
    const char* shown;
    unsigned limbs;
  } const rows[] = {{32767, "32767", 1},
                    {32768, "32768", 2},
                    {-32768, "-32768", 1},
                    {-32769, "-32769", 2},
                    {65535u, "65535", 2},
                    {INT32_MAX, "2147483647", 2},
                    {INT32_MIN, "-2147483648", 2},
                    {UINT32_MAX, "4294967295", 3},
                    {INT64_MAX, "9223372036854775807", 4},
                    {INT64_MIN, "-9223372036854775808", 4},
                    {UINT64_MAX, "18446744073709551615", 5},
                    {-1LL, "-1", 1},
                    {ULLONG_MAX, "18446744073709551615", 5},
                    {static_cast<std::int8_t>(-5), "-5", 1}};
  for (const auto& row : rows) {
    EXPECT_EQ(show(row.built), row.shown);
    EXPECT_EQ(row.built.getLength(), row.limbs) << row.shown;
    EXPECT_EQ(row.built.getValueSize(), 2 * row.limbs + 2) << row.shown;
  }
}

TEST(DecimalInteger, AssignmentReplacesEverything) {
  const std::uint8_t noImage[1] = {};
  const Decimal invalid(noImage, 0);
  ASSERT_FALSE(invalid.isvalid());
  Decimal value = invalid;
  const auto assigned = [&](auto source) {
    value = invalid;
    value.setScaleFactor(7);
    value = source;
    return show(value);
  };
  EXPECT_EQ(assigned(std::int32_t{-70000}), "-70000");
  EXPECT_EQ(assigned(std::uint32_t{4000000000u}), "4000000000");
  EXPECT_EQ(assigned(std::int64_t{-1}), "-1");
  EXPECT_EQ(assigned(std::uint64_t{UINT64_MAX}), "18446744073709551615");
  EXPECT_EQ(assigned(short{-3}), "-3");
  EXPECT_EQ(assigned(-0.25), "-0.25");
  EXPECT_EQ(assigned(nomtest::stored("-12.50")), "-12.50");
  const HighPrecisionNumber number{2, -1, {0, 0, 0, 125}};
  EXPECT_EQ(assigned(&number), "-1.25");
}

TEST(DecimalLimbs, AreNormalisedButKeepTheirSign) {
  struct {
    std::vector<std::uint16_t> limbs;
    std::uint8_t scale;
    const char* shown;
  } const rows[] = {{{0}, 0, "0"},
                    {{0, 0, 0}, 2, "0.00"},
                    {{0, 0, 5}, 0, "5"},
                    {{0, 0x8000}, 0, "32768"},
                    {{0, 0, 0x8000}, 0, "32768"},
                    {{0xFFFF}, 0, "-1"},
                    {{0xFFFF, 0xFFFF, 0xFFFF}, 1, "-0.1"},
                    {{0xFFFF, 0x8000}, 0, "-32768"},
                    {{0xFFFF, 0x7FFF}, 0, "-32769"},
                    {{0xFFFF, 0xFFFF, 0x7FFF}, 0, "-32769"},
                    {{0x0001, 0x0000}, 4, "6.5536"}};
  for (const auto& row : rows) {
    EXPECT_EQ(show(Decimal(row.limbs.data(), static_cast<int>(row.limbs.size()), row.scale)),
              row.shown);
  }
}

TEST(DecimalLimbs, ATwentySecondIsReportedAndDropped) {
  Recorder recorder;
  const std::unique_ptr<std::uint16_t[]> limbs(new std::uint16_t[22]{});
  limbs[0] = 1;
  limbs[1] = 0x4000;
  limbs[21] = 7;
  const Decimal low(limbs.get(), 22, 0);
  EXPECT_EQ(low.getLength(), 21);
  EXPECT_EQ(low.getValue()[0], 0x4000);
  EXPECT_EQ(low.getValue()[20], 7);
  EXPECT_EQ(recorder.takeExpressions(), "_length <= MaxDecimalValueSize");
}

TEST(DecimalZero, TheEmptyOneIsUnequalAndFirst) {
  const Decimal empty;
  EXPECT_EQ(show(empty), "0 empty");
  EXPECT_EQ(empty.getValueSize(), 2u);
  EXPECT_FALSE(empty == Decimal::Zero);
  EXPECT_TRUE(empty != Decimal::Zero);
  EXPECT_TRUE(empty < Decimal(0));
  EXPECT_TRUE(Decimal(0) > empty);
  EXPECT_FALSE(Decimal(0) < empty);
  EXPECT_TRUE(empty == Decimal());
  EXPECT_TRUE(Decimal(-1) < empty);
  EXPECT_TRUE(empty < Decimal(1));
  EXPECT_TRUE(empty.iseven());
  EXPECT_FALSE(empty.isneg());

  DskDecimal noBytes{};
  const Decimal computed[] = {
      Decimal(0),         dec(""),     dec("1.5") - dec("1.5"), Decimal(noBytes),
      Decimal(0) * empty, Decimal(0.0)};
  for (const Decimal& zero : computed) EXPECT_EQ(zero.getLength(), 1u) << show(zero);
}

TEST(DecimalImage, ReadsEverySizeAndNothingBeyond) {
  struct {
    std::size_t size;
    std::vector<std::uint8_t> head;  // continued with 00
    int validity;                    // byte 44, when the image has one
    const char* shown;
    const char* note;
  } const rows[] = {
      {0, {}, 0, "invalid", "no image"},
      {47, {1, 0, 5}, 1, "invalid", "more than an image"},
      {1, {0}, 0, "0", "one byte is an integer"},
      {1, {22}, 0, "22", "and no length"},
      {1, {255}, 0, "255", ""},
      {2, {1, 2}, 0, "0.00", "limbs that are not given are 0"},
      {4, {1, 1, 0x7D, 0}, 0, "12.5", ""},
      {3, {2, 0, 1}, 0, "65536", "a limb cut in two"},
      {4, {1, 0, 0xFF, 0xFF}, 0, "-1", ""},
      {44, {1, 0, 5}, 0, "5", "no validity byte, a length"},
      {2, {0, 0}, 0, "invalid", "no length, no validity byte"},
      {44, {0, 0}, 0, "invalid", ""},
      {45, {0, 0}, 1, "0 empty", "validity byte of an empty zero"},
      {46, {0, 0}, 0, "invalid", ""},
      {46, {0, 0}, 2, "0 empty", "any byte but 0 is true"},
      {46, {0, 0}, 255, "0 empty", ""},
      {46, {1, 0, 5}, 0, "5", "a length is valid whatever byte 44 says"},
      {46, {1, 0, 5}, 0x80, "5", ""},
      {3, {0, 0, 1}, 0, "invalid", "limbs without a length"},
      {46, {0, 0, 0, 1}, 1, "invalid", ""},
      {46, {21, 0, 0, 0x40}, 1, nullptr, "all limbs"},
      {46, {22, 0, 1}, 1, "invalid", "too many limbs"},
      {46, {255, 0, 1}, 1, "invalid", ""},
      {46, {1, 101, 1}, 1, "invalid", "too many places"},
      {46, {1, 254, 1}, 1, "invalid", ""},
      {46, {1, 100, 1}, 1, nullptr, "most places"},
      {46, {1, 255, 1}, 1, nullptr, "255 places are let through"},
      {46, {2, 0, 0, 0, 5, 0}, 1, "5 redundant", "limbs stay as they are"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << "size " << row.size << " " << row.note);
    const std::unique_ptr<std::uint8_t[]> image(new std::uint8_t[row.size]{});
    std::copy(row.head.begin(), row.head.end(), image.get());
    if (row.size > 44) image[44] = static_cast<std::uint8_t>(row.validity);
    const Decimal value(image.get(), static_cast<std::uint32_t>(row.size));
    if (row.shown == nullptr) {
      EXPECT_TRUE(value.isvalid());
      EXPECT_EQ(value.getLength(), row.head[0]);
      EXPECT_EQ(value.getScaleFactor(), row.head[1]);
    } else if (std::string(row.shown) == "invalid") {
      EXPECT_FALSE(value.isvalid());
      for (unsigned i = 0; i < value.getLength(); ++i) EXPECT_EQ(value.getValue()[i], 0);
    } else {
      EXPECT_EQ(show(value), row.shown);
    }
  }
}

TEST(DecimalImage, IsTheObjectItself) {
  const Decimal value = dec("-1234.56");
  std::uint8_t image[46];
  std::memcpy(image, &value, sizeof image);
  const std::uint8_t head[] = {0x02, 0x02, 0xFE, 0xFF, 0xC0, 0x1D};
  EXPECT_EQ(std::memcmp(image, head, sizeof head), 0);
  EXPECT_EQ(image[44], 1);
  EXPECT_EQ(show(Decimal(image, 46)), "-1234.56");
}

TEST(DecimalNegate, CrossesLimbBoundaries) {
  const char* const pairs[][2] = {
      {"0", "0"},          {"0.00", "0.00"},    {"32768", "-32768"}, {"1.50", "-1.50"},
      {"65536", "-65536"}, {"32767", "-32767"}, {"65535", "-65535"}, {"2147483648", "-2147483648"}};
  for (const auto& pair : pairs) {
    EXPECT_EQ(show(-dec(pair[0])), pair[1]);
    EXPECT_EQ(show(-dec(pair[1])), pair[0]);
    EXPECT_EQ(show(+dec(pair[1])), pair[1]);
  }
}

TEST(DecimalOverflow, A22ndLimbIsReportedAndEverythingStaysInBounds) {
  Recorder recorder;
  const Decimal low = smallest();
  const Decimal high = largest();
  const auto check = [&](const char* what, const Decimal& value) {
    EXPECT_LE(value.getLength(), 21) << what;
    EXPECT_EQ(recorder.takeExpressions(), "_length <= MaxDecimalValueSize") << what;
  };
  check("negate", -low);
  check("add", high + high);
  check("add negative", low + low);
  check("subtract", high - low);

  // What takes the absolute value on its way may report; it must stay inside its arrays.
  char text[120];
  Decimal scaled = low;
  scaled.scale(1);
  Decimal cut = low;
  cut.setScaleFactor(1);
  cut.scale(-1);
  EXPECT_LE((low / Decimal(3)).getLength(), 21);
  EXPECT_LE((low % high).getLength(), 21);
  EXPECT_LE((high / low).getLength(), 21);
  EXPECT_LE(low.realDivide(low).getLength(), 21);
  EXPECT_LE(scaled.getLength(), 21);
  EXPECT_LE(cut.getLength(), 21);
  EXPECT_EQ(low.decimalToString(text, sizeof text, 0), text);
  EXPECT_EQ(show(low * Decimal(2)), kMin);
  EXPECT_GE(low.getMagnitude(), 0);
}

TEST(DecimalScale, MovesThePointAndRoundsAwayFromZero) {
  struct {
    std::string text;
    int places;
    bool result;
    std::string shown;
  } const rows[] = {
      {"0.15", -1, true, "0.2"},
      {"-0.15", -1, true, "-0.2"},
      {"0.14", -1, true, "0.1"},
      {"-0.14", -1, true, "-0.1"},
      {"0.04", -1, true, "0.0"},
      {"-0.04", -1, true, "0.0"},
      {"9.99", -1, true, "10.0"},
      {"2.5", -1, true, "3"},
      {"-2.5", -1, true, "-3"},
      {"1.2499", -3, true, "1.2"},
      {"655.36", -2, true, "655"},
      {"0.00", -2, true, "0"},
      {"0." + std::string(100, '9'), -100, true, "1"},
      {"12.34", 0, true, "12.34"},
      {"1.5", 2, true, "1.500"},
      {"-1.5", 2, true, "-1.500"},
      {"0", 3, true, "0.000"},
      {"6553.5", 20, true, "6553.5" + zeros(20)},
      {"1", 100, true, "1." + zeros(100)},
      // More places to remove than there are: the digits stay, the point goes.
      {"12.34", -3, false, "1234"},
      {"-12.34", -3, false, "-1234"},
      {"7", -1, false, "7"},
      {"1.5", INT_MIN, false, "15"},
      {"1.5", -300, false, "15"},
      // 10^101 still has 21 limbs, but the top bit set: Min. Beyond 336 bits: Max.
      {"1" + zeros(99), 2, false, kMin},
      {"7" + zeros(99), 1, false, kMin},
      {"5" + zeros(99), 1, true, "5" + zeros(99) + ".0"},
      {"6" + zeros(99), 2, false, kMax},
      {"1", 300, false, kMin},
      {"1", INT_MAX, false, kMin},
      // A zero never outgrows; its places are counted modulo 256.
      {"0.0", 300, true, "0." + zeros(45)},
      {"0", INT_MAX, true, "0." + zeros(255)},
      // A negative value goes up through the product with 10^n, which saturates and succeeds.
      {"-1", 91, true, "-1." + zeros(91)},
      {"-1", 92, true, "-10000." + zeros(92)},
      {"-1" + zeros(95), 1, true, "-1" + zeros(95) + ".0"},
      {"-2" + zeros(95), 1, true, "-1" + zeros(95) + ".0"},
      {"1" + zeros(95), 1, true, "1" + zeros(95) + ".0"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text + " by " + std::to_string(row.places));
    Decimal value = dec(row.text);
    EXPECT_EQ(value.scale(row.places), row.result);
    EXPECT_EQ(show(value), row.shown);
  }
}

TEST(DecimalScale, BeyondThePowerTableReportsAndStaysExact) {
  const Decimal& max = Decimal::Max;
  const Decimal half = max + max + max + max + max;  // with 101 places
  struct {
    Decimal digits;
    std::uint8_t scale;
    int places;
    std::string shown;
    bool reported;
  } const rows[] = {
      {largest(), 100, -100, "7", false},
      {largest(), 99, -99, "70", false},
      {smallest(), 100, -100, "-7", false},
      {half, 101, -101, "1", true},
      {-half, 101, -101, "-1", true},
      {half - Decimal(1), 101, -101, "0", true},
      {largest(), 255, -102, "0." + zeros(153), true},
      {Decimal(7), 255, -200, "0." + zeros(55), true},
      {Decimal(-7), 130, -128, "0.00", true},
      {Decimal(-1), 0, 101, "-0.00001" + zeros(96), true},  // Min with 101 places
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(show(row.digits) + " with " + std::to_string(row.scale));
    Recorder recorder;
    Decimal value = row.digits;
    value.setScaleFactor(row.scale);
    EXPECT_TRUE(value.scale(row.places));
    EXPECT_EQ(value.getScaleFactor(), row.scale + row.places);
    EXPECT_EQ(show(value), row.shown);
    EXPECT_EQ(recorder.takeExpressions(), row.reported ? "power < NUM_ELEMS(values)" : "");
  }
}

TEST(DecimalTruncate, CutsTowardZero) {
  struct {
    std::string text;
    std::uint8_t places;
    std::string shown;
  } const rows[] = {{"1.25", 1, "1.2"},
                    {"-1.29", 1, "-1.2"},
                    {"1.29", 2, "1"},
                    {"-0.9", 1, "0"},
                    {"1.25", 3, "1.25"},
                    {"12.5", 0, "12.5"},
                    {"0.05", 1, "0.0"},
                    {"7", 1, "7"},
                    {"-655.36", 2, "-655"},
                    {"0." + std::string(100, '9'), 100, "0"},
                    {"9." + std::string(99, '9'), 98, "9.9"}};
  for (const auto& row : rows) {
    Decimal value = dec(row.text);
    value.truncate(row.places);
    EXPECT_EQ(show(value), row.shown) << row.text << " by " << int{row.places};
  }
  Recorder recorder;  // reports from the power table are the business of another test
  for (const int places : {101, 200, 255}) {
    Decimal value = largest();
    value.setScaleFactor(static_cast<std::uint8_t>(places));
    value.truncate(static_cast<std::uint8_t>(places));
    EXPECT_EQ(show(value), "0") << places;
  }
}

TEST(DecimalMagnitude, CountsIntegerDigits) {
  struct {
    std::string text;
    unsigned digits;
  } const rows[] = {{"0", 0},
                    {"0.99", 0},
                    {"-0.99", 0},
                    {"1", 1},
                    {"9.99", 1},
                    {"-9.99", 1},
                    {"10", 2},
                    {"123.45", 3},
                    {"-999.999", 3},
                    {"1000", 4},
                    {"0.0001", 0},
                    {"9" + zeros(22), 23},
                    {std::string(99, '9'), 99},
                    {"1" + zeros(99), 100},
                    {kMax, 100},
                    {kMin, 97},
                    {"0." + std::string(99, '1'), 0},
                    {"9." + std::string(99, '9'), 1},
                    {"99." + std::string(98, '9'), 2}};
  for (const auto& row : rows) EXPECT_EQ(dec(row.text).getMagnitude(), row.digits) << row.text;

  // 20 with 99 places: no power of ten above it can be aligned with it.
  Decimal twenty = Decimal::Max + Decimal::Max;
  twenty.setScaleFactor(99);
  EXPECT_EQ(twenty.getMagnitude(), 100);
}

TEST(DecimalPrecision, LooksAtIntegerDigitsAlone) {
  struct {
    std::string text;
    std::uint8_t precision;
    std::uint8_t scale;
    bool fits;
  } const rows[] = {{kMax, 0, 0, true},
                    {"123456", 0, 5, true},
                    {"999.999", 5, 2, true},
                    {"-999.999", 5, 2, true},
                    {"1000", 5, 2, false},
                    {"-1000", 5, 2, false},
                    {"99999.9", 5, 255, true},
                    {"100000", 5, 255, false},
                    {"0.9", 1, 1, true},
                    {"1", 1, 1, false},
                    {"0", 1, 1, true},
                    {std::string(100, '9'), 100, 0, true},
                    {kMax, 100, 0, false},
                    // 10^1 can still be given 99 places, 10^5 cannot: the check fails.
                    {"0." + std::string(99, '1'), 1, 0, true},
                    {"0." + std::string(99, '1'), 5, 0, false}};
  for (const auto& row : rows) {
    EXPECT_EQ(dec(row.text).checkDecimalPrecision(row.precision, row.scale), row.fits)
        << row.text << " " << int{row.precision} << " " << int{row.scale};
  }

  Recorder recorder;  // the exponent 2 - 5 is 253 in eight bits
  EXPECT_TRUE(dec("123456").checkDecimalPrecision(2, 5));
  EXPECT_EQ(recorder.takeExpressions(), "power < NUM_ELEMS(values)");
}

TEST(DecimalLength, GrowsByOneLimbAtThesePrecisions) {
  // bytes = 2 + 2 x limbs; from exact arithmetic on precision x log2(10) + 2 bits.
  const unsigned firstOfLength[] = {
      0,   5,   10,  14,  19,  24,  29,  34,  38,  43,  48,  53,  58,  63,  67,  72,  77,  82,  87,
      91,  96,  101, 106, 111, 115, 120, 125, 130, 135, 140, 144, 149, 154, 159, 164, 168, 173, 178,
      183, 188, 193, 197, 202, 207, 212, 217, 221, 226, 231, 236, 241, 246, 250, 255, 256};
  std::uint32_t bytes = 4;
  for (std::size_t i = 0; i + 1 < std::size(firstOfLength); ++i, bytes += 2) {
    for (unsigned precision = firstOfLength[i]; precision < firstOfLength[i + 1]; ++precision) {
      EXPECT_EQ(Decimal::getDecimalLength(static_cast<std::uint8_t>(precision)), bytes);
    }
  }
}

}  // namespace
