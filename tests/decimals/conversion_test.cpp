// Conversions of decimals, text apart: the stored form, reals, integers, OLE parts, 112-bit
// numbers.
#include "decimalshow.h"
#include "recorder.h"
#include "sys/decimals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

using nomtest::dec;
using nomtest::Recorder;
using nomtest::sentinel;
using nomtest::show;
using nomtest::showOrUntouched;
using nomtest::zeros;

std::vector<std::uint8_t> bytesOf(const DskDecimal& record) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(&record);
  return {bytes, bytes + sizeof record};
}

// A record with the given head, the rest 77.
DskDecimal record(std::initializer_list<std::uint8_t> head) {
  std::uint8_t bytes[16];
  std::fill(std::begin(bytes), std::end(bytes), std::uint8_t{0x77});
  std::copy(head.begin(), head.end(), bytes);
  DskDecimal made;
  std::memcpy(&made, bytes, sizeof made);
  return made;
}

std::string logLine(int precision, int scaleFactor) {
  return "attempt to convert an invalid (uninitialised?) DskDecimal to a Decimal (precision=" +
         std::to_string(precision) + ", scaleFactor=" + std::to_string(scaleFactor) + ")";
}

TEST(DskDecimal, HasTheseBytes) {
  struct {
    Decimal value;
    std::vector<std::uint8_t> head;  // then AA up to offset 11, 00 00, and the old padding
  } const rows[] = {
      {dec("-1234.56"), {0x04, 0x02, 0xFE, 0xFF, 0xC0, 0x1D}},
      {Decimal(5), {0x02, 0x00, 0x05, 0x00}},
      {dec("-1.23"), {0x02, 0x02, 0x85, 0xFF}},
      {Decimal(32768), {0x04, 0x00, 0x00, 0x00, 0x00, 0x80}},
      {dec("65536.5"), {0x04, 0x01, 0x0A, 0x00, 0x05, 0x00}},
      {Decimal::Zero, {0x02, 0x00, 0x00, 0x00}},
      {Decimal(), {0x00, 0x00}},
      {Decimal::KoraMax, {0x0A, 0x00, 0x2D, 0x15, 0xC7, 0x02, 0x4A, 0xE1, 0x7F, 0xF6, 0xFF, 0xFF}},
      {Decimal::KoraMin, {0x0A, 0x00, 0xD2, 0xEA, 0x38, 0xFD, 0xB5, 0x1E, 0x80, 0x09, 0x01, 0x00}}};
  for (const auto& row : rows) {
    DskDecimal out = sentinel();
    EXPECT_TRUE(row.value.decimalToDskDecimal(out, 255));
    std::vector<std::uint8_t> expected = row.head;
    expected.resize(12, 0xAA);
    expected.insert(expected.end(), {0x00, 0x00, 0x5A, 0x5A});
    EXPECT_EQ(bytesOf(out), expected) << show(row.value);
  }
}

TEST(DskDecimal, StoresWithinTheBoundsAndRoundsPlacesAway) {
  const std::string nines(23, '9');
  struct {
    std::string text;
    std::uint8_t scale;
    const char* shown;  // null: does not store
  } const rows[] = {
      {"12.50", 255, "12.50"},
      {"12.5", 0, "13"},
      {"-12.45", 1, "-12.5"},
      {"12.5", 3, "12.500"},
      {"0.04", 1, "0.0"},
      {"1.5", 30, "1.50000000000000000000000"},
      {"1.123456789012345678901234", 255, "1.12345678901234567890123"},
      {"-1.123456789012345678901235", 255, "-1.12345678901234567890124"},
      {nines, 255, "99999999999999999999999"},
      {"-" + nines, 255, "-99999999999999999999999"},
      {"1" + zeros(23), 255, nullptr},
      {"-1" + zeros(23), 255, nullptr},
      {nines + ".4", 255, "99999999999999999999999"},
      {nines + ".5", 255, nullptr},
      // Bytes limit, not digits: 2^79 is 604462909807314587353088.
      {"60446290980731458735308.7", 255, "60446290980731458735308.7"},
      {"60446290980731458735308.8", 255, "60446290980731458735309"},
      {"-60446290980731458735308.8", 255, "-60446290980731458735308.8"},
      {"604462909807314587353087", 255, nullptr},
      {"60000000000000000000000.5", 255, "60000000000000000000000.5"},
      // Places go by 1, then 2, then 3, each time rounded; a step of 2 from 1 place fails.
      {"12345.12345678901234567890123", 255, "12345.12345678901234568"},
      {"70000000000000000000000.5", 255, "70000000000000000000001"},
      {"70000000000000000000000.55", 255, nullptr},
      {nines, 5, nullptr},
      {"1", 250, nullptr},
      {"1" + zeros(100), 255, nullptr},
      {"-1" + zeros(96), 255, nullptr}};
  for (const auto& row : rows) {
    DskDecimal out = sentinel();
    EXPECT_EQ(dec(row.text).decimalToDskDecimal(out, row.scale), row.shown != nullptr) << row.text;
    EXPECT_EQ(showOrUntouched(out), row.shown ? row.shown : nomtest::kUntouched) << row.text;
  }

  const std::uint8_t noImage[1] = {};
  DskDecimal out = sentinel();
  EXPECT_FALSE(Decimal(noImage, 0).decimalToDskDecimal(out, 255));
  EXPECT_EQ(showOrUntouched(out), nomtest::kUntouched);
}

