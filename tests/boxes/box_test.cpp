// What becomes of memos in a box, who receives them and when, and calls that break the contract.

#include "boxes/boxscript.h"

#include "nomos/event.h"

#include <thread>

namespace {

using namespace nomtest;

// - A queued memo keeps its place; an update puts it behind its equals, or takes it out.
// - Signals by number: 0 takes one away.
// - Scheduling and cancelling drop signals; a dispatch takes a scheduled memo out.
// - Order: 0 goes to the tail, more than the head's before it; any other behind the first of lower
//   priority that is not the head. A memo with signals left goes back by its priority.
constexpr const char* kMemoTable = R"(
< a? # = - idle:0 #0 | a! a! a! a? # < < a? a! a? = box:3 #3 a0/0 - idle:0 box:1
| a=0s a! a! a! < a? < < < = a0/2 box:2 a0/1 a0/0 -
| a=5! b=5! a! < < = a5/1 b5/0 | a=5! b=5! a=5! < < = b5/1 a5/0
| a=5!3 a=6! # < = #1 a6/0 | a! a! a=3 a? # < a! < = idle:0 #0 - a3/0
| a=3s a! a! a=4 a! a! < < = a4/0 - | a=5!9 a=5s < b! < = - b0/0
| a!1 a? b!5 b? # < < = box:1 box:5 #6 a0/5 b0/0 | a! a!5 a? # = box:6 #6
| a! a! a!0 a? # = box:2 #2 | a!0 a? # b! < < = box:0 #0 a0/1 b0/0
| a!2147483647 a!2147483647 a!2 a? # b! # = box:0 #0 #1
| a=2!3 a? < < < < = box:3 a2/2 a2/1 a2/0 - | a! a=2!1 a? # < = box:1 #1 a2/0
| a!5 a~50 a? # < +50 # = calendar:50 #0 - #1 | a!5 a- a? # a! a? < = idle:0 #0 box:1 a0/0
| a~50 a- a? +50 < = idle:0 - | a~50 a!3 a? +50 # < < = box:3 #3 a0/0 -
| a~50 a=4 a? +50 < = idle:0 - | a~50 a=4s! +50 < < = a4/0 - | a~50 a=4!2 +50 < < = a4/1 a4/0
| a~4294967295 a? a~0 +0 < a? = calendar:4294967295 a0/0 idle:0
| a=0! b=0! < < = a0/1 b0/0 | a=5! b=9! c=5! < < < = b9/2 a5/1 c5/0
| a=10! b=7! c=0! < < < = a10/2 b7/1 c0/0 | a=10! b=5! c=7! < < < = a10/2 b5/1 c7/0
| a=10! b=5! c=7! d=7! < < < < = a10/3 b5/2 d7/1 c7/0
| a=10! b=5! c=3! d=7! < < < < = a10/3 b5/2 d7/1 c3/0
| a=10! b=10! c=0! d=10! < < < < = a10/3 b10/2 c0/1 d10/0
| a=10! b=0! c=5! < < < = a10/2 b0/1 c5/0
| a=15! b=99! c=500! d=16!1 < < < < = a15/3 b99/2 c500/1 d16/0
| a=5!3 b=5! < < < < = a5/3 b5/2 a5/1 a5/0
| a=5!2 b=4!2 c=6! < < < < < = c6/4 a5/3 a5/2 b4/1 b4/0)";

// Calls through a box that is not the memo's act on the memo's own box.
TEST(Box, DoesAsTheTableOfOperationsSays) {
  const DrivenClock clock;
  const NoLeak noLeak;
  Manager manager("own", false), stranger("strange", false);
  Script near(manager), far(stranger);
  BoxCommon* const ways[] = {nullptr, near.box, far.box};
  for (BoxCommon* const through : ways) {
    expectScripts(kMemoTable,
                  [&](const std::string& script) { return Script(manager).run(script, through); });
    EXPECT_EQ(near.run("# <<") + far.run("# <<"), "#0 -#0 -");
  }
  // A separate memo without a signal is received; what is then left of it is left open.
  EXPECT_EQ(Script(manager).run("a=2!0 <").substr(0, 3), "a2/");
}

