// Decimals to text and back.
#include "decimalshow.h"
#include "recorder.h"
#include "sys/decimals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

using nomtest::dec;
using nomtest::show;
using nomtest::zeros;

const std::string kMax = "1" + zeros(100);
const std::string kMin = "-1" + zeros(96);

// The text in a buffer of `size` bytes; complains when a byte beyond it changed or the buffer is
// not what came back. "(nothing)" when not even a NUL was written.
std::string render(const Decimal& value, std::uint32_t size, std::uint32_t places) {
  constexpr std::size_t kGuard = 160;
  const std::unique_ptr<char[]> buffer(new char[size + kGuard]);
  std::memset(buffer.get(), 0x5A, size + kGuard);
  if (value.decimalToString(buffer.get(), size, places) != buffer.get()) return "(other buffer)";
  for (std::size_t i = 0; i < kGuard; ++i) {
    if (buffer[size + i] != 0x5A) return "(overrun)";
  }
  const void* end = std::memchr(buffer.get(), 0, size);
  if (end == nullptr) return size == 0 ? "(nothing)" : "(no end)";
  return buffer.get();
}

TEST(DecimalToString, RoundsAndPads) {
  struct {
    std::string text;
    std::uint32_t places;
    std::string shown;
  } const rows[] = {{"1234.5", 2, "1234.50"},
                    {"1234.5", 0, "1235"},
                    {"-1234.5", 0, "-1235"},
                    {"1234.49", 0, "1234"},
                    {"0", 0, "0"},
                    {"0", 2, "0.00"},
                    {"7", 3, "7.000"},
                    {"0.05", 1, "0.1"},
                    {"0.005", 3, "0.005"},
                    {"-0.005", 3, "-0.005"},
                    {"0.5", 0, "1"},
                    {"0.4", 0, "0"},
                    {"99.995", 2, "100.00"},
                    {"0.999", 2, "1.00"},
                    // The sign is that of the value before rounding.
                    {"-0.004", 2, "-0.00"},
                    {"-0.4", 0, "-0"},
                    {"-0.0", 1, "0.0"},
                    // Groups of four digits, the leading one without zeros.
                    {"9999", 0, "9999"},
                    {"10000", 0, "10000"},
                    {"100020003", 0, "100020003"},
                    {"1000000000000000000000000000001", 0, "1000000000000000000000000000001"},
                    {"1.0000", 4, "1.0000"},
                    {"0.00010002", 8, "0.00010002"},
                    {"65536", 0, "65536"},
                    {"-18446744073709551616", 1, "-18446744073709551616.0"},
                    {kMax, 0, kMax},
                    {kMin, 0, kMin},
                    {"1", 100, "1." + zeros(100)},
                    {"0." + std::string(100, '9'), 100, "0." + std::string(100, '9')},
                    {"0." + std::string(100, '9'), 0, "1"}};
  for (const auto& row : rows) {
    EXPECT_EQ(render(dec(row.text), 200, row.places), row.shown) << row.text << " " << row.places;
  }
  EXPECT_EQ(render(Decimal(), 200, 2), "0.00");
}

TEST(DecimalToString, FitsEverySizeFromNothing) {
  struct {
    const char* text;
    std::uint32_t places;
    std::vector<const char*> bySize;  // the last one holds for larger sizes too
  } const rows[] = {{"1235", 0, {"(nothing)", "", "*", "**", "***", "1235"}},
                    {"-5", 0, {"(nothing)", "", "*", "-5"}},
                    {"0", 0, {"(nothing)", "", "0"}},
                    {"0", 2, {"(nothing)", "", "*", "0.", "0.0", "0.00"}},
                    {"-0.004", 2, {"(nothing)", "", "*", "**", "-0.", "-0.0", "-0.00"}},
                    {"12.5", 1, {"(nothing)", "", "*", "**", "12.", "12.5"}},
                    {"1", 4, {"(nothing)", "", "*", "**", "***", "1.00", "1.000", "1.0000"}},
                    {"123456789.12",
                     2,
                     {"(nothing)", "", "*", "**", "***", "****", "*****", "******", "*******",
                      "********", "*********", "123456789.", "123456789.1", "123456789.12"}}};
  for (const auto& row : rows) {
    for (std::uint32_t size = 0; size < row.bySize.size() + 3; ++size) {
      const std::size_t index = std::min<std::size_t>(size, row.bySize.size() - 1);
      EXPECT_EQ(render(dec(row.text), size, row.places), row.bySize[index])
          << row.text << " with " << row.places << " in " << size;
    }
  }
}

