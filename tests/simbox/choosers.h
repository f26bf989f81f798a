// Schedules: one at random from a seed, or every one, with a limit to its preemptions.
#ifndef SIMBOX_CHOOSERS_H
#define SIMBOX_CHOOSERS_H

#include "simulated/scheduler.h"

#include <cstdint>
#include <random>
#include <vector>

namespace simbox {

class RandomChooser : public nomos::simulated::Chooser {
 public:
  explicit RandomChooser(std::uint32_t seed) : _random(seed) {}

  unsigned choose(unsigned count, bool canGoOn) override {
    if (canGoOn && _random() % 100 < 50) return 0;
    return static_cast<unsigned>(_random() % count);
  }
  std::int64_t stall() override {
    constexpr std::int64_t kLongest = 15'000;
    if (!stalls || _random() % 100 != 0) return 0;
    return static_cast<std::int64_t>(_random()) % (_random() % 2 == 0 ? 20 : kLongest);
  }
  bool stalls = false;

 private:
  std::mt19937 _random;
};

// Goes through the tree of choices, depth first: run again while next() is true.
class EveryChooser : public nomos::simulated::Chooser {
 public:
  explicit EveryChooser(unsigned mostPreemptions) : _most(mostPreemptions) {}

  unsigned choose(unsigned count, bool canGoOn) override {
    if (!explores) return 0;
    const unsigned options = canGoOn && _preemptions >= _most ? 1 : count;
    if (_depth == _path.size()) _path.push_back({0, options});
    const unsigned chosen = _path[_depth++].chosen;
    if (canGoOn && chosen != 0) ++_preemptions;
    return chosen;
  }

  bool choosesEverywhere() override { return false; }

  bool next() {
    while (!_path.empty() && _path.back().chosen + 1 == _path.back().options) _path.pop_back();
    _depth = 0;
    _preemptions = 0;
    if (_path.empty()) return false;
    ++_path.back().chosen;
    return true;
  }

  bool explores = false;

 private:
  struct Choice {
    unsigned chosen;
    unsigned options;
  };
  unsigned _most;
  std::vector<Choice> _path;
  std::size_t _depth = 0;
  unsigned _preemptions = 0;
};

}  // namespace simbox

#endif  // SIMBOX_CHOOSERS_H
