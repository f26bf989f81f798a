// The wheel, driven by numbers: when timers end, against a list of their due times.

#include "boxes/timerwheel.h"
#include "boxes/boxesaccess.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <deque>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using nomutil::boxes::BoxesAccess;
using nomutil::boxes::kSlotCount;
using nomutil::boxes::OnlyThread;
using nomutil::boxes::TimerWheel;
using nomutil::boxes::WheelSlots;

// A wheel with its tick, and a clock that the test moves.
struct Wheel {
  explicit Wheel(std::int64_t start) NOMOS_REQUIRES(nomutil::boxes::changeLock) : now(start) {
    _keepAlives[0] = BoxesAccess::make(MU_KeepAlive, 0, 0);
    _keepAlives[1] = BoxesAccess::make(MU_KeepAlive, 0, 0);
    tick = now + view().begin(&_keepAlives[0], &_keepAlives[1], now);
  }

  TimerWheel view() { return {*slots, slotTime, armed, current, behind}; }

  Memo* start(std::uint32_t millis) NOMOS_REQUIRES(nomutil::boxes::changeLock) {
    Memo* const timer = &_timers.emplace_back(BoxesAccess::make(MU_Timer, 0, 0));
    restart(timer, millis);
    return timer;
  }
  void restart(Memo* timer, std::uint32_t millis) NOMOS_REQUIRES(nomutil::boxes::changeLock) {
    TimerWheel::setLegs(timer, millis);
    arm(timer);
  }
  void stop(Memo* timer) NOMOS_REQUIRES(nomutil::boxes::changeLock) {
    if (view().disarm(timer)) tick = now + view().advance(now);
  }

  // Processes the tick if it is due; the timers that ended.
  std::vector<Memo*> turn() NOMOS_REQUIRES(nomutil::boxes::changeLock) {
    std::vector<Memo*> ended;
    if (tick > now) return ended;
    Memo* next = nullptr;
    tick = now + view().expire(next, now);
    while (Memo* const memo = next) {
      next = BoxesAccess::link(*memo).next;
      if (view().endLeg(memo)) {
        ended.push_back(memo);
      } else {
        arm(memo);
      }
    }
    return ended;
  }

  std::int64_t now;
  std::int64_t tick;
  std::unique_ptr<WheelSlots> slots = std::make_unique<WheelSlots>();
  std::uint64_t slotTime = 0;
  std::uint32_t armed = 0;
  std::uint32_t current = 0;
  std::uint32_t behind = 0;

 private:
  void arm(Memo* memo) NOMOS_REQUIRES(nomutil::boxes::changeLock) {
    if (const auto delay = view().arm(memo, now)) tick = now + *delay;
  }
  Memo _keepAlives[2] = {Memo(nullptr), Memo(nullptr)};
  std::deque<Memo> _timers;
};

