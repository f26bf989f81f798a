// ThreadMutex under four threads, and the heap's counters and failure hook.

#include "nomos/mutex.h"

#include "nomos/heap.h"
#include "nomos/testhooks.h"

#include <gtest/gtest.h>
#include <atomic>
#include <barrier>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

namespace {

constexpr unsigned kThreads = 4;

template <class Work>
void inFourThreads(Work work) {
  std::barrier start(kThreads);
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < kThreads; ++i) {
    threads.emplace_back([&start, work, i] {
      start.arrive_and_wait();
      work(i);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

struct Counter {
  ThreadMutex mutex{"Counter"};
  // Not atomic on purpose: increments are lost, and a race is seen, when the mutex lets two in.
  unsigned count NOMOS_GUARDED_BY(mutex) = 0;
};

TEST(ThreadMutex, LetsOneThreadInAtATime) {
  constexpr unsigned kRounds = 20000;
  Counter counter;
  inFourThreads([&counter](unsigned thread) {
    for (unsigned i = 0; i < kRounds; ++i) {
      if (thread % 2 == 0) {
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
  EXPECT_EQ(counter.count, kThreads * kRounds);
}

// The same thread tries, so that the answer does not hang on time; what it takes, it gives back.
bool isFree(ThreadMutex& mutex) {
  if (!mutex.tryAcquire()) return false;
  mutex.relinquish();
  return true;
}

TEST(ThreadMutex, TryAcquireSucceedsOnlyOnAFreeMutex) {
  ThreadMutex mutex("Tried");
  EXPECT_TRUE(isFree(mutex));
  mutex.acquire();
  std::thread([&mutex] { EXPECT_FALSE(isFree(mutex)); }).join();
  mutex.relinquish();
  std::thread([&mutex] { EXPECT_TRUE(isFree(mutex)); }).join();
}

TEST(ThreadMutex, WakesEveryWaiter) {
  for (unsigned round = 0; round < 50; ++round) {
    ThreadMutex mutex("Waited for");
    std::atomic<unsigned> arrived{0};
    mutex.acquire();
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kThreads; ++i) {
      threads.emplace_back([&mutex, &arrived] {
        arrived.fetch_add(1);
        ThreadMutexHold hold(mutex);
      });
    }
    while (arrived.load() != kThreads) std::this_thread::yield();
    mutex.relinquish();
    for (std::thread& thread : threads) thread.join();
  }
}

TEST(Heap, GivesDistinctAlignedBlocksAndCountsThem) {
  const std::uint64_t before = nosAllocatedBlocks();
  std::vector<void*> blocks;
  for (const std::size_t size : {0u, 0u, 1u, 24u, 100000u}) {
    void* const block = XHeap::library().allocate(size);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignof(std::max_align_t), 0u);
    std::memset(block, 0xAB, size);
    for (const void* other : blocks) EXPECT_NE(block, other);
    blocks.push_back(block);
  }
  EXPECT_EQ(nosAllocatedBlocks(), before + blocks.size());
  for (void* block : blocks) XHeap::library().release(block);
  XHeap::library().release(nullptr);
  EXPECT_EQ(nosAllocatedBlocks(), before);
}

TEST(Heap, FailsTheNthAllocationOnce) {
  const auto fails = [] {
    void* const block = XHeap::library().allocate(8);
    XHeap::library().release(block);
    return block == nullptr;
  };
  const std::uint64_t before = nosAllocatedBlocks();
  for (const std::uint64_t n : {1u, 2u, 5u}) {
    nosFailAllocation(n);
    for (std::uint64_t i = 1; i <= 7; ++i) EXPECT_EQ(fails(), i == n) << n << ' ' << i;
  }
  nosFailAllocation(2);
  nosFailAllocation(0);
  EXPECT_FALSE(fails() || fails() || fails());
  EXPECT_EQ(nosAllocatedBlocks(), before) << "a failed allocation is no block";
}

TEST(Heap, RunsOutOnceWhenThreadsShareIt) {
  const std::uint64_t before = nosAllocatedBlocks();
  std::atomic<unsigned> failures{0};
  nosFailAllocation(500);
  inFourThreads([&failures](unsigned) {
    for (unsigned i = 0; i < 500; ++i) {
      void* const block = XHeap::library().allocate(i);
      if (block == nullptr) failures.fetch_add(1);
      XHeap::library().release(block);
    }
  });
  nosFailAllocation(0);
  EXPECT_EQ(failures.load(), 1u);
  EXPECT_EQ(nosAllocatedBlocks(), before);
}

}  // namespace
