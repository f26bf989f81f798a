// The figures of event boxes under load, from series of known times, and a short load itself.
#include "boxesfigures.h"
#include "commandline.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <numeric>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace nomtool {
namespace {

// The nearest rank: the smallest value that the share of all values does not exceed.
TEST(BoxesFigures, TakePercentilesByNearestRank) {
  std::vector<std::int64_t> hundred(100);
  std::iota(hundred.begin(), hundred.end(), 1);
  for (const auto& [share, expected] : {std::pair(0.5, 50), {0.99, 99}, {1.0, 100}, {0.0, 1}}) {
    EXPECT_EQ(percentile(hundred, share), expected);
  }
  EXPECT_EQ(percentile({7}, 0.5), 7);
  EXPECT_EQ(percentile({}, 0.5), 0);
}

TEST(BoxesFigures, ShowRatesAndALineForEachStepOfLateness) {
  BoxesFigures figures;
  figures.seconds = 2;
  figures.events = 3'000'000;
  StationFigures station;
  station.receives = 500;
  station.latencies = {3'000, 1'000, 2'000};
  station.timerLateness = {50'000, 50'001, 100'000, 20'000'000};
  figures.add(station);
  figures.add(station);
  std::ostringstream out;
  printTable(figures, out);
  EXPECT_EQ(out.str(),
            "events           1500000 per second\n"
            "receives             500 per second\n"
            "\n"
            "microseconds      count       p50       p99       max\n"
            "latency               6       2.0       3.0       3.0\n"
            "timer                 8      50.0   20000.0   20000.0\n"
            "schedule              0       0.0       0.0       0.0\n"
            "\n"
            "timers, microseconds late\n"
            "<=       50         2  ####################\n"
            "<=      100         4  ########################################\n"
            "<=      200         0  \n"
            "<=      500         0  \n"
            "<=     1000         0  \n"
            "<=     2000         0  \n"
            "<=    10000         0  \n"
            ">     10000         2  ####################\n");
}

// The number behind a key that follows another in JSON, NaN when one is missing.
double numberAt(const std::string& json, const std::string& outer, const std::string& key) {
  const std::string quotedKey = '"' + key + "\": ";
  const std::size_t begin = json.find('"' + outer + '"');
  const std::size_t at = begin == json.npos ? begin : json.find(quotedKey, begin);
  return at == json.npos ? std::strtod("nan", nullptr)
                         : std::strtod(json.c_str() + at + quotedKey.size(), nullptr);
}

// Timers of at most two seconds come in the half second that this takes, and none too early.
TEST(BoxesCommand, ReceivesEventsTimersAndSchedules) {
  std::ostringstream out, err;
  const int status = run({"boxes", "--producers", "1", "--boxes", "2", "--timers", "50",
                          "--schedules", "50", "--seconds", "0.5", "--json"},
                         out, err);
  EXPECT_EQ(std::pair(status, err.str()), std::pair(0, std::string()));
  const std::string json = out.str();
  EXPECT_GE(numberAt(json, "seconds", "seconds"), 0.5);
  EXPECT_GT(numberAt(json, "seconds", "eventsPerSecond"),
            numberAt(json, "seconds", "receivesPerSecond"));
  for (const char* series : {"latencyNanos", "timerLatenessNanos", "scheduleLatenessNanos"}) {
    EXPECT_GT(numberAt(json, series, "count"), 0) << series;
    EXPECT_GT(numberAt(json, series, "p50"), 0) << series;
    EXPECT_GE(numberAt(json, series, "max"), numberAt(json, series, "p99")) << series;
  }
}

}  // namespace
}  // namespace nomtool