TEST(DskDecimal, LoadsWhatTheHeaderAllows) {
  struct {
    DskDecimal stored;
    const char* shown;  // null: a zero that is not valid, and a log line
  } const rows[] = {
      {record({0, 0, 5}), "0"},
      {record({0, 24, 5}), "0"},
      {record({0, 255}), "0"},
      {record({2, 23, 7, 0}), "0.00000000000000000000007"},
      {record({2, 24, 7, 0}), nullptr},
      {record({22, 0}), nullptr},
      {record({255, 255}), nullptr},
      {record({0x77, 0x77}), nullptr},
      {record({4, 1, 0, 0, 5, 0}), "0.5 redundant"},
      {record({4, 0, 0xFF, 0xFF, 0xFE, 0xFF}), "-2 redundant"},
      {record({3, 0, 5, 0, 1}), "5"},
      {record({10, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0}), "18446744073709551616"},
      // Up to 21 value bytes count; the record has 14 of them, the others are 0.
      {record({12, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0}), "309485009821345068724781058"},
      {record({16, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0}),
       "1329227995784915872903807060280541184"},
      {record({21, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}),
       "2230074519853062314153571827264836150598041.6"}};
  Recorder recorder;
  for (const auto& row : rows) {
    const int precision = row.stored.precision;
    SCOPED_TRACE(testing::Message() << precision << " " << int{row.stored.scaleFactor});
    const auto atBlockEnd = std::make_unique<DskDecimal>(row.stored);
    const Decimal value(*atBlockEnd);
    Decimal assigned(5);
    assigned = *atBlockEnd;
    const auto lines = recorder.takeLines();
    if (row.shown != nullptr) {
      EXPECT_EQ(show(value), row.shown);
      EXPECT_EQ(show(assigned), show(value));
      EXPECT_TRUE(lines.empty());
    } else {
      EXPECT_FALSE(value.isvalid());
      EXPECT_FALSE(assigned.isvalid());
      EXPECT_EQ(value.getScaleFactor(), 0);
      EXPECT_TRUE(value.getLength() == 0 || show(value) == "0 invalid");
      ASSERT_EQ(lines.size(), 2u);
      EXPECT_EQ(lines[0].text, logLine(precision, row.stored.scaleFactor));
      EXPECT_EQ(lines[0].level, NosLogLevel::Error);
    }
  }
  const auto odd = std::make_unique<DskDecimal>(record({1, 0, 5}));
  EXPECT_EQ(Decimal(*odd).getLength(), 0);
  EXPECT_TRUE(recorder.takeLines().empty());
}

TEST(DskDecimal, LoadAndStoreKeepTheValueBytes) {
  for (const DskDecimal& stored :
       {record({4, 1, 0, 0, 5, 0}), record({6, 23, 0xFF, 0xFF, 0xFF, 0xFF, 0x85, 0xFF}),
        record({10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 9, 0})}) {
    DskDecimal out = sentinel();
    ASSERT_TRUE(Decimal(stored).decimalToDskDecimal(out, 255));
    EXPECT_EQ(out.precision, stored.precision);
    EXPECT_EQ(out.scaleFactor, stored.scaleFactor);
    EXPECT_EQ(std::memcmp(out.value, stored.value, stored.precision), 0);
    for (unsigned i = stored.precision; i < sizeof out.value; ++i) EXPECT_EQ(out.value[i], 0xAA);
    EXPECT_EQ(out.reserved[0] | out.reserved[1], 0);
  }
}

