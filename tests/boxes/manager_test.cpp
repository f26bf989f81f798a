// The manager: its name and its thread, want of memory, and when memos and timers come due.

#include "boxes/boxscript.h"

#include <chrono>
#include <functional>

namespace {

using namespace nomtest;

std::string linesOf(Recorder& recorder) {
  std::string all;
  for (const LogLine& line : recorder.takeLines()) {
    all += (line.level == NosLogLevel::Information ? "" : "error: ") + line.text + "\n";
  }
  return all;
}

TEST(BoxManager, NamesItsThreadAndSaysWhenThereIsNone) {
  struct Asked {
    bool answer;
    std::string names;
  } asked;
  const auto hook = [](void* context, const char* name) {
    auto& it = *static_cast<Asked*>(context);
    it.names += name + std::string(" ");
    return it.answer;
  };
  nosSetThreadHook(hook, &asked);
  Recorder recorder;
  for (const char* const name : {"ab", "1234567", "12345678", "1234567890", "", ""}) {
    const std::string kept = std::string(name).substr(0, 7), thread = "BoxThread" + kept + " ";
    BoxManager manager(asked.names == "BoxThread BoxThread " ? nullptr : name);
    asked = {false, ""};
    EXPECT_EQ(manager.initialise(true), 3111);
    EXPECT_EQ(linesOf(recorder),
              "[BoxManager::initialise]" + kept + " cannot allocate box thread\n");
    asked.answer = true;
    EXPECT_EQ(manager.initialise(true), 0);
    EXPECT_EQ(asked.names, thread + thread);
  }
  EXPECT_EQ(linesOf(recorder), "");
  nosSetThreadHook(nullptr, nullptr);
}

// Everything is given back whichever allocation fails, and a second call makes the rest.
TEST(BoxManager, SurvivesEveryFailureOfMemory) {
  Recorder recorder;
  unsigned failures[2] = {};
  for (unsigned row = 0; row < 4; ++row) {
    const bool timers = row / 2 == 1, again = row % 2 == 1;
    for (int status = 1, n = 1; status != 0; ++n) {
      const DrivenClock clock;
      const NoLeak noLeak;
      BoxManager manager("memory");
      nosFailAllocation(static_cast<unsigned>(n));
      status = manager.initialise(timers);
      nosFailAllocation(0);
      failures[timers] += status == 3018 ? 1 : 0;
      // Any other failure is that of the thread.
      EXPECT_EQ(status == 3111, linesOf(recorder) != "");
      EXPECT_TRUE(status == 3111 || status == 3018 || status == 0);
      if (status == 0 || !again) continue;
      ASSERT_EQ(manager.initialise(timers), 0);
      EXPECT_EQ(Script(manager).run("t>5 a~5 +4 # +1 #"), timers ? "#0 #2" : "#0 #1");
    }
  }
  EXPECT_GE(failures[0], 2u);
  EXPECT_GE(failures[1], 2 * 5u);
}

TEST(BoxManager, GivesNullWhereMemoryRunsOut) {
  Manager manager("memory");
  Script script(manager);
  Box* box = script.box;
  BoxIOCP* portBox = script.portBox;
  Memo* memos[3] = {script.memo('a'), script.memo('a'), script.memo('a')};
  const std::function<int()> allocations[] = {
      [&] { return manager.boxAllocate(box, false); },
      [&] { return manager.boxIOCPAllocate(portBox, script.port.handle()); },
      [&] { return script.box->memoAllocate(memos[0], 1, 2, false); },
      [&] { return script.box->timerAllocate(memos[1]); },
      [&] { return script.portBox->memoAllocate(memos[2], 1, 2, nullptr); },
  };
  const NoLeak noLeak;
  for (const auto& allocate : allocations) {
    nosFailAllocation(1);
    EXPECT_EQ(allocate(), 3018);
  }
  EXPECT_TRUE(box == nullptr && portBox == nullptr);
  for (const Memo* const memo : memos) EXPECT_EQ(memo, nullptr);
}

// - The calendar is by time, equal times by entry, also when the machine stalls.
// - Timers run in legs of 10,000 ms and end once. One that is started earlier than all others wakes
//   the thread; those of one millisecond end last in, first out, and stand in the box by priority.
// - Stopped or started anew, an expiry that was not received is dropped, though not its signal.
constexpr const char* kDueTable = R"(
a~30 b~10 c~20 d~10 +9 # +1 < < < ^20 < < < = #0 b0/1 d0/0 - c0/1 a0/0 -
| a~10 b~10 a~10 ^10 < < = b0/1 a0/0 | a~9 b~20 a- +19 # +1 b? = #0 box:1
| a~50 +20 a? a~50 +49 a? +1 < = calendar:30 calendar:1 a0/0
| a=3 a~10 b=5! c=1! +10 < < < = b5/2 c1/1 a3/0
| t>25000 t? +9999 t? +1 t? +10000 t? +4999 # t? +1 t? < t? +40000 #
  = wheel:10000 wheel:1 wheel:10000 wheel:5000 #0 wheel:1 box:1 t0/0 idle:0 #0
| t>20000 +19999 # t? +1 < = #0 wheel:1 t0/0 | t>10000 +9999 # +1 < = #0 t0/0
| t>9999 +9998 # +1 < = #0 t0/0 | t>1 +0 # +1 < = #0 t0/0 | t>0 +0 < = t0/0
| t>29999 u>30000 v>30001 +29998 # +1 # +1 # +1 # = #0 #1 #2 #3
| t>90 u>30 v>60 +29 # +1 < +30 < +29 # +1 < = #0 u0/0 v0/0 #0 t0/0
| t>50 u>50 v>50p2 w>50p2 +50 < < < < = w2/3 v2/2 u0/1 t0/0 | t>50p99 u>50p15 +50 < < = u15/1 t99/0
| t>50 +49 t. t? +1 # = idle:0 #0 | t>20 u>40 t. +39 # +1 < = #0 u0/0
| t>20 u>20 t. +19 # +1 < = #0 u0/0 | t>50 +50 t. # t? = #0 idle:0
| t>50 +50 # t>50p3 # +49 # +1 t? # < < = #1 #0 #0 box:1 #1 t3/0 -
| t>50 +30 t>50 +49 # +1 < = #0 t0/0 | t>4294967295 t? +10000 t? = wheel:10000 wheel:10000)";

TEST(BoxManager, MovesWhatIsDueAndNothingElse) {
  Recorder recorder;
  expectScripts(kDueTable, [](const std::string& script) {
    const DrivenClock clock;
    const NoLeak noLeak;
    Manager manager("due");
    return Script(manager).run(script);
  });
  EXPECT_EQ(linesOf(recorder), "");
  const DrivenClock clock;
  Manager plain("plain", false);
  EXPECT_EQ(Script(plain).run("t>5 t? t. a~5 t>9 t? ^20 t? # <"), "idle:0 idle:0 idle:0 #1 a0/0");
  // Behind the longest wait of the thread.
  EXPECT_EQ(Script(plain).run("a~4000000 ^3600000 a? ^399999 # ^1 <"), "calendar:400000 #0 a0/0");
}

// A tick that comes late is not counted by itself, but each that is late already when it is set.
TEST(BoxManager, CountsTheTicksThatItFindsOverdue) {
  Recorder recorder;
  expectScripts(
      R"(
      t>10 u>20 +10 +10 = | t>10 ^100 = | t>10 u>20 ^20 = | t>10 u>20 ^21 = 1 | t>0 ^1 =
    | t>10 u>20 v>30 w>3000 ^100 = 2 | ^5000 = | ^5001 = 1 | ^3332 t>5 ^1000 = 1)",
      [&](const std::string& script) {
        const DrivenClock clock;
        {
          Manager manager("alarmclock");
          Script(manager).run(script);
          EXPECT_EQ(linesOf(recorder), "");
        }
        const std::string line = linesOf(recorder);
        const std::string before = "BoxManager alarmcl: timer management fell _behind ";
        EXPECT_EQ(line, line.empty() ? "" : before + line.substr(before.size(), 1) + " times\n");
        return line.substr(std::min(line.size(), before.size()), 1);
      });
}

