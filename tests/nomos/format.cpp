// Formatted text and the texts of reals. Expected texts of reals come from Python: repr for the
// shortest digits, '%.0f' where a whole number has fewer characters than its shortest digits with
// zeros behind them, '%.*f' for a number of places.

#include "nomos/intl.h"

#include <gtest/gtest.h>
#include <cmath>
#include <cstdarg>
#include <cstring>
#include <limits>
#include <string>

namespace {

constexpr std::uint64_t kMost64 = 18446744073709551615u;
constexpr std::int64_t kLeast64 = std::numeric_limits<std::int64_t>::min();

std::string format(const char* form, ...) {
  char buffer[1200];
  std::va_list arguments;
  va_start(arguments, form);
  const int stored = intlVsnprintf(buffer, sizeof buffer, form, arguments);
  va_end(arguments);
  EXPECT_EQ(stored, static_cast<int>(std::strlen(buffer)));
  return buffer;
}

TEST(Format, WritesTheSameOnEveryPlatform) {
  EXPECT_EQ(format("%I64u", kMost64), "18446744073709551615");
  EXPECT_EQ(format("%llu|%I64d", kMost64, kLeast64), "18446744073709551615|-9223372036854775808");
  EXPECT_EQ(format("%010I64u|%-12I64d|", std::uint64_t{42}, std::int64_t{-42}),
            "0000000042|-42         |");
  EXPECT_EQ(format("%+I64x %*I64u", std::uint64_t{255}, 5, std::uint64_t{7}), "ff     7");
  EXPECT_EQ(format("%-7d|%04u|%5s|%-5s|%.2s", -12, 7u, "ab", "cd", "efg"),
            "-12    |0007|   ab|cd   |ef");
  EXPECT_EQ(format("%.30s", "abcdefghijklmnopqrstuvwxyz0123456789"),
            "abcdefghijklmnopqrstuvwxyz0123");
  EXPECT_EQ(format("I64 %%I64u %s %c%%", "%I64u", 'c'), "I64 %I64u %I64u c%");
  EXPECT_EQ(format("%e %g %.3f %zu", 12345.678, 1e-10, 2.0 / 3, sizeof(char)),
            "1.234568e+04 1e-10 0.667 1");
  const std::string longForm = std::string(600, '-') + "%I64u";
  EXPECT_EQ(format(longForm.c_str(), std::uint64_t{9}), std::string(600, '-') + "9");
}

TEST(Format, CutsAtTheRoomAndEndsTheText) {
  const struct {
    unsigned size;
    int stored;
    const char* text;
  } rows[] = {{1, 0, ""}, {2, 1, "a"}, {6, 5, "abc12"}, {7, 6, "abc123"}, {20, 6, "abc123"}};
  for (const auto& row : rows) {
    char buffer[21];
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(intlSnprintf(buffer, row.size, "abc%I64u", std::uint64_t{123}), row.stored);
    EXPECT_STREQ(buffer, row.text);
    EXPECT_EQ(buffer[row.size], '#') << "beyond the room";
  }
  char untouched = '#';
  EXPECT_EQ(intlSnprintf(&untouched, 0, "abc"), 0);
  EXPECT_EQ(untouched, '#');
  char room[32];
  EXPECT_EQ(intlSprintf(room, "%s-%04d", "unbounded", 7), 14);
  EXPECT_STREQ(room, "unbounded-0007");
}

TEST(RealText, IsTheShortestThatReadsBack) {
  const double infinity = std::numeric_limits<double>::infinity();
  const struct {
    double value;
    int decimals;
    std::string text;
  } rows[] = {
      {0.1, 0, "0.1"},
      {0.1 + 0.2, 0, "0.30000000000000004"},
      {123456.789, 0, "123456.789"},
      {1.5, 0, "1.5"},
      {-0.0, 0, "-0"},
      {7, 0, "7"},
      {1e22, 0, "10000000000000000000000"},
      {1e23, 0, "99999999999999991611392"},
      {1e-100, 0, "0." + std::string(99, '0') + "1"},
      {5e-324, 0, "0." + std::string(323, '0') + "5"},
      {infinity, 0, "inf"},
      {-infinity, 3, "-inf"},
      {std::nan(""), 0, "nan"},
      {-std::nan(""), 2, "nan"},
      {0.125, 2, "0.12"},  // halves go to the even digit
      {0.375, 2, "0.38"},
      {1.005, 2, "1.00"},
      {-2.675, 2, "-2.67"},
      {0.5, 3, "0.500"},
      {-0.001, 2, "-0.00"},
      {1e23, 2, "99999999999999991611392.00"},
      {123456.789, 4, "123456.7890"},
      {0.5, 1100, "0.5" + std::string(1099, '0')},  // more places than any double has digits
  };
  for (const auto& row : rows) {
    char buffer[1200];
    const unsigned stored = intlDoubleToStringFixed(buffer, sizeof buffer, row.value, row.decimals);
    EXPECT_EQ(buffer, row.text);
    EXPECT_EQ(stored, row.text.size());
  }
}

TEST(RealText, OfAFloatHasTheFloatsDigits) {
  const struct {
    float value;
    int decimals;
    const char* text;
  } rows[] = {{0.1f, 0, "0.1"},
              {16777216.0f, 0, "16777216"},
              {1.0f / 3, 0, "0.33333334"},
              {0.1f, 9, "0.100000001"},
              {-2.5f, 1, "-2.5"},
              {std::numeric_limits<float>::infinity(), 0, "inf"}};
  for (const auto& row : rows) {
    char buffer[64];
    EXPECT_EQ(intlFloatToStringFixed(buffer, sizeof buffer, row.value, row.decimals),
              std::strlen(row.text));
    EXPECT_STREQ(buffer, row.text);
  }
}

TEST(RealText, IsCutAtTheRight) {
  char buffer[8] = "#######";
  EXPECT_EQ(intlDoubleToStringFixed(buffer, 4, 123456.789, 0), 3u);
  EXPECT_STREQ(buffer, "123");
  EXPECT_EQ(buffer[4], '#');
  EXPECT_EQ(intlDoubleToStringFixed(buffer, 1, -1.0, 2), 0u);
  EXPECT_STREQ(buffer, "");
  buffer[0] = '#';
  EXPECT_EQ(intlDoubleToStringFixed(buffer, 0, 1.0, 0), 0u);
  EXPECT_EQ(buffer[0], '#');
}

}  // namespace