TEST(DecimalFromReal, KeepsTheDigitsOfTheShortestFixedText) {
  const double inf = std::numeric_limits<double>::infinity();
  struct {
    double real;
    std::string shown;
  } const rows[] = {
      {0.0, "0"},
      {-0.0, "0"},
      {0.1, "0.1"},
      {1.5, "1.5"},
      {-7.25, "-7.25"},
      {123.0, "123"},
      {100.0, "100"},
      {0.1 + 0.2, "0.30000000000000004"},
      {123456789.125, "123456789.125"},
      {0x1p-60, "0.0000000000000000008673617379884035"},
      {1e22, "10000000000000000000000"},
      {1e23, "99999999999999991611392"},
      {1e99,
       "999999999999999967336168804116691273849533185806555472917961779471295845921727862608"
       "739868455469056"},
      // 101 digits are more than the text constructor takes.
      {1e100, "1" + zeros(100)},
      {-1e100, "-1" + zeros(96)},
      {1e101, "0"},
      {-1e101, "0"},
      {inf, "0"},
      {-inf, "0"},
      {std::nan(""), "0"},
      // 102 and 103 characters, of which 100 places are read.
      {1e-100, "0." + zeros(99) + "1"},
      {-1e-100, "-0." + zeros(99) + "1"},
      {1.5e-100, "0." + zeros(99) + "1"},
      {1e-101, "0"},
      {-1e-101, "0"},
      {5e-324, "0"}};
  for (const auto& row : rows) EXPECT_EQ(show(Decimal(row.real)), row.shown) << row.real;
}

TEST(DecimalToReal, GathersLimbsAndDividesOnce) {
  Recorder recorder;
  struct {
    std::string text;
    double real;
  } const rows[] = {
      {"0", 0.0},
      {"12.5", 12.5},
      {"-0.1", -0.1},
      {"99999999999999999999999", 1e23},
      {"-0.99999999999999999999999", -1.0},
      {"18446744073709553665", 0x1.0000000000001p64},
      {"12345678901.2345678901", 0x1.6fee0e1a9e065p33},
      // The table of reals multiplies by 10.0 step by step: its 10^23 is the real above 1e23.
      {"0.00000000000000000000001", 0x1.82db34012b252p-77},
      {"1" + zeros(100), 1e100}};
  for (const auto& row : rows) EXPECT_EQ(dec(row.text).getNumericValue(), row.real) << row.text;
  EXPECT_EQ(Decimal().getNumericValue(), 0.0);
  EXPECT_EQ(recorder.takeExpressions(), "");

  Decimal tiny(1);
  tiny.setScaleFactor(101);
  EXPECT_LT(tiny.getNumericValue(), 1e-99);
  EXPECT_EQ(recorder.takeExpressions(), "power < NUM_ELEMS(values)");
}

TEST(DecimalFromHighPrecision, JoinsWordsOf28Bits) {
  struct {
    HighPrecisionNumber number;
    const char* shown;
    bool reported;
  } const rows[] = {{{0, 0, {0, 0, 0, 0}}, "0", false},
                    {{0, 1, {0, 0, 1, 0}}, "268435456", false},
                    {{0, 0, {1, 2, 3, 4}}, "19342813257949255676461060", false},
                    {{1, 0, {0, 0, 0, 125}}, "12.5", false},
                    {{2, -1, {0, 0, 0, 125}}, "-1.25", false},
                    {{-3, -32768, {0, 0, 0, 125}}, "-125", false},
                    {{0, 0, {0, 0, 1, 0xFFFFFFFF}}, "4563402751", false},
                    {{0, -1, {0, 0, 0, 0}}, "0", false},
                    {{258, 0, {0, 0, 0, 125}}, "1.25", true}};
  Recorder recorder;
  for (const auto& row : rows) {
    EXPECT_EQ(show(Decimal(&row.number)), row.shown);
    const auto reported = recorder.takeAssertions();
    ASSERT_EQ(reported.size(), row.reported ? 1u : 0u);
    if (!row.reported) continue;
    EXPECT_EQ(reported[0].expression, "value == static_cast<T2>(static_cast<T1>(value))");
    EXPECT_EQ(reported[0].module, "nomutil");
    EXPECT_EQ(reported[0].kind, "Assertion failed");
  }
}

