// The whole life of a manager with its boxes, memos and timers, under one schedule.
#ifndef SIMBOX_LIFE_H
#define SIMBOX_LIFE_H

#include "model.h"

#include <string>
#include <vector>

namespace simbox {

// What the threads do, each in order. Memos 0 to 3, timers 4 and 5 and memos 6 to 8, each used by
// one thread alone, alternate between box 0 and the serialised box 1; memos 2 and 3 are received
// separately. Memos 9 and 10 are those of a completion-port box.
struct Scenario {
  std::vector<std::vector<Operation>> threads;
};
inline constexpr unsigned kMemos = 4;
inline constexpr unsigned kTimers = 2;
inline constexpr unsigned kOwn = 3;
inline constexpr unsigned kPortMemos = 2;
inline constexpr unsigned kFirstOwn = kMemos + kTimers;
inline constexpr unsigned kFirstPort = kFirstOwn + kOwn;
inline constexpr unsigned kAll = kFirstPort + kPortMemos;
inline constexpr unsigned kBoxes = 2;

// 2 or 3 threads of at most 6 operations each.
Scenario randomScenario(std::uint32_t seed);

// Lives it and checks it. isPunctual: the chooser never stalls. duty is called when the threads
// begin (true) and when they have ended.
void live(const Scenario& scenario, bool isPunctual, nomos::simulated::Chooser& chooser,
          const std::function<void(bool)>& duty, const nomos::simulated::Failure& fail,
          std::string* trace);

}  // namespace simbox

#endif  // SIMBOX_LIFE_H
