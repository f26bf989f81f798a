// Event against a plain model and between threads, the ends of its waits, and the relative clock.

#include "nomos/event.h"

#include "nomos/relativetime.h"
#include "nomos/testhooks.h"

#include <gtest/gtest.h>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <random>
#include <thread>
#include <vector>

namespace {

// Long enough that only a lost signal uses it up.
constexpr std::uint32_t kPatience = 60000;

std::int64_t otherClock() {
  using std::chrono::steady_clock;
  return std::chrono::floor<std::chrono::milliseconds>(steady_clock::now().time_since_epoch())
      .count();
}

TEST(Event, BehavesAsAFlagThatAnAutoResetWaitClears) {
  for (const bool manualReset : {false, true}) {
    for (bool flag : {false, true}) {
      Event event(manualReset, flag);
      std::mt19937 random(1);
      for (int step = 0; step < 1000; ++step) {
        switch (random() % 4) {
          case 0:
            event.set();
            flag = true;
            break;
          case 1:
            event.reset();
            flag = false;
            break;
          case 2:
            ASSERT_EQ(event.wait(0), flag) << "manual " << manualReset << " step " << step;
            flag = flag && manualReset;
            break;
          default:
            // A time that is over still takes a signal that is there.
            ASSERT_EQ(event.waitUntil(-1), flag) << "manual " << manualReset << " step " << step;
            flag = flag && manualReset;
        }
      }
    }
  }
}

TEST(Event, LosesNoSignalBetweenTwoThreads) {
  Event ping(false);
  Event pong(false);
  // Not atomic on purpose: the events alone order the two threads.
  unsigned turns = 0;
  constexpr unsigned kRounds = 20000;
  std::thread other([&] {
    for (unsigned round = 0; round < kRounds; ++round) {
      if (!ping.wait(kPatience)) return;
      ++turns;
      pong.set();
    }
  });
  for (unsigned round = 0; round < kRounds; ++round) {
    ping.set();
    // Both kinds of limit take part.
    ASSERT_TRUE(round % 2 == 0 ? pong.wait(kPatience)
                               : pong.waitUntil(nosGetRelativeTime() + kPatience));
    ASSERT_EQ(turns, round + 1);
  }
  other.join();
}

// Waiters that give up all the time, and setters, contend for one event. Each turn it is set for is
// acknowledged, so the signals that were taken must be exactly as many.
TEST(Event, GivesEachSignalToOneWaiterAmongManyThatGiveUp) {
  Event work(false);
  Event done(false);
  std::atomic<unsigned> taken{0};
  std::atomic<bool> running{true};
  std::vector<std::thread> waiters;
  for (int i = 0; i < 3; ++i) {
    waiters.emplace_back([&, i] {
      while (running.load()) {
        if (!work.wait(static_cast<std::uint32_t>(i % 2))) continue;
        ++taken;
        done.set();
      }
    });
  }
  for (unsigned turn = 1; turn <= 5000; ++turn) {
    work.set();
    ASSERT_TRUE(done.wait(kPatience)) << turn;
    ASSERT_EQ(taken.load(), turn);
  }
  running = false;
  for (std::thread& waiter : waiters) waiter.join();
  EXPECT_FALSE(work.wait(0));
}

TEST(Event, ManualResetReleasesEveryWaiter) {
  Event gate(true);
  int passage = 0;
  std::vector<std::thread> waiters;
  for (int i = 0; i < 4; ++i) {
    waiters.emplace_back([&] {
      EXPECT_TRUE(gate.wait(kPatience));
      EXPECT_EQ(passage, 1);
    });
  }
  passage = 1;
  gate.set();
  for (std::thread& waiter : waiters) waiter.join();
}

TEST(Event, MayBeDestroyedByTheThreadItReleases) {
  for (int round = 0; round < 2000; ++round) {
    auto event = std::make_unique<Event>(round % 2 == 0);
    std::thread setter([&event = *event] { event.set(); });
    EXPECT_TRUE(event->wait(kPatience));
    event.reset();
    setter.join();
  }
}

TEST(Event, NeverEndsAWaitBeforeItsTime) {
  Event never(false);
  for (std::uint32_t limit : {0u, 1u, 2u, 5u, 17u}) {
    const std::int64_t start = nosGetRelativeTime();
    EXPECT_FALSE(never.wait(limit));
    EXPECT_GE(nosGetRelativeTime() - start, limit);
  }
  for (const std::int64_t after : {0, 1, 2, 3, 10}) {
    const std::int64_t due = nosGetRelativeTime() + after;
    EXPECT_FALSE(never.waitUntil(due));
    EXPECT_GE(nosGetRelativeTime(), due);
  }
  EXPECT_FALSE(never.waitUntil(INT64_MIN));
  std::thread setter([&never] { never.set(); });
  EXPECT_TRUE(never.waitUntil(INT64_MAX));
  setter.join();
}

TEST(RelativeClock, KeepsPaceWithAnotherClockAndSleepsItsTime) {
  const std::int64_t otherStart = otherClock();
  const std::int64_t start = nosGetRelativeTime();
  for (const std::uint32_t nap : {0u, 1u, 30u}) {
    const std::int64_t before = nosGetRelativeTime();
    nosSleep(nap);
    EXPECT_GE(nosGetRelativeTime() - before, nap);
  }
  const std::int64_t passed = nosGetRelativeTime() - start;
  const std::int64_t otherPassed = otherClock() - otherStart;
  EXPECT_LE(passed, otherPassed + 1);
  // The scheduler may take the processor away between the two readings at either end.
  EXPECT_GE(passed + 1000, otherPassed);
}

std::atomic<std::int64_t> drivenTime;

TEST(RelativeClock, DrivesAbsoluteWaitsWhileReplaced) {
  drivenTime = 5;
  nosSetRelativeClock([]() noexcept { return drivenTime.load(); });
  EXPECT_EQ(nosGetRelativeTime(), 5);
  Event event(false);
  std::atomic<int> ended{0};
  std::thread waiter([&] {
    EXPECT_TRUE(event.waitUntil(6));
    ended = 1;
    EXPECT_FALSE(event.waitUntil(std::int64_t{1} << 40));
  });
  // No real time ends the wait, however long this thread waits for it.
  Event(false).wait(20);
  EXPECT_EQ(ended.load(), 0);
  event.set();
  while (ended.load() == 0) std::this_thread::yield();
  drivenTime = std::int64_t{1} << 40;
  waiter.join();
  nosSetRelativeClock(nullptr);
  EXPECT_LT(nosGetRelativeTime(), std::int64_t{1} << 40);
}

}  // namespace
