// Threads: their ends, their names, those that are refused and those that are let go.

#include "nomos/thread.h"

#include "nomos/event.h"
#include "nomos/lasterror.h"
#include "nomos/testhooks.h"

#include <gtest/gtest.h>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace {

bool onWindows() {
  return std::filesystem::path::preferred_separator == '\\';
}

Thread start(const char* name, ThreadEntry entry, void* argument, bool joinable = true,
             bool takesSignals = false) {
  return ThreadManager::createThread(name, entry, argument, joinable, takesSignals,
                                     ThreadPriority::AboveNormal);
}

TEST(Thread, EndsAWaitWhenItEndsAndNotBefore) {
  struct Shared {
    Event mayEnd{false};
    int result = 0;  // not atomic on purpose: the wait orders it
  } shared;
  Thread thread = start(
      "Ends",
      [](void* argument) {
        const auto state = static_cast<Shared*>(argument);
        state->mayEnd.wait();
        state->result = 7;
        return 0;
      },
      &shared);
  ASSERT_TRUE(thread);
  EXPECT_FALSE(thread.wait(0));
  EXPECT_FALSE(thread.wait(5));
  shared.mayEnd.set();
  Thread moved = std::move(thread);
  EXPECT_FALSE(thread);  // NOLINT(bugprone-use-after-move)
  EXPECT_TRUE(moved.wait(60000));
  EXPECT_EQ(shared.result, 7);
  EXPECT_FALSE(moved);
  EXPECT_TRUE(moved.wait(0));
}

TEST(Thread, RunsOnWhenItIsLetGo) {
  struct Shared {
    Event mayEnd{true};
    std::atomic<int> ended{0};
  } shared;
  const ThreadEntry entry = [](void* argument) {
    const auto state = static_cast<Shared*>(argument);
    state->mayEnd.wait();
    ++state->ended;
    return 0;
  };
  for (int i = 0; i < 4; ++i) {
    Thread thread = start("LetGo", entry, &shared, i % 2 == 0);
    ASSERT_TRUE(thread);
    EXPECT_FALSE(thread.wait(0));
    if (i == 3) thread = Thread();
  }
  shared.mayEnd.set();
  while (shared.ended.load() < 4) nosSleep(0);
}

TEST(Thread, ManyComeAndGo) {
  std::atomic<int> ran{0};
  for (int round = 0; round < 20; ++round) {
    std::vector<Thread> threads;
    for (int i = 0; i < 16; ++i) {
      threads.push_back(start(
          nullptr, [](void* count) { return ++*static_cast<std::atomic<int>*>(count); }, &ran));
    }
    for (Thread& thread : threads) EXPECT_TRUE(thread.wait());
    EXPECT_EQ(ran.load(), 16 * (round + 1));
  }
}

TEST(ThreadManager, ShowsTheHookTheWholeNameAndIsRefusedByIt) {
  struct Seen {
    std::string name;
    bool allow = false;
  } seen;
  nosSetThreadHook(
      [](void* context, const char* name) {
        static_cast<Seen*>(context)->name = name;
        return static_cast<Seen*>(context)->allow;
      },
      &seen);
  std::string kernelName;
  const ThreadEntry readName = [](void* text) {
    std::getline(std::ifstream("/proc/thread-self/comm"), *static_cast<std::string*>(text));
    return 0;
  };
  nosSetLastError(0);
  EXPECT_FALSE(start("BoxThreadManager", readName, &kernelName));
  EXPECT_EQ(seen.name, "BoxThreadManager");
  EXPECT_NE(nosGetLastError(), 0u);
  EXPECT_EQ(kernelName, "");
  seen.allow = true;
  Thread thread = start("BoxThreadManager", readName, &kernelName);
  ASSERT_TRUE(thread.wait());
  nosSetThreadHook(nullptr, nullptr);
  if (!onWindows()) {
    EXPECT_EQ(kernelName, "BoxThreadManage");
  }
}

std::atomic<int> handled;

TEST(ThreadManager, KeepsSignalsFromAThreadThatDoesNotTakeThem) {
  const auto before = std::signal(SIGTERM, SIG_DFL);
  for (const bool takes : {false, true}) {
    handled = 0;
    std::signal(SIGTERM, [](int) { ++handled; });  // on Windows for one signal only
    Thread thread = start(
        "Signals", [](void*) { return std::raise(SIGTERM); }, nullptr, true, takes);
    EXPECT_TRUE(thread.wait());
    EXPECT_EQ(handled.load(), takes || onWindows() ? 1 : 0);
  }
  std::signal(SIGTERM, before);
}

}  // namespace
