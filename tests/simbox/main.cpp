// simbox lives thousands of lives of managers, boxes, memos and timers under schedules of its own
// choice, in one thread and by a virtual clock, and checks every step against a plain model.
//
//   simbox                  5,000 random lives, and the small ones under every schedule; those
//                           that need the box thread with at most 2 preemptions
//   simbox --seeds N        the random lives 1 to N
//   simbox --seed N         life N alone, with its trace; the same every time
#include "choosers.h"
#include "life.h"

#include "nomos/testhooks.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

namespace {

using namespace simbox;

std::string life;  // which one is lived

[[noreturn]] void fail(const std::string& what) {
  std::printf("%s: %s\n", life.c_str(), what.c_str());
  std::exit(1);
}

void liveRandomly(std::uint32_t seed, std::string* trace) {
  life = "simbox --seed " + std::to_string(seed);
  RandomChooser chooser(seed);
  const bool isPunctual = seed % 2 == 0;
  live(
      randomScenario(seed), isPunctual, chooser,
      [&](bool begins) { chooser.stalls = begins && !isPunctual; }, fail, trace);
}

// Two threads whose operations meet in one memo, one box or one timer.
const Scenario kSmall[] = {
    {{{{Kind::Dispatch, 0}, {Kind::Cancel, 0}, {Kind::Dispatch, 0}},
      {{Kind::Receive, 0, 0}, {Kind::Dispatch, 0}, {Kind::Receive, 0, 0}}}},
    {{{{Kind::UpdateDispatch, 2, 7, 5, 1}, {Kind::DispatchMultiple, 2, 2}},
      {{Kind::Receive, 0, 0}, {Kind::UpdateDispatch, 0, 8, 5, 0}, {Kind::Receive, 0, 0}}}},
    {{{{Kind::UpdateDispatchMultiple, 3, 9, 10, 3}, {Kind::Receive, 1, 0}},
      {{Kind::Receive, 1, 20}, {Kind::Update, 3, 1, 1, 1}}}},
    {{{{Kind::Receive, 0, 10}, {Kind::Receive, 0, 10}},
      {{Kind::Dispatch, 0}, {Kind::Dispatch, 2}, {Kind::Receive, 0, 0}}}},
    {{{{Kind::Dispatch, 1},
       {Kind::DispatchMultiple, 3, 0},
       {Kind::Receive, 1, 0},
       {Kind::Cancel, 3}},
      {{Kind::Receive, 1, 30},
       {Kind::UpdateDispatch, 1, 5, 9, 1},
       {Kind::Dispatch, 1},
       {Kind::Receive, 1, 0}}}},
};
// A thread that waits without limit for what the other sends.
constexpr unsigned kForEver = 0xFFFFFFFF;
const Scenario kWaiting[] = {
    {{{{Kind::Receive, 0, kForEver}}, {{Kind::Dispatch, 0}}}},
    {{{{Kind::Receive, 1, kForEver}, {Kind::Receive, 1, kForEver}},
      {{Kind::DispatchMultiple, 3, 2}, {Kind::Cancel, 1}}}},
    {{{{Kind::Receive, 0, kForEver}}, {{Kind::Schedule, 0, 3}, {Kind::Schedule, 0, 1}}}},
    {{{{Kind::Receive, 0, kForEver}}, {{Kind::TimerStart, 4, 2, 7, 3}, {Kind::GetState, 4}}}},
};
// The same with something for the box thread to move.
const Scenario kMoving[] = {
    {{{{Kind::Schedule, 0, 1}, {Kind::Cancel, 0}}, {{Kind::Receive, 0, 2}}}},
    {{{{Kind::Schedule, 0, 5}, {Kind::Schedule, 2, 1}}, {{Kind::Receive, 0, 9}}}},
    {{{{Kind::TimerStart, 4, 1, 7, 3}, {Kind::TimerStop, 4}}, {{Kind::Receive, 0, 5}}}},
    {{{{Kind::TimerStart, 4, 0, 7, 3}}, {{Kind::TimerStart, 5, 2, 8, 3}, {Kind::Receive, 1, 5}}}},
};

unsigned long liveUnderEverySchedule(const Scenario& scenario, unsigned preemptions) {
  EveryChooser chooser(preemptions);
  unsigned long lives = 0;
  do {
    live(
        scenario, true, chooser, [&](bool begins) { chooser.explores = begins; }, fail, nullptr);
    ++lives;
  } while (chooser.next());
  return lives;
}

int liveThemAll(std::uint32_t seeds, bool small) {
  for (std::uint32_t seed = 1; seed <= seeds; ++seed) liveRandomly(seed, nullptr);
  std::printf("%u random lives\n", seeds);
  if (!small) return 0;
  unsigned long lives = 0;
  for (unsigned i = 0; i < std::size(kSmall); ++i) {
    life = "small life " + std::to_string(i);
    lives += liveUnderEverySchedule(kSmall[i], 1000);
  }
  for (unsigned i = 0; i < std::size(kWaiting); ++i) {
    life = "waiting life " + std::to_string(i);
    lives += liveUnderEverySchedule(kWaiting[i], 2);
  }
  for (unsigned i = 0; i < std::size(kMoving); ++i) {
    life = "moving life " + std::to_string(i);
    lives += liveUnderEverySchedule(kMoving[i], 2);
  }
  std::printf("%lu small lives, under every schedule\n", lives);
  return 0;
}

}  // namespace

int main(int count, char** arguments) {
  nosSetAssertSink([](void*, const char*, const char*, const char* expression, const char*,
                      unsigned) { fail(expression); },
                   nullptr);
  nosSetLogSink([](void*, NosLogLevel, const char*) {}, nullptr);
  const auto number = [&] {
    return static_cast<std::uint32_t>(std::strtoul(arguments[2], nullptr, 10));
  };
  if (count == 3 && std::strcmp(arguments[1], "--seed") == 0) {
    std::string trace;
    liveRandomly(number(), &trace);
    std::fputs(trace.c_str(), stdout);
    return 0;
  }
  if (count == 3 && std::strcmp(arguments[1], "--seeds") == 0) return liveThemAll(number(), false);
  return liveThemAll(5'000, true);
}
