// Decimals to text and back.
#include "decimalshow.h"

#include <algorithm>
#include <memory>

namespace {

using namespace nomtest;

// The text in a buffer of `size` bytes; complains when a byte beyond it changed or the buffer is
// not what came back. "(nothing)" when not even a NUL was written.
std::string render(const Decimal& value, std::uint32_t size, std::uint32_t places) {
  constexpr std::uint32_t kGuard = 160;
  const std::unique_ptr<char[]> buffer(new char[size + kGuard]);
  std::memset(buffer.get(), 0x5A, size + kGuard);
  if (value.decimalToString(buffer.get(), size, places) != buffer.get()) return "(other buffer)";
  if (std::count(&buffer[size], &buffer[size + kGuard], 0x5A) != kGuard) return "(overrun)";
  if (std::memchr(buffer.get(), 0, size) == nullptr) return size == 0 ? "(nothing)" : "(no end)";
  return buffer.get();
}

TEST(DecimalToString, RoundsAndPads) {
  const auto shown = [](const Row& row) {
    const auto places = static_cast<std::uint32_t>(std::stoul(row[1]));
    return render(dec(row[0]), 200, places);
  };
  // The sign is that of the value before rounding. A work area of 103 characters limits the text.
  expectRows(3, shown, R"(
      1234.5 2 1234.50   1234.5 0 1235   -1234.5 0 -1235   1234.49 0 1234   0 0 0   empty 2 0.00
      7 3 7.000   0.05 1 0.1   -0.005 3 -0.005   0.5 0 1   0.4 0 0   99.995 2 100.00   -0.4 0 -0
      0.999 2 1.00   -0.004 2 -0.00   -0.0 1 0.0   10000 0 10000   100020003 0 100020003
      0.00010002 8 0.00010002   1 100 1.0{100}   10{29}1 0 10{29}1   10{29}1 1 10{29}1.0
      10{100} 0 10{100}   -10{96} 0 -10{96}   0.9{100} 100 0.9{100}   0.9{100} 0 1
      0 101 0.0{101}   0 102 *{199}   7 100 *{199}   10{90} 30 *{199}   1 4294967295 *{199})");
}

TEST(DecimalToString, FitsEverySizeFromNothing) {
  const auto bySize = [](const Row& row) {
    const auto places = static_cast<std::uint32_t>(std::stoul(row[1]));
    const std::string whole = render(dec(row[0]), 200, places);
    std::string all = render(dec(row[0]), 0, places) + render(dec(row[0]), 1, places);
    for (std::uint32_t size = 2; size < 60; ++size) {
      const std::string text = render(dec(row[0]), size, places);
      if (text != whole || size == whole.size() + 1) all += "|" + text;
    }
    return all;
  };
  // From size 2 on; an integer part that is cut would be another number.
  expectRows(3, bySize, R"(
      1235 0 (nothing)|*|**|***|1235   -5 0 (nothing)|*|-5   0 0 (nothing)|0
      12.5 1 (nothing)|*|**|12.|12.5   0 2 (nothing)|*|0.|0.0|0.00
      -0.004 2 (nothing)|*|**|-0.|-0.0|-0.00
      12345.12 2 (nothing)|*|**|***|****|*****|12345.|12345.1|12345.12)");
}

TEST(DecimalFromString, ReadsAsFarAsTheNumberGoes) {
  EXPECT_EQ(showAll({"", "  -0.50", " \t\n\v\f\r12", "\01012", "\01612", "\24012", "12\262", "- 5",
                     "1 2", "00000000 9", "-12345678901234567890 1"}),
            "0 -0.50 12 0 0 0 12 0 1 0 -12345678901234567890");

  // Of the hundred digits that are read, leading zeros count, but a single one before the point.
  // More integer digits saturate, other characters behind them do not; the fraction is cut.
  const auto read = [](const Row& row) { return show(dec(row[0])); };
  expectRows(2, read, R"(
      abc 0   12abc 12   1e5 1   1.50 1.50   +.5 0.5   -.5 -0.5   - 0   +-5 0   . 0   -0 0
      -0.00 0.00   0. 0   5. 5   5.x 5   1.2.3 1.2   1,5 1   007 7   0x10 0   00.5 0.5
      65535 65535   -65536 -65536   -32768 -32768   12345678/ 12345678   1234567:8 1234567
      0.0{37}1 0.0{37}1   9{100} 9{100}   -9{100} -9{100}   9{101} 10{100}   -9{101} -10{96}
      9{100}0{100} 10{100}   9{100}abc 9{100}   9{100}.5 9{100}   -9{100}. -9{100}   0{98}12 12
      0{99}12 10{100}   -0{101} -10{96}   .9{101} 0.9{100}   0.9{101} 0.9{100}
      0.0{99}17 0.0{99}1   00.9{100} 0.9{98}   -1.9{100} -1.9{99})");
}

}  // namespace
