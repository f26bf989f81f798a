// The flat functions over stored decimals: what they write, what they leave alone, keys, and the
// check against a declaration.
#include "decimalshow.h"

#include <map>
#include <tuple>

namespace {

using namespace nomtest;

TEST(FlatArithmetic, StoresTheResultOrLeavesItInEitherOperandToo) {
  const std::map<std::string, decltype(&nomDecimalAdd)> kOperations = {{"+", nomDecimalAdd},
                                                                       {"-", nomDecimalSubtract},
                                                                       {"*", nomDecimalMultiply},
                                                                       {":", nomDecimalRealDivide}};
  const auto apply = [&](const Row& row) {
    const auto operation = kOperations.at(row[1]);
    DskDecimal left = stored(row[0]), right = stored(row[2]), leftToo = left;
    const std::string result = outcome([&](auto& out) { return operation(&left, &right, &out); });
    operation(&leftToo, &right, &leftToo);
    operation(&left, &right, &right);
    EXPECT_EQ(show(leftToo), result == "untouched" ? row[0] : result);
    EXPECT_EQ(show(right), result == "untouched" ? row[2] : result);
    return result;
  };
  expectRows(4, apply, R"(
      0.1 + 0.02 0.12   9{23} + 0.5 untouched   1.5 - 1.5 0.0   -9{23} - 1 untouched
      2.5 * 0.2 0.50   10{12} * 10{11} untouched   200000 : 3 66666.6{16}7   0 : 7 0.0{23}
      1 : 0.0{22}1 untouched)");
}

TEST(FlatIntegerDivide, GivesBothPartsAndIsAlwaysTrue) {
  Recorder recorder;
  const auto divide = [](const Row& row) {
    DskDecimal dividend = stored(row[0]), divisor = stored(row[1]);
    DskDecimal quotient = sentinel(), remainder = sentinel();
    EXPECT_TRUE(nomDecimalIntegerDivide(&dividend, &divisor, &quotient, &remainder));
    EXPECT_TRUE(nomDecimalIntegerDivide(&dividend, &divisor, &dividend, &divisor));
    EXPECT_EQ(show(divisor), show(remainder));
    return show(quotient) + "," + show(remainder);
  };
  expectRows(3, divide, R"(
      -7.5 2 -3,-1.5   5 7.00 0,5.00   9{23} 0.0{22}1 untouched,0.0{23}   7 0.0 7.0,7.0)");
  EXPECT_EQ(recorder.takeExpressions(), "DivisionByZero");
}

template <class Function, class... Arguments>
std::string made(Function function, Arguments... arguments) {
  return outcome([&](DskDecimal& out) { return function(arguments..., &out); });
}

TEST(FlatConversions, PassOnValuesAndRefusals) {
  const DskDecimal price = stored("-123456789.12"), large = stored("18446744073709551616");
  char text[12];
  double real = 0;
  std::int64_t asSigned = 0;
  std::uint64_t asUnsigned = 77;
  EXPECT_TRUE(nomDecimalToString(&price, text, 12, 2) && nomDecimalToReal(&price, &real));
  EXPECT_TRUE(nomDecimalToInt64(&price, &asSigned) && nomDecimalToUInt64(&price, &asUnsigned));
  EXPECT_FALSE(nomDecimalToInt64(&large, &asSigned) || nomDecimalToUInt64(&large, &asUnsigned));
  EXPECT_EQ(std::tuple(std::string(text), real, asSigned, asUnsigned),
            std::tuple("-123456789.", -123456789.12, -123456789, 0u));
  EXPECT_TRUE(nomDecimalCompare(&large, &price) == 1 && nomDecimalCompare(&price, &price) == 0);
  EXPECT_EQ(made(nomDecimalFromInt64, INT64_MIN), "-9223372036854775808");
  EXPECT_EQ(made(nomDecimalFromUInt64, UINT64_MAX), "18446744073709551615");
  EXPECT_EQ(made(nomDecimalFromInteger, INT32_MIN), "-2147483648");
  EXPECT_EQ(made(nomDecimalFromReal, 1.00000000000000008e23), "untouched");
  EXPECT_EQ(made(nomDecimalFromString, " -1.50 and more"), "-1.50");
}

TEST(FlatFromInt64Scale, KeepsTheValueAndGivesItPlaces) {
  Recorder recorder;
  const auto make = [](const Row& row) {
    return made(nomDecimalFromInt64Scale, std::stoll(row[0]), std::stoi(row[1]));
  };
  expectRows(3, make, R"(
      -5 2 -5.00   7 -3 7   7 23 7.0{22}   5 24 5.0{23}   0 200 0.0{23}   1 100 1.0{23}
      1 101 untouched   -1 91 -1.0{23}   -1 92 untouched   0 2147483647 0.0{23}
      -5 2147483647 untouched   9223372036854775807 10 9223372036854775807.0000)");
}

TEST(DecimalKey, HasTheseBytesAndNoneBeyondPrecision) {
  Recorder recorder;  // 10 to the power of 255 is reported
  const auto keyOf = [](const Row& row) {
    std::vector<std::uint8_t> key(byteOf(row[1]) + 4u, 0x5A);
    std::vector<std::uint8_t> expected = bytesOf(row[3]);
    if (row[4] != "untouched") expected.resize(byteOf(row[1]));
    expected.resize(key.size(), 0x5A);
    std::uint32_t length = 77;
    const int status = nomDecimalFromStringMakeKeyCompatible(row[0].c_str(), byteOf(row[1]),
                                                             byteOf(row[2]), key.data(), &length);
    EXPECT_EQ(testing::PrintToString(key), testing::PrintToString(expected));
    EXPECT_EQ(status, length == 77 ? 1422 : 0);
    return length == 77 ? "untouched" : std::to_string(length);
  };
  // Precision, scale, the bytes that are written, and the length of the key. The limbs of 999.99
  // have a byte more. Rounding may carry past the declaration, which looks at integer digits alone.
  // Without places nothing is taken off the power of ten. A bound that cannot be given 99 places is
  // no bound that fits.
  expectRows(5, keyOf, R"(
      12.5 10 2 0202E204A{12} 8   -123456.789 5 2 0402FEFF61 6   9999.96 5 1 04010100A0 6
      -12.345 5 2 02022DFBAA 6   5 0 0 - 4   -123456 5 0 0400FEFF60 6   123456 5 255 04000100A0 6
      15 2 5 0405 4   0.1{99} 5 0 04000100A0 6   5 14 0 02000500A{16}0000 10
      10{24} 30 0 - untouched   5 255 0 02000500A{16} 110   5 23 23 0A172D15C7024AE17FF6FFFF 12)");
}

TEST(DecimalKey, RendersFromItsLengthAlone) {
  Recorder recorder;
  const auto render = [](const Row& row) {
    std::vector<std::uint8_t> key = bytesOf(row[0]);
    key.shrink_to_fit();
    char text[40];
    EXPECT_TRUE(nomDecimalToStringKeyCompatible(key.data(), byteOf(row[1]), text, sizeof text));
    return std::string(text);
  };
  // The second one comes from a zeroed buffer: the last byte of the limbs was never written. A key
  // longer than a record counts with the record's 16 bytes.
  expectRows(3, render, R"(
      040201009F86 5 999.99   040201009F00 5 656.95   00000000 1 0   C8020100 1 0
      0202E2040{24} 34 12.50   0202E2040{24} 255 12.50)");
  EXPECT_EQ(recorder.takeLines().size(), 1u);
}

TEST(CheckDskDecimal, ValidatesAgainstTheDeclaration) {
  const auto check = [](const Row& row) {
    DskDecimal record = stored(row[0]);
    record.reserved[0] = 9;
    const auto checkInto = [&](DskDecimal& out) {
      const int status = checkDskDecimal(record, byteOf(row[1]), byteOf(row[2]), out);
      EXPECT_TRUE(status == 0 || status == 4033) << status;
      return status == 0;
    };
    const std::string result = outcome(checkInto);
    checkInto(record);
    EXPECT_EQ(show(record), result == "untouched" ? row[0] + "(dirty)" : result);
    return result;
  };
  // Of any scale (255), digits are removed by the room there is, not by the excess; without a
  // declared precision as many places as integer digits are added.
  expectRows(4, check, R"(
      -123456 5 0 untouched   -12345.6 5 0 -12346   999.999 5 2 1000.00   5 23 23 untouched
      12.3456 5 255 12.3   12.345 5 255 12.345   12345.6 5 255 12345.6   12.5 0 0 13
      12.34 0 255 12.3400   9{23} 0 5 untouched)");
}

}  // namespace