TEST(TimerWheel, RunsAnIntervalInLegsAndEndsItOnce) {
  const OnlyThread only;
  for (const std::uint32_t millis :
       {0u, 1u, 3333u, 9'999u, 10'000u, 20'000u, 25'000u, 4'000'000u}) {
    Wheel wheel(1'000);
    const std::int64_t due = wheel.now + millis;
    const Memo* const timer = wheel.start(millis);
    std::vector<std::int64_t> ends;
    for (; wheel.now <= due + 40'000; ++wheel.now) {
      for (const Memo* ended : wheel.turn()) {
        EXPECT_EQ(ended, timer);
        ends.push_back(wheel.now);
      }
    }
    EXPECT_EQ(ends, std::vector{due}) << millis;
    EXPECT_EQ(wheel.armed, 2u);
    EXPECT_EQ(wheel.behind, 0u);
  }
}

// Timers of one millisecond lie newest first in their slot.
TEST(TimerWheel, EndsTheTimersOfOneSlotInReverse) {
  const OnlyThread only;
  Wheel wheel(0);
  const std::vector<Memo*> started{wheel.start(50), wheel.start(50), wheel.start(50)};
  wheel.now = 50;
  EXPECT_EQ(wheel.turn(), std::vector<Memo*>(started.rbegin(), started.rend()));
}

// Random starts, stops and pauses; across 2^32 milliseconds too. No timer ends before its time, and
// none later than the turn after a pause of the driver that it was due in.
TEST(TimerWheel, EndsEveryTimerInItsMillisecondUnlessTheDriverPauses) {
  const OnlyThread only;
  for (const std::uint32_t seed : {1u, 2u, 3u, 4u}) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto below = [&](std::uint32_t end) {
      return static_cast<std::uint32_t>(random() % end);
    };
    Wheel wheel(0xFFFF'FFFF - 100'000);
    const bool pauses = seed % 2 == 0;
    std::map<Memo*, std::int64_t> running;
    std::vector<Memo*> idle;
    std::size_t endings = 0;
    for (int turn = 0; turn < 300'000; ++turn) {
      const std::uint32_t millis = 1 + below(below(4) == 0 ? 65'000 : 50);
      if (below(3) == 0) {
        Memo* timer = nullptr;
        if (idle.empty()) {
          timer = wheel.start(millis);
        } else {
          timer = idle.back();
          idle.pop_back();
          wheel.restart(timer, millis);
        }
        running[timer] = wheel.now + millis;
      }
      if (below(8) == 0 && !running.empty()) {
        const auto at = running.begin();
        wheel.stop(at->first);
        idle.push_back(at->first);
        running.erase(at);
      }
      const std::int64_t pause = pauses && below(1000) == 0 ? below(15'000) : 0;
      wheel.now += 1 + pause;
      // One turn a slot, as the thread does until nothing is due.
      while (wheel.tick <= wheel.now) {
        for (Memo* const ended : wheel.turn()) {
          ASSERT_TRUE(running.contains(ended));
          ASSERT_LE(running[ended], wheel.now) << "too early";
          ASSERT_TRUE(pauses || running[ended] == wheel.now) << "too late";
          running.erase(ended);
          idle.push_back(ended);
          ++endings;
        }
      }
      ASSERT_EQ(wheel.armed, running.size() + 2);
    }
    EXPECT_GT(endings, 50'000u);
    EXPECT_EQ(wheel.behind != 0, pauses);
  }
}

// The first tick comes a millisecond late, so that at 10,000 both keep-alives share a slot and
// nothing else is armed: the slot comes round again, and its next tick finds it empty.
TEST(TimerWheel, GoesOnWhenTheKeepAlivesMeet) {
  const OnlyThread only;
  Wheel wheel(0);
  wheel.now = 3'334;
  int meetings = 0;
  while (wheel.now < 1'000'000) {
    meetings += wheel.slots->heads[wheel.current] != nullptr &&
                wheel.slots->next(wheel.current) == wheel.current;
    EXPECT_TRUE(wheel.turn().empty());
    ASSERT_EQ(wheel.armed, 2u);
    const std::int64_t last = wheel.now;
    wheel.now = std::max(wheel.now, wheel.tick);
    ASSERT_LE(wheel.now - last, 5'000);
  }
  EXPECT_GT(meetings, 0);
}

TEST(WheelSlots, FindTheNextOccupiedSlotAsASearchDoes) {
  const auto slots = std::make_unique<WheelSlots>();
  std::mt19937 random(7);
  std::vector<bool> occupied(kSlotCount);
  for (int step = 0; step < 3000; ++step) {
    const auto slot = static_cast<std::uint32_t>(random() % kSlotCount);
    const bool set = random() % 100 < (step < 1000 ? 60u : 45u);
    occupied[slot] = set;
    set ? slots->setOccupied(slot) : slots->setEmpty(slot);
    const auto from = static_cast<std::uint32_t>(step % 5 == 0 ? slot : random() % kSlotCount);
    std::uint32_t expected = from;
    do {
      expected = (expected + 1) % kSlotCount;
    } while (expected != from && !occupied[expected]);
    ASSERT_EQ(slots->next(from), expected);
  }
}

}  // namespace