TEST(Box, WaitsForAMemoUntilTheTimeIsOver) {
  Manager manager("waits", false);
  Box* boxes[2];
  Memo* memos[2];
  unsigned value = 7, left = 7;
  for (const unsigned i : {0u, 1u}) {
    ASSERT_EQ(manager.boxAllocate(boxes[i], i == 1), 0);
    ASSERT_EQ(boxes[i]->memoAllocate(memos[i], 10 + i, 0, false), 0);
    for (const unsigned timeout : {0u, 1u, 30u}) {
      const std::int64_t start = nosGetRelativeTime();
      boxes[i]->receive(timeout, value, left);
      EXPECT_GE(nosGetRelativeTime() - start, timeout);
      EXPECT_EQ(value + left, 0u);
    }
  }
  // Each memo is the answer to the other, with and without a limit, and with one near 2^32.
  constexpr unsigned kTimeouts[] = {kNosInfinite, kNosInfinite - 1, 60'000};
  const auto play = [&](unsigned own) {
    for (int i = 0; i < 3000; ++i) {
      unsigned received = 0, rest = 7;
      if (own == 0) memos[1]->dispatch();
      boxes[own]->receive(kTimeouts[i % 3], received, rest);
      ASSERT_EQ(received + rest, 10 + own);
      if (own == 1) memos[0]->dispatch();
    }
  };
  std::thread other(play, 1);
  play(0);
  other.join();
}

// Holds one thread where it reads the clock for the tenth time, which is while it waits for a memo;
// for all others each reading takes 4 ms.
struct Hold {
  static std::int64_t read() noexcept {
    if (isHeld && ++readings == 10) {
      reached.set();
      goOn.wait();
    }
    return DrivenClock::now += isHeld ? 0 : 4;
  }
  static inline thread_local bool isHeld = false;
  static inline thread_local int readings = 0;
  static inline Event reached{true}, goOn{true};
};

TEST(Box, AdmitsOneReceiverAtATimeWhenSerialised) {
  const DrivenClock clock;
  Hold::reached.reset();
  Hold::goOn.reset();
  nosSetRelativeClock(Hold::read);
  Manager manager("serial", false);
  Box* box;
  Memo* memo;
  ASSERT_EQ(manager.boxAllocate(box, true), 0);
  ASSERT_EQ(box->memoAllocate(memo, 5, 0, false), 0);
  unsigned value = 0, left = 0, held = 0;
  std::thread holder([&] {
    Hold::isHeld = true;
    unsigned none;
    box->receive(kNosInfinite - 1, held, none);
  });
  Hold::reached.wait();
  memo->dispatch();
  for (const unsigned timeout : {0u, 30u}) {
    const std::int64_t start = DrivenClock::now;
    box->receive(timeout, value, left);
    EXPECT_EQ(value + left, 0u) << "received beside another receiver";
    EXPECT_GE(DrivenClock::now - start, timeout);
    EXPECT_EQ(box->signalCount(), 1);
  }
  Hold::goOn.set();
  memo->dispatch();  // one more of the same
  holder.join();
  EXPECT_EQ(held, 5u);
  memo->dispatch();
  box->receive(30, value, left);
  EXPECT_EQ(value, 5u);
}

// The sender is done with the box once the memo can be received, as far as others can tell.
TEST(Box, MayBeFreedByWhoReceivesItsLastMemo) {
  Manager manager("frees", false);
  for (int i = 0; i < 200; ++i) {
    Box* box = nullptr;
    Memo* memo = nullptr;
    ASSERT_EQ(manager.boxAllocate(box, false), 0);
    ASSERT_EQ(box->memoAllocate(memo, 5, 0, false), 0);
    std::thread sender([memo] { memo->dispatch(); });
    unsigned value = 0, left = 0;
    box->receive(kNosInfinite, value, left);
    EXPECT_EQ(value, 5u);
    manager.boxDeallocate(box);
    sender.join();
  }
}

constexpr const char* kNotMemo = "memo->_usage == MU_Memo";
constexpr const char* kNotTimer = "memo->_usage == MU_Timer";

TEST(BoxContract, ReportsTheWrongUsageAndDoesTheOperation) {
  const DrivenClock clock;
  Manager manager("usage");
  Recorder recorder;
  const char* expression = kNotMemo;
  const auto run = [&](const std::string& script) {
    const std::string said = Script(manager).run(script);
    EXPECT_EQ(reported(recorder), expression) << script;
    return said;
  };
  expectScripts(R"(
      t>90 t! t? +90 # = box:1 #1 | t>90 t!3 t? +90 # = box:3 #3
    | t>90 t=4! t? +90 # < = box:1 #1 t4/0 | t>90 t=4!2 t? +90 # = box:2 #2
    | t>90 t~40 t? +39 # +1 # = calendar:40 #0 #1 | t>90 t- t? +90 # = idle:0 #0
    | t>90 t=4 t? +90 # = idle:0 #0)",
                run);
  expression = kNotTimer;
  expectScripts(R"(
      a!2 a>70 a? +69 # = wheel:70 #0 | a!2 a. a? # = idle:0 #0
    | a~20 a>70 a? +69 # = wheel:70 #0)",
                run);
  Script script(manager);
  Memo loose(script.box);
  EXPECT_EQ(stateOf(&loose), "idle:0");
  EXPECT_EQ(reported(recorder), "memo->_usage == MU_Memo || memo->_usage == MU_Timer");
  loose.dispatch();
  loose.schedule(5);
  EXPECT_EQ(reported(recorder), std::string(kNotMemo) + "; " + kNotMemo);
  loose.start(5, 5, 5);
  EXPECT_EQ(reported(recorder), kNotTimer);
  EXPECT_EQ(script.run("a~5 ^5 < <"), "a0/0 -");  // and none of it is done
  // A copy of a queued memo is in no queue: taking it out leaves the queue as it is.
  script.run("a!");
  Memo copy(*script.memo('a'));
  copy.cancel();
  EXPECT_EQ(reported(recorder, "objman/common/source/boxes", "Assertion failed"),
            "(prev != 0 || next != 0) || (_boxHead == memo && _boxCount == 1)");
  EXPECT_EQ(script.run("a? # <"), "box:1 #1 a0/0");
}

// Through a box of the same manager and of another, beside other memos in queue and wheel.
TEST(BoxContract, FreesAForeignMemoThroughItsOwnBox) {
  const DrivenClock clock;
  Recorder recorder;
  const NoLeak noLeak;
  Manager manager("own"), stranger("strange");
  Script own(manager);
  for (unsigned row = 0; row < 8; ++row) {
    const bool isOwn = row % 2 == 0, asTimer = row / 2 % 2 == 0;
    for (const char* const first : {"a-", "a!", "a~7", "t.", "t>7", "t>7 +7"}) {
      SCOPED_TRACE(first + std::to_string(row));
      Script script(row < 4 ? manager : stranger);
      script.run(first);
      script.run("c! u>9");
      Memo*& memo = script.memo(first[0]);
      Box* const box = isOwn ? script.box : own.box;
      const std::uint64_t blocks = nosAllocatedBlocks();
      asTimer ? box->timerDeallocate(memo) : box->memoDeallocate(memo);
      EXPECT_EQ(memo, nullptr);
      EXPECT_EQ(nosAllocatedBlocks(), blocks - 1);
      std::string expected = (first[0] == 't') == asTimer ? "" : asTimer ? kNotTimer : kNotMemo;
      if (!isOwn) expected += (expected.empty() ? "" : "; ") + std::string("memo->_box == this");
      EXPECT_EQ(reported(recorder), expected);
      EXPECT_EQ(script.run("+9 # < < <") + own.run(" #"), "#2 c0/1 u0/0 -#0");
    }
  }
}

}  // namespace
