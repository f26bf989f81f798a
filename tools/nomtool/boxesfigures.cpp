// The figures of `nomtool boxes`: rates, percentiles, and a histogram of the timers' lateness.
#include "boxesfigures.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

namespace nomtool {

namespace {

constexpr double kMicro = 1e3;

using Series = std::pair<const char*, const std::vector<std::int64_t>*>;

std::vector<std::int64_t> sorted(std::vector<std::int64_t> values) {
  std::sort(values.begin(), values.end());
  return values;
}

void append(std::vector<std::int64_t>& to, const std::vector<std::int64_t>& from) {
  to.insert(to.end(), from.begin(), from.end());
}

double perSecond(std::uint64_t count, double seconds) {
  return seconds > 0 ? static_cast<double>(count) / seconds : 0;
}

// The bounds of the histogram's rows; the last row is what is later still.
constexpr std::int64_t kBounds[] = {50'000,    100'000,   200'000,    500'000,
                                    1'000'000, 2'000'000, 10'000'000, INT64_MAX};

std::vector<std::uint64_t> histogram(const std::vector<std::int64_t>& values) {
  std::vector<std::uint64_t> counts(std::size(kBounds));
  for (const std::int64_t value : values) {
    ++counts[static_cast<std::size_t>(
        std::lower_bound(std::begin(kBounds), std::end(kBounds), value) - std::begin(kBounds))];
  }
  return counts;
}

}  // namespace

void BoxesFigures::add(const StationFigures& station) {
  receives += station.receives;
  append(latencies, station.latencies);
  append(timerLateness, station.timerLateness);
  append(scheduleLateness, station.scheduleLateness);
}

std::int64_t percentile(const std::vector<std::int64_t>& sorted, double share) {
  if (sorted.empty()) return 0;
  const double rank = std::ceil(share * static_cast<double>(sorted.size()));
  return sorted[static_cast<std::size_t>(std::max(rank, 1.0)) - 1];
}

void printTable(const BoxesFigures& figures, std::ostream& out) {
  const auto row = [&](const char* name, double value, const char* unit) {
    out << std::left << std::setw(10) << name << std::right << std::setw(14) << std::fixed
        << std::setprecision(0) << value << ' ' << unit << '\n';
  };
  row("events", perSecond(figures.events, figures.seconds), "per second");
  row("receives", perSecond(figures.receives, figures.seconds), "per second");
  out << "\nmicroseconds      count       p50       p99       max\n" << std::setprecision(1);
  for (const auto& [name, values] :
       {Series("latency", &figures.latencies), Series("timer", &figures.timerLateness),
        Series("schedule", &figures.scheduleLateness)}) {
    const auto times = sorted(*values);
    out << std::left << std::setw(12) << name << std::right << std::setw(11) << times.size();
    for (const double share : {0.5, 0.99, 1.0}) {
      out << std::setw(10) << static_cast<double>(percentile(times, share)) / kMicro;
    }
    out << '\n';
  }
  const auto counts = histogram(figures.timerLateness);
  const std::uint64_t most = *std::max_element(counts.begin(), counts.end());
  if (most == 0) return;
  out << "\ntimers, microseconds late\n";
  for (std::size_t i = 0; i < counts.size(); ++i) {
    const bool isLast = i + 1 == counts.size();
    const std::int64_t bound = kBounds[isLast ? i - 1 : i];
    out << (isLast ? "> " : "<=") << std::setw(9) << std::setprecision(0)
        << static_cast<double>(bound) / kMicro << std::setw(10) << counts[i] << "  "
        << std::string((counts[i] * 40 + most - 1) / most, '#') << '\n';
  }
}

void printJson(const BoxesFigures& figures, std::ostream& out) {
  nlohmann::ordered_json json = {
      {"seconds", figures.seconds},
      {"eventsPerSecond", perSecond(figures.events, figures.seconds)},
      {"receivesPerSecond", perSecond(figures.receives, figures.seconds)}};
  for (const auto& [name, values] : {Series("latencyNanos", &figures.latencies),
                                     Series("timerLatenessNanos", &figures.timerLateness),
                                     Series("scheduleLatenessNanos", &figures.scheduleLateness)}) {
    const auto times = sorted(*values);
    json[name] = {{"count", times.size()},
                  {"p50", percentile(times, 0.5)},
                  {"p99", percentile(times, 0.99)},
                  {"max", percentile(times, 1.0)}};
  }
  out << json.dump(2) << '\n';
}

}  // namespace nomtool
