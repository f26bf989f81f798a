// Which texts are numbers, and what storing makes of them.
#include "storednumber.h"

#include <gtest/gtest.h>

#include <string>

namespace nomtool {
namespace {

const std::string kZeros75(75, '0');

TEST(StoreNumber, RefusesWhatIsNoNumberAndTellsWhatIsRounded) {
  constexpr bool kExact = true;
  const struct {
    std::string text;
    int status;
    bool exact;
    const char* stored;
  } cases[] = {
      {"0", 0, kExact, "0"},
      {"-0.50", 0, kExact, "-0.50"},
      {"+7", 0, kExact, "7"},
      {" \t12.5 ", 0, kExact, "12.5"},
      {".5", 0, kExact, "0.5"},
      {"5.", 0, kExact, "5"},
      {"99999999999999999999999", 0, kExact, "99999999999999999999999"},
      {"0.12345678901234567890123", 0, kExact, "0.12345678901234567890123"},
      // One place too many, rounded half away from zero.
      {"1.123456789012345678901235", 0, !kExact, "1.12345678901234567890124"},
      {"-1.123456789012345678901235", 0, !kExact, "-1.12345678901234567890124"},
      {"9876543210987654321098.76", 0, !kExact, "9876543210987654321098.8"},
      // Places that are zeros may go. Aligning the two sides takes all 100 digits.
      {"5.000000000000000000000000" + kZeros75, 0, kExact, "5.00000000000000000000000"},
      {"-5.000000000000000000000000" + kZeros75, 0, kExact, "-5.00000000000000000000000"},
      {"5.0000000000000000000000000" + kZeros75, 1422, false, ""},
      {"100000000000000000000000", 1422, false, ""},
      {"-99999999999999999999999.9", 1422, false, ""},
      {"", 1002, false, ""},
      {" ", 1002, false, ""},
      {".", 1002, false, ""},
      {"-", 1002, false, ""},
      {"+-1", 1002, false, ""},
      {"1 2", 1002, false, ""},
      {"1.2.3", 1002, false, ""},
      {"12abc", 1002, false, ""},
      {"0x10", 1002, false, ""},
      {"1,5", 1002, false, ""},
      {"1e5", 1002, false, ""},
      {"2012-01-01", 1002, false, ""},
      {"NaN", 1002, false, ""},
      {std::string("1\0", 2), 1002, false, ""},
  };
  for (const auto& c : cases) {
    const StoredNumber number = storeNumber(c.text);
    EXPECT_EQ(number.status, c.status) << c.text;
    EXPECT_EQ(number.exact, c.exact) << c.text;
    if (c.status != 0) continue;
    EXPECT_EQ(decimalText(number.stored), c.stored) << c.text;
  }
}

TEST(OneLine, KeepsUtf8CharactersWhole) {
  std::string text = "\xC3\xA9\n\t";
  while (text.size() < 200) text += "\xC3\xA9";
  const std::string line = oneLine(text);
  EXPECT_EQ(line.substr(0, 6), "\xC3\xA9??\xC3\xA9");
  EXPECT_EQ(line.size(), 58 * 2 + 2 + 3u);
  EXPECT_EQ(line.substr(line.size() - 5), "\xC3\xA9...");
}

}  // namespace
}  // namespace nomtool
