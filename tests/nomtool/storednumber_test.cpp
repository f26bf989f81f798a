// Which texts are numbers, and what storing makes of them.
#include "storednumber.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace nomtool {
namespace {

// What a text is stored as, with "rounded " before it when that is less than the text says; or the
// status that refuses it.
std::string outcomeOf(const std::string& text) {
  const StoredNumber number = storeNumber(text);
  if (number.status != 0) return "status " + std::to_string(number.status);
  return (number.exact ? "" : "rounded ") + decimalText(number.stored);
}

TEST(StoreNumber, RefusesWhatIsNoNumberAndTellsWhatIsRounded) {
  const std::string zeros75(75, '0');
  const std::pair<std::string, std::string> kRows[] = {
      {"-0.50", "-0.50"},
      {" \t+12.5 ", "12.5"},
      {".5", "0.5"},
      {"5.", "5"},
      {"99999999999999999999999", "99999999999999999999999"},
      {"0.12345678901234567890123", "0.12345678901234567890123"},
      // One place too many, rounded half away from zero.
      {"1.123456789012345678901235", "rounded 1.12345678901234567890124"},
      {"-1.123456789012345678901235", "rounded -1.12345678901234567890124"},
      {"9876543210987654321098.76", "rounded 9876543210987654321098.8"},
      // Places that are zeros may go. Aligning the two sides takes all 100 digits.
      {"5.000000000000000000000000" + zeros75, "5.00000000000000000000000"},
      {"-5.000000000000000000000000" + zeros75, "-5.00000000000000000000000"},
      {"5.0000000000000000000000000" + zeros75, "status 1422"},
      {"100000000000000000000000", "status 1422"},
      {"-99999999999999999999999.9", "status 1422"},
  };
  for (const auto& [text, outcome] : kRows) EXPECT_EQ(outcomeOf(text), outcome) << text;
  for (const std::string text : {"", " ", ".", "-", "+-1", "1 2", "1.2.3", "12abc", "0x10", "1,5",
                                 "1e5", "2012-01-01", "NaN", "1\n"}) {
    EXPECT_EQ(outcomeOf(text), "status 1002") << text;
  }
  EXPECT_EQ(outcomeOf(std::string("1\0", 2)), "status 1002");
}

TEST(OneLine, KeepsUtf8CharactersWhole) {
  std::string text = "\xC3\xA9\n\t", shown = "\xC3\xA9??";
  for (int i = 3; i < 200; ++i) text += "\xC3\xA9";
  for (int i = 3; i < 60; ++i) shown += "\xC3\xA9";
  EXPECT_EQ(oneLine(text), shown + "...");
}

}  // namespace
}  // namespace nomtool
