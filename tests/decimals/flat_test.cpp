// The flat functions over stored decimals: what they write, what they leave alone, keys, and the
// check against a declaration.
#include "decimalshow.h"
#include "recorder.h"
#include "sys/decimals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

using nomtest::dec;
using nomtest::kUntouched;
using nomtest::Recorder;
using nomtest::sentinel;
using nomtest::show;
using nomtest::showOrUntouched;
using nomtest::stored;
using nomtest::zeros;

using Bytes = std::vector<std::uint8_t>;

const std::string kNines(23, '9');
const DskDecimal kInvalid = {2, 24, {7}, {}, {}};

TEST(FlatArithmetic, StoresTheResultOrLeavesIt) {
  using Operation = bool (*)(const DskDecimal*, const DskDecimal*, DskDecimal*);
  struct {
    Operation operation;
    std::string left, right;
    const char* shown;  // null: false
  } const rows[] = {
      {nomDecimalAdd, "0.1", "0.02", "0.12"},
      {nomDecimalAdd, kNines, "0", "99999999999999999999999"},
      {nomDecimalAdd, kNines, "1", nullptr},
      {nomDecimalAdd, kNines, "0.4", "99999999999999999999999"},
      {nomDecimalAdd, kNines, "0.5", nullptr},
      {nomDecimalSubtract, "1.5", "1.5", "0.0"},
      {nomDecimalSubtract, "-" + kNines, "1", nullptr},
      {nomDecimalMultiply, "2.5", "0.2", "0.50"},
      {nomDecimalMultiply, "1" + zeros(11), "-1" + zeros(11), "-10000000000000000000000"},
      {nomDecimalMultiply, "1" + zeros(12), "1" + zeros(11), nullptr},
      {nomDecimalMultiply, "0.000000000001", "0.5000000000005", "0.00000000000050000000000"},
      {nomDecimalRealDivide, "1", "3", "0.33333333333333333333333"},
      {nomDecimalRealDivide, "100", "3", "33.3333333333333333333333"},
      {nomDecimalRealDivide, "200000", "3", "66666.66666666666666667"},
      {nomDecimalRealDivide, "1", "0.00000000000000000000001", nullptr},
      {nomDecimalRealDivide, "0", "7", "0.00000000000000000000000"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.left + ", " + row.right);
    DskDecimal left = stored(row.left.c_str());
    DskDecimal right = stored(row.right.c_str());
    DskDecimal out = sentinel();
    EXPECT_EQ(row.operation(&left, &right, &out), row.shown != nullptr);
    EXPECT_EQ(showOrUntouched(out), row.shown ? row.shown : kUntouched);
    const std::string leftAfter = row.shown ? row.shown : show(left);
    const std::string rightAfter = row.shown ? row.shown : show(right);
    DskDecimal leftToo = left;
    row.operation(&leftToo, &right, &leftToo);
    row.operation(&left, &right, &right);
    EXPECT_EQ(show(leftToo), leftAfter);
    EXPECT_EQ(show(right), rightAfter);
  }
}

TEST(FlatIntegerDivide, GivesBothPartsAndIsAlwaysTrue) {
  struct {
    const char *dividend, *divisor, *quotient, *remainder;
  } const rows[] = {{"7.5", "2", "3", "1.5"},
                    {"-7", "2", "-3", "-1"},
                    {"5", "7.00", "0", "5.00"},
                    {"99999999999999999999999", "0.00000000000000000000001", kUntouched,
                     "0.00000000000000000000000"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.dividend);
    DskDecimal dividend = stored(row.dividend);
    DskDecimal divisor = stored(row.divisor);
    DskDecimal quotient = sentinel();
    DskDecimal remainder = sentinel();
    EXPECT_TRUE(nomDecimalIntegerDivide(&dividend, &divisor, &quotient, &remainder));
    EXPECT_EQ(showOrUntouched(quotient), row.quotient);
    EXPECT_EQ(show(remainder), row.remainder);
    EXPECT_TRUE(nomDecimalIntegerDivide(&dividend, &divisor, &dividend, &divisor));
    EXPECT_EQ(show(divisor), row.remainder);
  }
  Recorder recorder;
  const DskDecimal seven = stored("7");
  for (const DskDecimal& zero : {stored("0"), stored("0.0"), DskDecimal{}}) {
    const char* aligned = zero.scaleFactor == 0 ? "7" : "7.0";
    DskDecimal quotient = sentinel();
    DskDecimal remainder = sentinel();
    EXPECT_TRUE(nomDecimalIntegerDivide(&seven, &zero, &quotient, &remainder));
    EXPECT_EQ(show(quotient), aligned);
    EXPECT_EQ(show(remainder), aligned);
    EXPECT_EQ(recorder.takeExpressions(), "DivisionByZero");
    EXPECT_TRUE(nomDecimalRealDivide(&seven, &zero, &quotient));
    EXPECT_EQ(recorder.takeExpressions(), "DivisionByZero");
  }
}

