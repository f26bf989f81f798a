// Conversions of decimals: the stored form, reals, integers, OLE parts, 112-bit numbers, text.
#include "decimalshow.h"
#include "nomos/testhooks.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace {

using namespace nomtest;

// A text, or the bytes of a stored record behind a '#'.
Decimal read(const std::string& text) {
  return text[0] == '#' ? Decimal(recordOf(text.substr(1))) : dec(text);
}

TEST(DskDecimal, HasTheseBytes) {
  const auto matches = [](const Row& row) {
    const DskDecimal expected = recordOf(row[1] + "00005A5A");
    DskDecimal out = sentinel();
    EXPECT_TRUE(dec(row[0]).decimalToDskDecimal(out, 255));
    return std::memcmp(&out, &expected, sizeof out) == 0 ? "ok" : show(out);
  };
  // The limbs, AA up to offset 11, the reserved 00 00, and the old padding.
  expectRows(3, matches, R"(
      -1234.56 0402FEFFC01DA{12} ok   5 02000500A{16} ok   65536.5 04010A000500A{12} ok
      empty 0000A{20} ok   -9{23} 0A00D2EA38FDB51E80090100 ok)");
}

TEST(DskDecimal, StoresWithinTheBoundsAndRoundsPlacesAway) {
  const auto store = [](const Row& row) {
    return outcome(
        [&](auto& out) { return read(row[0]).decimalToDskDecimal(out, byteOf(row[1])); });
  };
  Recorder recorder;
  // A record is stored as it was loaded. Bytes limit, not digits: 2^79 is 604462909807314587353088.
  // Places go by 1, then 2, then 3, each time rounded; a step of 2 from 1 place fails.
  expectRows(3, store, R"(
      12.5 0 13   -12.45 1 -12.5   12.5 3 12.500   1.5 30 1.50{22}   9{23} 5 untouched
      -1.123456789012345678901235 255 -1.12345678901234567890124   -9{23} 255 -9{23}
      9{23}.4 255 9{23}   10{23} 255 untouched   604462909807314587353087 255 untouched
      -60446290980731458735308.8 255 -60446290980731458735308.8   70{22}.55 255 untouched
      12345.12345678901234567890123 255 12345.12345678901234568   1 250 untouched
      #FFFF 255 untouched   #040100000500 255 0.5(redundant)   #0E010{24}0500 255 1)");
}

TEST(DskDecimal, LoadsWhatTheHeaderAllows) {
  Recorder recorder;
  const auto load = [&](const Row& row) {
    const auto atBlockEnd = std::make_unique<DskDecimal>(recordOf(row[0]));
    const Decimal value(*atBlockEnd);
    for (const auto& [level, line] : recorder.takeLines()) {
      EXPECT_EQ(level, NosLogLevel::Error);
      return line;
    }
    return show(value);
  };
  // Up to 21 value bytes count; the record has 14 of them, the others are 0. More of them, or more
  // than 23 places, give a zero that is not valid, and a log line.
  expectRows(2, load, R"(
      001805 0   02170700 0.0{22}7   0400FFFFFEFF -2(redundant)   0300050001 5   010005 0(empty)
      0A000100000000000{8} 18446744073709551616   0C0000010{16}0200 309485009821345068724781058
      1501010{26} 2230074519853062314153571827264836150598041.6)");
  const std::string log = "attempt to convert an invalid (uninitialised?) DskDecimal to a Decimal ";
  EXPECT_EQ(load({"02180700"}), log + "(precision=2, scaleFactor=24)");
  EXPECT_EQ(load({"1600"}), log + "(precision=22, scaleFactor=0)");
  const DskDecimal invalid = recordOf("1600"), one = stored("1");
  DskDecimal out;
  EXPECT_TRUE(nomDecimalAdd(&invalid, &one, &out) && show(out) == "1");
  EXPECT_EQ(nomDecimalCompare(&invalid, &one), -1);
  EXPECT_EQ(checkDskDecimal(invalid, 5, 0, out), 4033);
}

TEST(DecimalFromReal, KeepsTheDigitsOfTheShortestFixedText) {
  const auto read = [](const Row& row) { return show(std::strtod(row[0].c_str(), nullptr)); };
  // Of 101 digits or more the text constructor takes none, of 102 characters a hundred places.
  expectRows(2, read, R"(
      -0 0   0.1 0.1   -7.25 -7.25   100 100   -inf 0   nan 0   1e100 10{100}   -1e100 -10{96}
      1e101 0   5e-324 0   -1e-100 -0.0{99}1   1e-101 0   1e23 99999999999999991611392
      8.673617379884035e-19 0.0000000000000000008673617379884035)");
}

TEST(DecimalToReal, GathersLimbsAndDividesOnce) {
  Recorder recorder;
  const auto isEqual = [](const Row& row) {
    return dec(row[0]).getNumericValue() == std::strtod(row[1].c_str(), nullptr) ? "=" : "!=";
  };
  // The table of reals multiplies by 10.0 step by step: its 10^23 is the real above 1e23.
  expectRows(3, isEqual, R"(
      0 0 =   -0.1 -0.1 =   9{23} 1e23 =   10{100} 1e100 =   0.0{22}1 1.0000000000000001e-23 =
      18446744073709553665 18446744073709555712 =)");
  EXPECT_LT(Decimal(bytesOf("01FF01").data(), 3).getNumericValue(), 1e-99);
  EXPECT_EQ(recorder.takeExpressions(), "power < NUM_ELEMS(values)");
}

TEST(DecimalFromHighPrecision, JoinsWordsOf28Bits) {
  const HighPrecisionNumber rows[] = {{0, 0, {1, 2, 3, 4}},
                                      {-3, -32768, {0, 0, 0, 125}},
                                      {0, 0, {0, 0, 1, 0xFFFFFFFF}},
                                      {258, 0, {0, 0, 0, 125}}};
  Recorder recorder;
  EXPECT_EQ(showAll({&rows[0], &rows[1], &rows[2], &rows[3]}),
            "19342813257949255676461060 -125 4563402751 1.25");
  EXPECT_EQ(recorder.takeExpressions(), "value == static_cast<T2>(static_cast<T1>(value))");
}

TEST(DecimalToOle, GivesSignAnd96Bits) {
  const auto parts = [](const Row& row) {
    Recorder recorder;
    std::uint8_t scale, sign;
    NomULong high, middle, low;
    dec(row[0]).decimalToOLEDecimal(&scale, &sign, &high, &middle, &low);
    std::ostringstream all;
    all << int{scale} << "," << int{sign} << "," << high << "," << middle << "," << low;
    const std::string limit = "sizeof tmp._value[ 0 ] * tmp._length < sizeof(UInt32) * 3";
    return all.str() + (recorder.takeExpressions() == limit ? "!" : "");
  };
  // Six limbs and more are reported ('!'); the low six are given.
  expectRows(2, parts, R"(
      -12.5 1,128,0,0,125   -9{23} 0,128,5421,46653770,4135583743
      79228162514264337593543950335 0,0,4294967295,4294967295,4294967295!
      -10{30}.7 1,128,935206946,3230747430,2147483655!)");
}

template <class T>
std::string extract(const std::string& text, bool (Decimal::*get)(T&) const) {
  T out = 77;
  const bool fits = (read(text).*get)(out);
  return (fits ? std::to_string(out) : out == 77 ? "no" : "touched") + ",";
}

TEST(DecimalToInteger, TestsTheBoundsWithTheFraction) {
  const auto extractAll = [](const Row& row) {
    return extract(row[0], &Decimal::getInt32Value) + extract(row[0], &Decimal::getUInt32Value) +
           extract<std::int64_t>(row[0], &Decimal::getInt64Value) +
           extract<std::uint64_t>(row[0], &Decimal::getUInt64Value);
  };
  // As 32 bits, signed and not, and as 64. Neither places that no bound could be given nor
  // redundant limbs mislead.
  expectRows(2, extractAll, R"(
      -7.9 -7,0,-7,0,   0.1{99} 0,0,0,0,   10{100} no,no,no,no,   -10{20}.0{72} no,0,no,0,
      -2147483648 -2147483648,0,-2147483648,0,   -2147483648.5 no,0,-2147483648,0,
      2147483647.00 2147483647,2147483647,2147483647,2147483647,
      4294967295 no,4294967295,4294967295,4294967295,   -9223372036854775808.1 no,0,no,0,
      9223372036854775807.1 no,no,no,9223372036854775807,   18446744073709551615.5 no,no,no,no,
      -9223372036854775808 no,0,-9223372036854775808,0,   #0A000{16}0500 5,5,5,5,
      18446744073709551615 no,no,no,18446744073709551615,
      2147483647.0{82}1 no,2147483647,2147483647,2147483647,)");
}

TEST(DecimalToInteger, WithoutRangeTestKeepsTheLow64BitsOfTheIntegerPartOrOfTheLimbs) {
  EXPECT_EQ(dec("-7.9").getInt64Value(), -7);
  EXPECT_EQ(dec("-7.9").getUInt64Value(), 65536u - 79);
  EXPECT_EQ(dec("-9223372036854775809").getInt64Value(), INT64_MAX);
  EXPECT_EQ(dec("-18446744073709551621").getUInt64Value(), 0xFFFFFFFFFFFFFFFB);
}

// The text in a buffer of `size` bytes; complains when a byte beyond it changed or the buffer is
// not what came back. "(nothing)" when not even a NUL was written.
std::string render(const Row& row, std::uint32_t size) {
  constexpr std::uint32_t kGuard = 160;
  const std::unique_ptr<char[]> buffer(new char[size + kGuard]);
  std::memset(buffer.get(), 0x5A, size + kGuard);
  const auto places = static_cast<std::uint32_t>(std::stoul(row[1]));
  const char* text = dec(row[0]).decimalToString(buffer.get(), size, places);
  if (text != buffer.get()) return "(other buffer)";
  if (std::count(&buffer[size], &buffer[size + kGuard], 0x5A) != kGuard) return "(overrun)";
  if (std::memchr(text, 0, size) == nullptr) return size == 0 ? "(nothing)" : "(no end)";
  return text;
}

TEST(DecimalToString, RoundsAndPads) {
  const auto shown = [](const Row& row) { return render(row, 200); };
  // The sign is that of the value before rounding. A work area of 103 characters limits the text.
  expectRows(3, shown, R"(
      1234.5 2 1234.50   -1234.5 0 -1235   1234.49 0 1234   0 0 0   empty 2 0.00   -0.4 0 -0
      -0.005 3 -0.005   99.995 2 100.00   -0.004 2 -0.00   0.00010002 8 0.00010002
      100020003 0 100020003   10{29}1 0 10{29}1   10{29}1 1 10{29}1.0   -10{96} 0 -10{96}
      0.9{100} 100 0.9{100}   0.9{100} 0 1   0 101 0.0{101}   0 102 *{199}   7 100 *{199}
      10{90} 30 *{199}   1 4294967295 *{199})");
}

// Redundant limbs do not show: five limbs are too many for any of these values.
TEST(DecimalToString, ShowsTheValueNotItsLimbs) {
  const auto shown = [](const Row& row) {
    char text[64];
    const Decimal value(recordOf(row[0]));
    return std::string(value.decimalToString(text, sizeof text, value.getScaleFactor()));
  };
  expectRows(2, shown, R"(
      0A0200000000000000000500 0.05   0A03FFFFFFFFFFFFFFFFFFFF -0.001
      0A000000000000000000EFBE 48879   0A080000000000000000EFBE 0.00048879)");
}

TEST(DecimalToString, FitsEverySizeFromNothing) {
  const auto bySize = [](const Row& row) {
    const std::string whole = render(row, 200);
    std::string all = render(row, 0) + render(row, 1);
    for (std::uint32_t size = 2; size < 60; ++size) {
      const std::string text = render(row, size);
      if (text != whole || size == whole.size() + 1) all += "|" + text;
    }
    return all;
  };
  // From size 2 on; an integer part that is cut would be another number.
  expectRows(3, bySize, R"(
      -5 0 (nothing)|*|-5   0 0 (nothing)|0   -0.004 2 (nothing)|*|**|-0.|-0.0|-0.00
      12345.12 2 (nothing)|*|**|***|****|*****|12345.|12345.1|12345.12)");
}

TEST(DecimalToString, WritesNothingBehindTheBuffer) {
  const std::string text = "-259614842926741381426524816.4610047";  // 7 limbs hold no more
  const Decimal value = dec(text);
  for (std::uint32_t size = 1; size <= 60; ++size) {
    std::string area(80, 'Z');
    value.decimalToString(area.data(), size, 7);
    EXPECT_EQ(area.substr(size), std::string(80 - size, 'Z')) << size;
    EXPECT_EQ(area.compare(0, text.size() + 1, text + '\0') == 0, size > text.size()) << size;
  }
}

TEST(DecimalFromString, ReadsAsFarAsTheNumberGoes) {
  EXPECT_EQ(showAll({"", "  -0.50", " \t\n\v\f\r12", "\01012", "\01612", "12\262", "- 5", "1 2",
                     "00000000 9", "-12345678901234567890 1", "12\3515", "1\302\240234",
                     "\342\202\2545"}),
            "0 -0.50 12 0 0 12 0 1 0 -12345678901234567890 12 1 0");

  // Of the hundred digits that are read, leading zeros count, but a single one before the point.
  // More integer digits saturate, other characters behind them do not; the fraction is cut.
  const auto read = [](const Row& row) { return show(dec(row[0])); };
  expectRows(2, read, R"(
      abc 0   12abc 12   1e5 1   +.5 0.5   +-5 0   . 0   -0.00 0.00   5. 5   1.2.3 1.2   1,5 1
      007 7   00.5 0.5   12345678/ 12345678   1234567:8 1234567   9{100} 9{100}   9{101} 10{100}
      -9{101} -10{96}   9{100}abc 9{100}   -9{100}. -9{100}   0{98}12 12   -0{101} -10{96}
      .9{101} 0.9{100}   0.9{101} 0.9{100}   00.9{100} 0.9{98}   -1.9{100} -1.9{99})");
}

// Wherever the text lies, what follows it does not count, and right before the end of a page it is
// not even read.
TEST(DecimalFromString, EndsAtTheNulWhateverFollows) {
  constexpr std::size_t kPage = 4096;
  alignas(kPage) static char pages[2 * kPage];
  char* const guarded = nosGuardedPage();
  ASSERT_NE(guarded, nullptr);
  for (const std::string text :
       {"7", "-12.5", "1234567", "12345678", "-123456789012345.6789", "123456789012345.1234567",
        "1234567890123456.4", "-12345678901234567890123.1234567", "1.12345678",
        "0.1234567890123456", "123456789012345678901234.5", "-12345678901234567890123"}) {
    for (std::size_t start = kPage - 64; start <= kPage; ++start) {
      for (const char filling : {'9', '.', '\xB0', '\xBA', '\xFF'}) {
        std::memset(pages, filling, sizeof pages);
        std::memcpy(pages + start, text.c_str(), text.size() + 1);
        ASSERT_EQ(show(Decimal(pages + start)), text) << start;
      }
      if (start + text.size() >= kPage) continue;
      std::memset(guarded, '9', kPage);
      std::memcpy(guarded + start, text.c_str(), text.size() + 1);
      ASSERT_EQ(show(Decimal(guarded + start)), text) << start;
    }
  }
}

}  // namespace
