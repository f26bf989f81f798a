// Event step by step: the waits on its word are played by a script, so that what happens while a
// thread waits happens exactly there. A nested wait on the same stack plays the second waiter.

#include "nomos/event.h"

#include "platform.h"

#include <gtest/gtest.h>
#include <string>

namespace {

// The steps during each wait on the word in turn, closed by '|':
//   s set   r reset   t the time is over, last of a wait
//   g another thread takes the signal that is there   (...) another thread waits, and its steps
struct Script {
  Event* event;
  const char* next;
  unsigned wakes = 0;
  std::string seen = {};  // results of the other threads' waits
};
Script* script;

// Returns whether the wait that the steps belong to is in time.
bool play() {
  for (;;) {
    switch (*script->next++) {
      case 's':
        script->event->set();
        break;
      case 'r':
        script->event->reset();
        break;
      case '(':
        script->seen += script->event->wait() ? '1' : '0';
        break;
      case 'g':
        script->seen += script->event->wait(0) ? '1' : '0';
        break;
      case 't':
        return ++script->next, false;
      case '|':
      case ')':
        return true;
      default:
        ADD_FAILURE() << "the event waits though nothing follows";
        return false;
    }
  }
}

}  // namespace

bool nomos::platform::waitOnWord(const std::atomic<std::uint64_t>& word, std::uint32_t value,
                                 std::int64_t) noexcept {
  return static_cast<std::uint32_t>(word.load()) != value || play();
}
void nomos::platform::wakeOne(const std::atomic<std::uint64_t>&) noexcept {
  script->wakes += 1;
}
void nomos::platform::wakeAll(const std::atomic<std::uint64_t>&) noexcept {
  script->wakes += 100;
}
std::int64_t nomos::platform::monotonicNanos() noexcept {
  return 0;
}

namespace {

TEST(EventSteps, GrantSignalsAsTheContractSays) {
  static constexpr bool kAuto = false, kManual = true;
  static constexpr struct {
    bool manualReset;
    const char* steps;
    bool result;         // of the wait
    const char* others;  // results of waits of other threads meanwhile
    const char* after;   // results of further waits for 0 ms
    unsigned wakes;      // calls of wakeOne, and 100 for each of wakeAll
  } kRows[] = {
      {kAuto, "s|", true, "", "0", 1},
      {kAuto, "ss|", true, "", "10", 1},   // the second has no waiter left, and is kept
      {kAuto, "sss|", true, "", "10", 1},  // but one only
      {kAuto, "sr|", true, "", "0", 1},    // what a waiter was given is not taken back
      {kAuto, "ssr|", true, "", "0", 1},
      {kAuto, "t|", false, "", "0", 0},
      {kAuto, "st|", true, "", "0", 1},
      {kAuto, "|sr|", true, "", "0", 1},    // woken without reason
      {kAuto, "sg|s|", true, "1", "0", 2},  // who came later took it
      {kAuto, "sg|t|", false, "1", "0", 1},
      {kAuto, "(ss)|", true, "1", "0", 2},  // two waiters, two sets
      {kAuto, "(sss)|", true, "1", "10", 2},
      {kAuto, "(s)s|", true, "1", "0", 2},
      {kAuto, "(s)t|", false, "1", "0", 1},  // two waiters, one set
      {kAuto, "(t)s|", true, "0", "0", 1},   // who gave up counts no more
      {kAuto, "(t)ss|", true, "0", "10", 1},
      {kManual, "s|", true, "", "11", 100},
      {kManual, "ss|", true, "", "11", 100},
      {kManual, "sr|", true, "", "0", 100},  // a reset right behind the set
      {kManual, "srsr|", true, "", "0", 200},
      {kManual, "srt|", true, "", "0", 100},
      {kManual, "(sr)|", true, "1", "0", 100},
      {kManual, "sr(t)|", true, "0", "0", 100},  // a wait that begins behind the reset
      {kManual, "r|t|", false, "", "0", 0},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(std::string(row.manualReset ? "manual " : "auto ") + row.steps);
    Event event(row.manualReset);
    Script steps{&event, row.steps};
    script = &steps;
    EXPECT_EQ(event.wait(), row.result);
    EXPECT_EQ(steps.seen, row.others);
    for (const char* expected = row.after; *expected != '\0'; ++expected) {
      EXPECT_EQ(event.wait(0), *expected == '1');
    }
    EXPECT_EQ(steps.wakes, row.wakes);
    // With nobody waiting a set needs no system call.
    event.set();
    EXPECT_EQ(steps.wakes, row.wakes);
    EXPECT_TRUE(event.wait(0));
  }
}

}  // namespace