TEST(FlatFunctions, LogOnceForEachInvalidOperand) {
  Recorder recorder;
  const DskDecimal one = stored("1");
  DskDecimal out{};
  DskDecimal other{};
  double real = 5;
  std::int64_t integer = 5;
  char text[16];
  const auto lines = [&] { return recorder.takeLines().size(); };
  nomDecimalAdd(&kInvalid, &kInvalid, &out);
  EXPECT_EQ(lines(), 2u);
  nomDecimalMultiply(&one, &kInvalid, &out);
  EXPECT_EQ(lines(), 1u);
  nomDecimalIntegerDivide(&kInvalid, &one, &out, &other);
  EXPECT_EQ(lines(), 1u);
  EXPECT_EQ(nomDecimalCompare(&kInvalid, &one), -1);
  EXPECT_EQ(lines(), 1u);
  EXPECT_TRUE(nomDecimalToReal(&kInvalid, &real));
  EXPECT_EQ(real, 0.0);
  EXPECT_EQ(lines(), 1u);
  EXPECT_TRUE(nomDecimalToInt64(&kInvalid, &integer));
  EXPECT_EQ(integer, 0);
  EXPECT_EQ(lines(), 1u);
  EXPECT_TRUE(nomDecimalToString(&kInvalid, text, sizeof text, 2));
  EXPECT_STREQ(text, "0.00");
  EXPECT_EQ(lines(), 1u);
  out = sentinel();
  EXPECT_EQ(checkDskDecimal(kInvalid, 5, 0, out), 4033);
  EXPECT_EQ(showOrUntouched(out), kUntouched);
  EXPECT_EQ(lines(), 1u);
}

TEST(FlatConversions, ToTextRealAndIntegers) {
  char text[12];
  const DskDecimal price = stored("123456789.12");
  EXPECT_TRUE(nomDecimalToString(&price, text, 11, 2));
  EXPECT_STREQ(text, "123456789.");
  EXPECT_TRUE(nomDecimalToString(&price, text, 5, 2));
  EXPECT_STREQ(text, "****");

  double real = 0;
  const DskDecimal eighth = stored("-0.125");
  EXPECT_TRUE(nomDecimalToReal(&eighth, &real));
  EXPECT_EQ(real, -0.125);

  struct {
    const char* text;
    bool fitsSigned, fitsUnsigned;
    std::int64_t asSigned;
    std::uint64_t asUnsigned;
  } const rows[] = {{"-7.9", true, true, -7, 0},
                    {"9223372036854775807", true, true, INT64_MAX, INT64_MAX},
                    {"9223372036854775807.5", false, true, 77, INT64_MAX},
                    {"-9223372036854775808", true, true, INT64_MIN, 0},
                    {"-9223372036854775808.1", false, true, 77, 0},
                    {"18446744073709551615", false, true, 77, UINT64_MAX},
                    {"18446744073709551616", false, false, 77, 77}};
  for (const auto& row : rows) {
    const DskDecimal value = stored(row.text);
    std::int64_t asSigned = 77;
    std::uint64_t asUnsigned = 77;
    EXPECT_EQ(nomDecimalToInt64(&value, &asSigned), row.fitsSigned) << row.text;
    EXPECT_EQ(nomDecimalToUInt64(&value, &asUnsigned), row.fitsUnsigned) << row.text;
    EXPECT_EQ(asSigned, row.asSigned) << row.text;
    EXPECT_EQ(asUnsigned, row.asUnsigned) << row.text;
  }
}

// What a "from" function stored, or that it returned false and left the record.
template <class Function, class... Arguments>
std::string made(Function function, Arguments... arguments) {
  DskDecimal out = sentinel();
  const bool result = function(arguments..., &out);
  return result == (showOrUntouched(out) != kUntouched) ? showOrUntouched(out) : "(liar)";
}

