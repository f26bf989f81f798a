// What `nomtool boxes` measures, and how it is shown. Times are nanoseconds.
#ifndef NOMTOOL_BOXESFIGURES_H
#define NOMTOOL_BOXESFIGURES_H

#include <cstdint>
#include <ostream>
#include <vector>

namespace nomtool {

// What one receiver has seen.
struct StationFigures {
  std::uint64_t receives = 0;
  std::vector<std::int64_t> latencies;      // from a dispatch to its receipt
  std::vector<std::int64_t> timerLateness;  // behind the beginning of the due millisecond
  std::vector<std::int64_t> scheduleLateness;
};

struct BoxesFigures : StationFigures {
  void add(const StationFigures& station);

  double seconds = 0;
  std::uint64_t events = 0;  // dispatched by the producers; they coalesce
};

// The value that a share of the sorted values does not exceed, 0 for none: the nearest rank.
std::int64_t percentile(const std::vector<std::int64_t>& sorted, double share);

void printTable(const BoxesFigures& figures, std::ostream& out);
void printJson(const BoxesFigures& figures, std::ostream& out);

}  // namespace nomtool

#endif  // NOMTOOL_BOXESFIGURES_H
