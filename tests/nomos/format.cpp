// Formatted text and the texts of reals. Expected texts of reals come from Python: repr for the
// shortest digits, '%.0f' where a whole number has fewer characters than its shortest digits with
// zeros behind them, '%.*f' for a number of places.

#include "nomos/intl.h"

#include <gtest/gtest.h>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <tuple>
#include <utility>

namespace {

constexpr std::uint64_t kMost64 = 18446744073709551615u;
constexpr std::int64_t kLeast64 = std::numeric_limits<std::int64_t>::min();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// What write(buffer) leaves in size bytes, where it returns the length and writes nothing more.
template <class Write>
std::string written(unsigned size, Write write) {
  char buffer[1201];
  std::memset(buffer, '#', sizeof buffer);
  const auto stored = static_cast<std::size_t>(write(buffer));
  EXPECT_EQ(buffer[size], '#') << "beyond the room";
  if (size == 0) return stored == 0 ? "" : "(not empty)";
  EXPECT_EQ(stored, std::strlen(buffer));
  return buffer;
}

template <class... Arguments>
std::string format(unsigned size, const char* form, Arguments... arguments) {
  return written(size, [=](char* to) { return intlSnprintf(to, size, form, arguments...); });
}

TEST(Format, WritesTheSameOnEveryPlatformAndCutsAtTheRoom) {
  EXPECT_EQ(format(99, "%I64u %llu", kMost64, kMost64),
            "18446744073709551615 18446744073709551615");
  EXPECT_EQ(format(99, "%05I64d|%-24I64d|", -42LL, kLeast64), "-0042|-9223372036854775808    |");
  EXPECT_EQ(format(99, "%+I64d %I64x %*I64u", 5LL, 255ULL, 5, 7ULL), "+5 ff     7");
  EXPECT_EQ(format(99, "%-4d|%04u|%5s|%-5s|%.2s", -12, 7u, "ab", "cd", "efg"),
            "-12 |0007|   ab|cd   |ef");
  EXPECT_EQ(format(99, "I64 %%I64u %s %c%%", "%I64u", 'c'), "I64 %I64u %I64u c%");
  EXPECT_EQ(format(99, "%e %g %.3f %zu", 12345.678, 1e-10, 2.0 / 3, sizeof(char)),
            "1.234568e+04 1e-10 0.667 1");
  const std::string dashes(600, '-');
  EXPECT_EQ(format(1200, (dashes + "%I64u").c_str(), 9ULL), dashes + "9");
  for (const unsigned size : {0u, 1u, 2u, 6u, 7u, 20u}) {
    EXPECT_EQ(format(size, "abc%I64u", 123ULL), std::string("abc123").substr(0, size - (size > 0)));
  }
  EXPECT_EQ(written(99, [](char* to) { return intlSprintf(to, "%s-%04d", "long", 7); }),
            "long-0007");
}

TEST(RealText, IsTheShortestThatReadsBackOrHasItsPlaces) {
  const std::tuple<double, int, std::string> rows[] = {
      {0.1, 0, "0.1"},
      {0.1 + 0.2, 0, "0.30000000000000004"},
      {-0.0, 0, "-0"},
      {1e22, 0, "10000000000000000000000"},
      {1e23, 0, "99999999999999991611392"},
      {5e-324, 0, "0." + std::string(323, '0') + "5"},
      {-kInfinity, 3, "-inf"},
      {-std::nan(""), 2, "nan"},
      {0.125, 2, "0.12"},  // halves go to the even digit
      {0.375, 2, "0.38"},
      {-0.001, 2, "-0.00"},
      {0.5, 1100, "0.5" + std::string(1099, '0')}};
  for (const auto& [value, places, text] : rows) {
    for (const unsigned size : {0u, 1u, 3u, 1200u}) {
      const auto write = [&, &real = value, &decimals = places](char* to) {
        return intlDoubleToStringFixed(to, size, real, decimals);
      };
      EXPECT_EQ(written(size, write), text.substr(0, size - (size > 0)));
    }
  }
  for (const auto& [places, text] : {std::pair(0, "0.1"), std::pair(9, "0.100000001")}) {
    char buffer[64];
    intlFloatToStringFixed(buffer, sizeof buffer, 0.1f, places);
    EXPECT_STREQ(buffer, text);
  }
}

}  // namespace