TEST(FlatConversions, FromIntegersRealsAndText) {
  EXPECT_EQ(made(nomDecimalFromInt64, INT64_MIN), "-9223372036854775808");
  EXPECT_EQ(made(nomDecimalFromUInt64, UINT64_MAX), "18446744073709551615");
  EXPECT_EQ(made(nomDecimalFromInteger, INT32_MIN), "-2147483648");

  EXPECT_EQ(made(nomDecimalFromReal, -0.1), "-0.1");
  EXPECT_EQ(made(nomDecimalFromReal, 1e23), "99999999999999991611392");
  EXPECT_EQ(made(nomDecimalFromReal, 100000000000000008388608.0), kUntouched);
  EXPECT_EQ(made(nomDecimalFromReal, 1e50), kUntouched);
  EXPECT_EQ(made(nomDecimalFromReal, 1e150), "0");
  EXPECT_EQ(made(nomDecimalFromReal, -HUGE_VAL), "0");
  EXPECT_EQ(made(nomDecimalFromReal, std::nan("")), "0");
  EXPECT_EQ(made(nomDecimalFromReal, 1e-23), "0.00000000000000000000001");
  EXPECT_EQ(made(nomDecimalFromReal, 5e-24), "0.00000000000000000000001");

  EXPECT_EQ(made(nomDecimalFromString, " -1.50 and more"), "-1.50");
  EXPECT_EQ(made(nomDecimalFromString, "0.123456789012345678901235"), "0.12345678901234567890124");
  EXPECT_EQ(made(nomDecimalFromString, "100000000000000000000000"), kUntouched);
  EXPECT_EQ(made(nomDecimalFromString, std::string(101, '1').c_str()), kUntouched);
}

TEST(FlatFromInt64Scale, KeepsTheValueAndGivesItPlaces) {
  struct {
    std::int64_t value;
    std::int32_t places;
    std::string shown;
  } const rows[] = {{5, 2, "5.00"},
                    {-5, 2, "-5.00"},
                    {7, 0, "7"},
                    {7, -3, "7"},
                    {INT64_MIN, INT32_MIN, "-9223372036854775808"},
                    {5, 23, "5." + zeros(23)},
                    {7, 23, "7." + zeros(22)},  // 7 x 10^23 needs a sixth limb
                    {5, 24, "5." + zeros(23)},
                    {INT64_MAX, 10, "9223372036854775807.0000"},
                    {0, 200, "0." + zeros(23)},
                    {0, INT32_MAX, "0." + zeros(23)},
                    {1, 100, "1." + zeros(23)},
                    {1, 101, kUntouched},
                    {5, 200, kUntouched},
                    {5, INT32_MAX, kUntouched},
                    {-1, 91, "-1." + zeros(23)},
                    {-1, 92, kUntouched},
                    {-5, 92, kUntouched},
                    {-5, 100, kUntouched},
                    {-5, 200, kUntouched},
                    {-5, 256, kUntouched},
                    {-5, INT32_MAX, kUntouched}};
  Recorder recorder;
  for (const auto& row : rows) {
    EXPECT_EQ(made(nomDecimalFromInt64Scale, row.value, row.places), row.shown)
        << row.value << " with " << row.places;
  }
}

TEST(FlatCompare, OrdersValuesNotRecords) {
  struct {
    const char *left, *right;
    int order;
  } const rows[] = {{"2.0", "2", 0},  {"-1", "0", -1},    {"0", "-1", 1},        {"1.5", "1.50", 0},
                    {"0", "0.00", 0}, {"0.1", "0.09", 1}, {"65535", "65536", -1}};
  for (const auto& row : rows) {
    const DskDecimal left = stored(row.left);
    const DskDecimal right = stored(row.right);
    EXPECT_EQ(nomDecimalCompare(&left, &right), row.order) << row.left << " " << row.right;
    EXPECT_EQ(nomDecimalCompare(&right, &left), -row.order) << row.left << " " << row.right;
  }
  const DskDecimal empty{};
  const DskDecimal zero = stored("0");
  EXPECT_EQ(nomDecimalCompare(&empty, &zero), 0);
}

