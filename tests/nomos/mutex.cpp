// ThreadMutex under four threads, and the heap's counters and failure hook.

#include "nomos/mutex.h"

#include "nomos/heap.h"
#include "nomos/testhooks.h"

#include "support/threads.h"

#include <gtest/gtest.h>
#include <atomic>
#include <cstdint>
#include <thread>

namespace {

struct Counter {
  ThreadMutex mutex{"Counter"};
  // Not atomic on purpose: increments are lost, and a race is seen, when the mutex lets two in.
  unsigned count NOMOS_GUARDED_BY(mutex) = 0;
};

TEST(ThreadMutex, LetsOneThreadInAtATime) {
  Counter counter;
  nomtest::inThreads(4, [&counter](unsigned thread) {
    for (unsigned i = 0; i < 20000; ++i) {
      if (thread != 0) {
        ThreadMutexHold hold(counter.mutex);
        ++counter.count;
      } else {
        while (!counter.mutex.tryAcquire()) std::this_thread::yield();
        ++counter.count;
        counter.mutex.relinquish();
      }
    }
  });
  ThreadMutexHold hold(counter.mutex);
  EXPECT_EQ(counter.count, 80000u);
  std::thread([&counter] { EXPECT_FALSE(counter.mutex.tryAcquire()); }).join();
}

TEST(Heap, FailsTheNthAllocationOnceWhenThreadsShareIt) {
  const std::uint64_t before = nosAllocatedBlocks();
  std::atomic<unsigned> failures{0};
  const auto allocate = [&](unsigned times) {
    for (; times > 0; --times) {
      void* const block = XHeap::library().allocate(times);
      failures += block == nullptr;
      XHeap::library().release(block);
    }
    return failures.load();
  };
  nosFailAllocation(3);
  EXPECT_EQ(allocate(2), 0u);
  EXPECT_EQ(allocate(4), 1u);
  for (unsigned round = 2; round < 50; ++round) {
    nosFailAllocation(500);
    nomtest::inThreads(4, [&allocate](unsigned) { allocate(500); });
    EXPECT_EQ(failures.load(), round);
  }
  EXPECT_EQ(nosAllocatedBlocks(), before);
}

}  // namespace