// By the system's clock.
TEST(BoxManager, WakesForAMemoThatIsDueBeforeAllOthers) {
  Manager manager("wakes", false);
  Script script(manager);
  for (unsigned delay = 0; delay < 20; ++delay) {
    script.memo('b')->schedule(3'600'000 - delay);
    const std::int64_t start = nosGetRelativeTime();
    script.memo('a')->schedule(delay);
    unsigned value = 0, left = 0;
    script.box->receive(20'000, value, left);
    EXPECT_EQ(value, 1000u);
    EXPECT_GE(nosGetRelativeTime() - start, delay);
  }
}

// The time passes as the test waits, a millisecond with each of its looks at the clock.
TEST(BoxManager, DoesNotRunWhileNothingIsDue) {
  static thread_local bool isTester = false;
  static std::atomic<unsigned> others;
  isTester = true;
  const DrivenClock clock;
  nosSetRelativeClock([]() noexcept {
    others += isTester ? 0 : 1;
    return DrivenClock::now += isTester ? 1 : 0;
  });
  Manager manager("idle", false);
  Box* box = nullptr;
  ASSERT_EQ(manager.boxAllocate(box, false), 0);
  unsigned value, left;
  box->receive(50, value, left);
  EXPECT_LT(others, 5000u);
}

TEST(BoxManager, EndsAtOnceWithAllThatItOwns) {
  CompletionPort port;
  const NoLeak noLeak;
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < 1000; ++i) {
    Manager manager("ends", i % 2 == 0);
    Box* box = nullptr;
    BoxIOCP* portBox = nullptr;
    Memo *memo = nullptr, *timer = nullptr;
    for (int place = 0; place < i % 5; ++place) {
      ASSERT_EQ(manager.boxAllocate(box, place == 2), 0);
      ASSERT_EQ(box->memoAllocate(memo, 1, 0, false), 0);
      ASSERT_EQ(box->timerAllocate(timer), 0);
      place == 1 ? memo->dispatch() : memo->schedule(place == 2 ? 0 : 100'000);
      timer->start(place == 3 ? 1 : 100'000, 0, 0);
    }
    ASSERT_EQ(manager.boxIOCPAllocate(portBox, port.handle()), 0);
    ASSERT_EQ(portBox->memoAllocate(memo, 1, 0, nullptr), 0);
    memo->schedule(1000);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(55));
}

TEST(BoxManager, FreesABoxOfAnotherThroughThatOne) {
  const DrivenClock clock;
  Recorder recorder;
  const NoLeak noLeak;
  Manager manager("own"), stranger("strange");
  Script own(manager), other(stranger);
  BoxManager* const ways[] = {&stranger, &manager};
  for (BoxManager* const by : ways) {
    const bool isOwn = by == &stranger;
    Script beside(stranger);
    Box* box = nullptr;
    BoxIOCP* portBox = nullptr;
    Memo* memo = nullptr;
    ASSERT_EQ(stranger.boxAllocate(box, false), 0);
    ASSERT_EQ(stranger.boxIOCPAllocate(portBox, own.port.handle()), 0);
    ASSERT_EQ(box->memoAllocate(memo, 1, 0, false), 0);
    Script last(stranger);
    last.run("a~5");
    memo->schedule(5);
    by->boxDeallocate(box);
    EXPECT_EQ(reported(recorder), isOwn ? "" : "box->_manager == this");
    by->boxIOCPDeallocate(portBox);
    EXPECT_EQ(reported(recorder), isOwn ? "" : "boxiocp->_manager == this");
    EXPECT_TRUE(box == nullptr && portBox == nullptr);
    EXPECT_EQ(own.run("a~5 +5 <"), "a0/0");
    EXPECT_EQ(beside.run("t>5 +5 <"), "t0/0");
    EXPECT_EQ(last.run("<"), "a0/0");
  }
}

}  // namespace