TEST(DecimalKey, HasTheseBytesAndNoneBeyondPrecision) {
  Recorder recorder;  // 10 to the power of 255 is reported
  struct {
    const char* text;
    std::uint8_t precision, scale;
    std::uint32_t keyLength;
    Bytes bytes;  // `precision` of them; for more than 14 the first 14
  } const rows[] = {
      {"12.5", 10, 2, 8, {0x02, 0x02, 0xE2, 0x04, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA}},
      // The fifth byte of the limbs of 99999 lies beyond the 5 that are written.
      {"999.99", 5, 2, 6, {0x04, 0x02, 0x01, 0x00, 0x9F}},
      {"123456.789", 5, 2, 6, {0x04, 0x02, 0x01, 0x00, 0x9F}},
      {"-123456.789", 5, 2, 6, {0x04, 0x02, 0xFE, 0xFF, 0x61}},
      {"9999.96", 5, 1, 6, {0x04, 0x01, 0x01, 0x00, 0xA0}},
      {"1000", 4, 1, 4, {0x02, 0x01, 0x0F, 0x27}},
      {"12.345", 5, 2, 6, {0x02, 0x02, 0xD3, 0x04, 0xAA}},
      {"-12.345", 5, 2, 6, {0x02, 0x02, 0x2D, 0xFB, 0xAA}},
      // Rounding may carry past the declaration, which looks at integer digits alone.
      {"999.999", 5, 2, 6, {0x04, 0x02, 0x01, 0x00, 0xA0}},
      // Without places nothing is taken off the power of ten.
      {"123456", 5, 0, 6, {0x04, 0x00, 0x01, 0x00, 0xA0}},
      {"-123456", 5, 0, 6, {0x04, 0x00, 0xFE, 0xFF, 0x60}},
      {"123456", 5, 255, 6, {0x04, 0x00, 0x01, 0x00, 0xA0}},
      {"1.25", 5, 255, 6, {0x02, 0x02, 0x7D, 0x00, 0xAA}},
      {"5", 1, 0, 4, {0x02}},
      {"5", 0, 0, 4, {}},
      {"5", 14, 0, 10, {0x02, 0, 5, 0, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0, 0}},
      {"1.5", 23, 255, 12, {0x02, 1, 15, 0, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0, 0}},
      {"5",
       23,
       23,
       12,
       {0x0A, 23, 0x2D, 0x15, 0xC7, 0x02, 0x4A, 0xE1, 0x7F, 0xF6, 0xFF, 0xFF, 0, 0}},
      {"5", 255, 0, 110, {0x02, 0, 5, 0, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0, 0}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message()
                 << row.text << " " << int{row.precision} << "/" << int{row.scale});
    std::vector<std::uint8_t> key(row.precision + 4u, 0x5A);
    std::uint32_t length = 77;
    EXPECT_EQ(nomDecimalFromStringMakeKeyCompatible(row.text, row.precision, row.scale, key.data(),
                                                    &length),
              0);
    EXPECT_EQ(length, row.keyLength);
    EXPECT_EQ(Bytes(key.begin(), key.begin() + std::min<int>(row.precision, 14)), row.bytes);
    EXPECT_EQ(Bytes(key.begin() + row.precision, key.end()), Bytes(4, 0x5A));
  }
}

TEST(DecimalKey, LeavesItsOutputsWhenTheValueDoesNotStore) {
  Recorder recorder;
  for (const unsigned precision : {0u, 30u, 100u}) {
    Bytes key(100, 0x5A);
    std::uint32_t length = 77;
    EXPECT_EQ(nomDecimalFromStringMakeKeyCompatible("1000000000000000000000000",
                                                    static_cast<std::uint8_t>(precision), 0,
                                                    key.data(), &length),
              1422);
    EXPECT_EQ(key, Bytes(100, 0x5A));
    EXPECT_EQ(length, 77u);
  }
  EXPECT_EQ(recorder.takeLines().size(), 0u);

  // More places than digits: the exponent wraps in eight bits and is reported.
  Bytes key(16, 0x5A);
  std::uint32_t length = 77;
  EXPECT_EQ(nomDecimalFromStringMakeKeyCompatible("15", 2, 5, key.data(), &length), 0);
  EXPECT_EQ(recorder.takeExpressions(), "power < NUM_ELEMS(values)");
}

TEST(DecimalKey, EqualValuesGiveEqualKeys) {
  for (const char* text : {"1.5", "1.50", "01.500000", " +1.4996"}) {
    Bytes key(10, 0);
    std::uint32_t length = 0;
    EXPECT_EQ(nomDecimalFromStringMakeKeyCompatible(text, 10, 3, key.data(), &length), 0);
    EXPECT_EQ(Bytes(key.begin(), key.begin() + 4), (Bytes{0x02, 0x03, 0xDC, 0x05})) << text;
  }
}

