// Byte counts as text, digits, and lines.

#include "sys/messages.h"
#include "sys/textutil.h"

#include "recorder.h"
#include "rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

namespace {

constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();

// Signs of the warnings stand behind the value: d too many digits, p a point, m an
// unknown modifier.
TEST(StringToUInteger64, ReadsNumberFractionAndSuffix) {
  nomtest::Recorder recorder;
  const auto read = [&](const nomtest::Row& row) {
    std::uint64_t value = 99;
    const int status = stringToUInteger64(row[0].c_str(), value);
    std::string result = std::to_string(value);
    for (const auto& [level, line] : recorder.takeLines()) {
      for (const std::string ending : {" truncated - too many digits", " contains decimal point",
                                       " contains an unknown suffix modifier"}) {
        if (line == "Warning: value " + row[0] + ending) result += ending[ending.rfind(' ') + 1];
      }
    }
    const bool isClean = result.find_first_of("dpm") == std::string::npos;
    EXPECT_EQ(status, isClean ? 0 : kInvalidParameterValue) << row[0];
    return result;
  };
  nomtest::expectRows(2, read,
                      "10K 10240  10k 10240  7 7  7B 7  7b 7  +7Mx 7340032  3g 3221225472 "
                      "3T 3298534883328  20P 22517998136852480  16383P 18445618173802708992 "
                      "16384P 18446744073709551615  20000P 18446744073709551615 "
                      "18446744073709551616 18446744073709551615d "
                      "18446744073709551615 18446744073709551615  -1 18446744073709551615 "
                      "9{20}K 18446744073709551615d "
                      "18446744073709551616.5 18446744073709551615dp "
                      "1.5M 1048576p  5. 5p  1.x 1pm  1.2.3 1pm  5X 5m  P 0  .5 0p  abc 0m");
  EXPECT_EQ(read({" 7 "}), "7m");
  EXPECT_EQ(read({""}), "0");
}

TEST(UInteger64ToMetricString, DividesWhileNothingRemains) {
  const auto write = [](const nomtest::Row& row) {
    std::vector<char> buffer;
    for (std::size_t size = 1; size < 24; ++size) {
      buffer.assign(size, 'x');
      uInteger64ToMetricString(std::stoull(row[0]), buffer.data(),
                               static_cast<std::uint32_t>(size));
      EXPECT_EQ(row[1].substr(0, size - 1), buffer.data());
    }
    return std::string(buffer.data());
  };
  nomtest::expectRows(2, write,
                      "0 0  1024 1K  1536 1536  3145728 3M  1152921504606846976 1024P "
                      "18446744073709551615 18446744073709551615 "
                      "18446744073709550592 18014398509481983K");
  uInteger64ToMetricString(0, nullptr, 0);
}

// The logarithm of the nearest double rounds up to the next integer from the numbers of the list
// on; they are computed with 60 digits by Python's decimal.
TEST(GetDigitsIn, CountsAsTheLogarithmOfADouble) {
  const auto expectDigits = [](std::uint64_t value, std::size_t digits) {
    EXPECT_EQ(getDigitsIn(value), digits) << value;
    if (value == 0 || value > kLargest >> 1) return;
    EXPECT_EQ(getDigitsIn(-static_cast<std::int64_t>(value)), digits + 1) << value;
    if (value > 0x7FFFFFFF) return;
    EXPECT_EQ(getDigitsIn(static_cast<std::uint32_t>(value)), digits) << value;
    EXPECT_EQ(getDigitsIn(-static_cast<std::int32_t>(value)), digits + 1) << value;
  };
  for (unsigned bit = 0; bit < 64; ++bit) {
    const std::uint64_t value = std::uint64_t{1} << bit;
    expectDigits(value, std::to_string(value).size());
  }
  std::uint64_t power = 1;
  for (std::size_t exponent = 0; exponent < 20; ++exponent, power *= 10) {
    expectDigits(power, exponent + 1);
    expectDigits(power + 1, exponent + 1);
    expectDigits(power - 1, exponent == 0 ? 1 : exponent < 15 ? exponent : exponent + 1);
  }
  std::size_t digits = 16;
  for (const std::uint64_t first : {999999999999998u, 9999999999999979u, 99999999999999593u,
                                    999999999999995969u, 9999999999999960065u}) {
    expectDigits(first - 1, digits - 1);
    expectDigits(first, digits++);
  }
  EXPECT_EQ(getDigitsIn(4294967295u), 10u);
  EXPECT_EQ(getDigitsIn(std::numeric_limits<std::int32_t>::min()), 11u);
  EXPECT_EQ(getDigitsIn(std::numeric_limits<std::int64_t>::min()), 20u);
}

TEST(GetLineAtPosition, FindsTheLineOfACharacter) {
  nomtest::Recorder recorder;
  KoraString<char> line("old", 3);
  // An underscore stands for LF; text, position, number and line.
  const auto find = [&](nomtest::Row row) {
    std::replace(row[0].begin(), row[0].end(), '_', '\n');
    const std::vector<char> exact(row[0].begin(), row[0].end());
    const std::uint32_t number =
        getLineAtPosition(exact.data(), static_cast<std::uint32_t>(exact.size()),
                          static_cast<std::uint32_t>(std::stoul(row[1])), line);
    std::string result = std::to_string(number) + ":" + std::string(line.data(), line.length());
    std::replace(result.begin(), result.end(), '\n', '_');
    return result;
  };
  nomtest::expectRows(3, find,
                      "ab_cd 1 1:ab_  ab_cd 3 1:ab_  ab_cd 4 2:cd  ab_cd 5 2:cd  ab_cd 6 0: "
                      "ab_cd 0 0:  __x_ 1 1:_  __x_ 2 2:_  __x_ 4 3:x_  __x_ 5 0:");
  EXPECT_EQ(getLineAtPosition("", 0, 1, line), 0u);
  EXPECT_EQ(getLineAtPosition(nullptr, 5, 1, line), 0u);
  EXPECT_EQ(recorder.takeExpressions(), "");
  KoraString<char> small("old", 3, 3);
  EXPECT_EQ(getLineAtPosition("a\nlong", 6, 3, small), 0u);
  EXPECT_EQ(small.length(), 0u);
}

}  // namespace