TEST(DecimalToString, StarsWhatNoBufferCanTake) {
  nomtest::Recorder recorder;
  EXPECT_EQ(render(Decimal(1), 8, 0xFFFFFFFF), "*******");
  EXPECT_EQ(render(Decimal(1), 8, 0xFFFFFFFE), "*******");
  EXPECT_EQ(render(Decimal(1), 0, 0xFFFFFFFF), "(nothing)");
  // More digits than the limbs hold, and more text than the work area of 103 characters.
  EXPECT_EQ(render(dec("1" + zeros(90)), 150, 30), std::string(149, '*'));
  EXPECT_EQ(render(Decimal(7), 150, 100), std::string(149, '*'));
  EXPECT_EQ(render(Decimal(0), 200, 150), std::string(199, '*'));
  EXPECT_EQ(recorder.takeExpressions(), "");

  // Places beyond the powers of ten are removed all the same.
  Decimal tiny(-7);
  tiny.setScaleFactor(130);
  EXPECT_EQ(render(tiny, 20, 2), "-0.00");
  EXPECT_EQ(recorder.takeExpressions(), "power < NUM_ELEMS(values)");
}

TEST(DecimalFromString, ReadsAsFarAsTheNumberGoes) {
  struct {
    std::string text;
    std::string shown;
  } const rows[] = {
      {"", "0"},
      {"abc", "0"},
      {"12abc", "12"},
      {"1e5", "1"},
      {"1.50", "1.50"},
      {"  -0.50", "-0.50"},
      {" \t\n\v\f\r12", "12"},
      {"\x08"
       "12",
       "0"},
      {"\x0E"
       "12",
       "0"},
      {"\xA0"
       "12",
       "0"},
      {"12\xB2", "12"},
      {"+.5", "0.5"},
      {"-.5", "-0.5"},
      {"-", "0"},
      {"+-5", "0"},
      {"- 5", "0"},
      {"-0", "0"},
      {"-0.00", "0.00"},
      {".", "0"},
      {"0.", "0"},
      {"5.", "5"},
      {"5.x", "5"},
      {"1.2.3", "1.2"},
      {"1,5", "1"},
      {"1 2", "1"},
      {"007", "7"},
      {"00.5", "0.5"},
      {"0x10", "0"},
      {"65535", "65535"},
      {"-65536", "-65536"},
      {"-32768", "-32768"},
      {"0.00000000000000000000000000000000000001", "0.00000000000000000000000000000000000001"}};
  for (const auto& row : rows) EXPECT_EQ(show(dec(row.text)), row.shown) << row.text;
}

TEST(DecimalFromString, ReadsAHundredDigits) {
  const std::string nines100(100, '9');
  struct {
    std::string text;
    std::string shown;
    const char* note;
  } const rows[] = {{nines100, nines100, "all of them integer digits"},
                    {"-" + nines100, "-" + nines100, ""},
                    {nines100 + "9", kMax, "one more saturates"},
                    {"-" + nines100 + "9", kMin, ""},
                    {nines100 + zeros(100), kMax, ""},
                    {nines100 + "abc", nines100, "but other characters do not"},
                    {nines100 + ".5", nines100, "no fraction digit is left"},
                    {"-" + nines100 + ".", "-" + nines100, ""},
                    {zeros(98) + "12", "12", "leading zeros count"},
                    {zeros(99) + "12", kMax, ""},
                    {"-" + zeros(101), kMin, ""},
                    {"0." + nines100, "0." + nines100, "a zero before the point does not"},
                    {"0." + nines100 + "9", "0." + nines100, "the fraction is cut"},
                    {"0." + zeros(99) + "17", "0." + zeros(99) + "1", ""},
                    {"00." + nines100, "0." + std::string(98, '9'), "two zeros do"},
                    {"-1." + nines100, "-1." + std::string(99, '9'), ""},
                    {"." + nines100 + "9", "0." + nines100, ""}};
  for (const auto& row : rows) EXPECT_EQ(show(dec(row.text)), row.shown) << row.text << row.note;
}

TEST(DecimalText, ParsingInvertsRendering) {
  for (const char* text :
       {"0", "0.00", "-0.01", "12.50", "-65536.65536", "99999999999999999999999",
        "0.00000000000000000000001", "-340282366920938463463374607431768211456.000000"}) {
    const Decimal value = dec(text);
    const std::string rendered = render(value, 110, value.getScaleFactor());
    EXPECT_EQ(rendered, text);
    EXPECT_EQ(show(dec(rendered)), text);
  }
}

}  // namespace