TEST(DecimalKey, RendersFromItsLengthAlone) {
  struct {
    Bytes key;
    std::uint8_t precision;
    const char* text;
  } const rows[] = {{{0x04, 0x02, 0x01, 0x00, 0x9F, 0x86}, 5, "999.99"},
                    // As made in a zeroed buffer: the last byte of the limbs was never written.
                    {{0x04, 0x02, 0x01, 0x00, 0x9F, 0x00}, 5, "656.95"},
                    {{0x02, 0x00, 0xFB, 0xFF}, 1, "-5"},
                    {{0x00, 0x00, 0x00, 0x00}, 1, "0"},
                    {{0x02, 0x02, 0xE2, 0x04, 0xAA, 0xAA, 0xAA, 0xAA}, 10, "12.50"},
                    // A key longer than a record counts with the record's 16 bytes.
                    {{0x02, 0x02, 0xE2, 0x04, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 34, "12.50"},
                    {{0x02, 0x02, 0xE2, 0x04, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 255, "12.50"}};
  for (const auto& row : rows) {
    const std::unique_ptr<std::uint8_t[]> key(new std::uint8_t[row.key.size()]);
    std::copy(row.key.begin(), row.key.end(), key.get());
    char text[40];
    EXPECT_TRUE(nomDecimalToStringKeyCompatible(key.get(), row.precision, text, sizeof text));
    EXPECT_STREQ(text, row.text);
  }
  Recorder recorder;
  const std::uint8_t invalid[4] = {0xC8, 0x02, 0x01, 0x00};
  char text[40];
  EXPECT_TRUE(nomDecimalToStringKeyCompatible(invalid, 1, text, sizeof text));
  EXPECT_STREQ(text, "0");
  EXPECT_EQ(recorder.takeLines().size(), 1u);
}

TEST(CheckDskDecimal, ValidatesAgainstTheDeclaration) {
  struct {
    std::string text;
    std::uint8_t precision, scale;
    const char* shown;  // null: 4033
  } const rows[] = {{"123456", 5, 0, nullptr},
                    {"-123456", 5, 0, nullptr},
                    {"12345.6", 5, 0, "12346"},
                    {"-12345.6", 5, 0, "-12346"},
                    {"12", 5, 2, "12.00"},
                    {"999.999", 5, 2, "1000.00"},
                    {"5", 23, 23, nullptr},
                    // Any scale: digits are removed by the room there is, not by the excess.
                    {"12.345", 5, 255, "12.345"},
                    {"12.3456", 5, 255, "12.3"},
                    {"-12.3456", 5, 255, "-12.3"},
                    {"123.4567", 5, 255, "123.46"},
                    {"0.123456", 5, 255, "0.1"},
                    {"12345.6", 5, 255, "12345.6"},
                    {"12345", 5, 255, "12345"},
                    {"99999.96", 5, 255, "99999.96"},
                    // No declared precision: as many places as integer digits are added.
                    {"12.34", 0, 255, "12.3400"},
                    {"0.34", 0, 255, "0.34"},
                    {"12.5", 0, 0, "13"},
                    {kNines, 0, 255, "99999999999999999999999"},
                    {kNines, 0, 5, nullptr}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message()
                 << row.text << " " << int{row.precision} << "/" << int{row.scale});
    DskDecimal record = stored(row.text.c_str());
    DskDecimal out = sentinel();
    EXPECT_EQ(checkDskDecimal(record, row.precision, row.scale, out), row.shown ? 0 : 4033);
    EXPECT_EQ(showOrUntouched(out), row.shown ? row.shown : kUntouched);
    checkDskDecimal(record, row.precision, row.scale, record);
    EXPECT_EQ(show(record), row.shown ? row.shown : row.text);
  }
}

TEST(CheckDskDecimal, WritesCleanRecords) {
  const DskDecimal stale = {2, 1, {125, 0, 9, 9, 9, 9, 9, 9, 9, 9}, {9, 9}, {9, 9}};
  DskDecimal out = sentinel();
  EXPECT_EQ(checkDskDecimal(stale, 5, 1, out), 0);
  EXPECT_EQ(show(out), "12.5");
  EXPECT_EQ(out.padding[0], 0x5A);
}

}  // namespace