TEST(DecimalToOle, GivesSignAnd96Bits) {
  struct {
    std::string text;
    unsigned scale, sign;
    NomULong high, middle, low;
    bool reported;
  } const rows[] = {
      {"0", 0, 0, 0, 0, 0, false},
      {"-12.5", 1, 128, 0, 0, 125, false},
      {"65536", 0, 0, 0, 0, 65536, false},
      {"-18446744073709551617", 0, 128, 1, 0, 1, false},
      {"-99999999999999999999999", 0, 128, 0x152D, 0x02C7E14A, 0xF67FFFFF, false},
      // Six limbs and more are reported; the low six are given.
      {"1208925819614629174706176", 0, 0, 0x10000, 0, 0, true},
      {"79228162514264337593543950335", 0, 0, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, true},
      {"-1" + zeros(30) + ".7", 1, 128, 0x37BE2022, 0xC0914B26, 0x80000007, true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    Recorder recorder;
    struct {
      std::uint8_t before = 0x5A, scale = 0x5A, between = 0x5A, sign = 0x5A, after = 0x5A;
      NomULong words[5] = {0x5A5A5A5A, 0, 0, 0, 0x5A5A5A5A};
    } out;
    dec(row.text).decimalToOLEDecimal(&out.scale, &out.sign, &out.words[1], &out.words[2],
                                      &out.words[3]);
    EXPECT_EQ(out.scale, row.scale);
    EXPECT_EQ(out.sign, row.sign);
    EXPECT_EQ(out.words[1], row.high);
    EXPECT_EQ(out.words[2], row.middle);
    EXPECT_EQ(out.words[3], row.low);
    EXPECT_EQ(out.before & out.between & out.after, 0x5A);
    EXPECT_EQ(out.words[0], 0x5A5A5A5A);
    EXPECT_EQ(out.words[4], 0x5A5A5A5A);
    EXPECT_EQ(recorder.takeExpressions(),
              row.reported ? "sizeof tmp._value[ 0 ] * tmp._length < sizeof(UInt32) * 3" : "");
  }
}

// The result of `get` as text, "no" for false with the output untouched.
template <class T>
std::string extract(const std::string& text, bool (Decimal::*get)(T&) const) {
  T out = 77;
  const bool fits = (dec(text).*get)(out);
  if (!fits) return out == 77 ? "no" : "no, but touched";
  return std::to_string(out);
}

TEST(DecimalToInteger, TestsTheBoundsWithTheFraction) {
  struct {
    std::string text;
    const char *int32, *uint32, *int64, *uint64;
  } const rows[] = {
      {"0", "0", "0", "0", "0"},
      {"0.99", "0", "0", "0", "0"},
      {"-0.99", "0", "0", "0", "0"},
      {"-7.9", "-7", "0", "-7", "0"},
      {"2147483647", "2147483647", "2147483647", "2147483647", "2147483647"},
      {"2147483647.00", "2147483647", "2147483647", "2147483647", "2147483647"},
      {"2147483647.5", "no", "2147483647", "2147483647", "2147483647"},
      {"-2147483648", "-2147483648", "0", "-2147483648", "0"},
      {"-2147483648.5", "no", "0", "-2147483648", "0"},
      {"4294967295", "no", "4294967295", "4294967295", "4294967295"},
      {"4294967295.01", "no", "no", "4294967295", "4294967295"},
      {"4294967296", "no", "no", "4294967296", "4294967296"},
      {"9223372036854775807", "no", "no", "9223372036854775807", "9223372036854775807"},
      {"9223372036854775807.1", "no", "no", "no", "9223372036854775807"},
      {"-9223372036854775808", "no", "0", "-9223372036854775808", "0"},
      {"-9223372036854775808.1", "no", "0", "no", "0"},
      {"18446744073709551615", "no", "no", "no", "18446744073709551615"},
      {"18446744073709551615.5", "no", "no", "no", "no"},
      {"18446744073709551616", "no", "no", "no", "no"},
      // A bound that cannot be given 99 places is not exceeded.
      {"0." + std::string(99, '1'), "0", "0", "0", "0"},
      {"1" + zeros(100), "no", "no", "no", "no"},
      {"-1" + zeros(96), "no", "0", "no", "0"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(extract(row.text, &Decimal::getInt32Value), row.int32);
    EXPECT_EQ(extract(row.text, &Decimal::getUInt32Value), row.uint32);
    EXPECT_EQ((extract<std::int64_t>(row.text, &Decimal::getInt64Value)), row.int64);
    EXPECT_EQ((extract<std::uint64_t>(row.text, &Decimal::getUInt64Value)), row.uint64);
  }
  std::int64_t out = 77;
  EXPECT_TRUE(Decimal().getInt64Value(out));
  EXPECT_EQ(out, 0);
}

TEST(DecimalToInteger, WithoutRangeTestKeepsTheLow64Bits) {
  struct {
    const char* text;
    std::int64_t integerPart;
    std::uint64_t limbs;
  } const rows[] = {{"0", 0, 0},
                    {"12.5", 12, 125},
                    {"-7.9", -7, 65536 - 79},
                    {"-1", -1, 65535},
                    {"-65537", -65537, 0xFFFEFFFF},
                    {"18446744073709551621", 5, 5},
                    {"-18446744073709551621", -5, 0xFFFFFFFFFFFFFFFB},
                    {"9223372036854775808", INT64_MIN, 0x8000000000000000},
                    {"-9223372036854775808", INT64_MIN, 0x8000000000000000},
                    {"-9223372036854775809", INT64_MAX, 0x7FFFFFFFFFFFFFFF}};
  for (const auto& row : rows) {
    EXPECT_EQ(dec(row.text).getInt64Value(), row.integerPart) << row.text;
    EXPECT_EQ(dec(row.text).getUInt64Value(), row.limbs) << row.text;
  }
  EXPECT_EQ(Decimal().getInt64Value(), 0);
  EXPECT_EQ(Decimal().getUInt64Value(), 0u);
}

}  // namespace
