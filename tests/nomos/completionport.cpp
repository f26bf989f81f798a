// Completion ports: results, last errors, order, and packets between many threads.

#include "nomos/completionport.h"

#include "nomos/event.h"
#include "nomos/lasterror.h"
#include "nomos/testhooks.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

namespace {

struct Packet {
  NomULong bytes = 7;
  std::uint64_t key = 8;
  void* overlapped = this;
};

// What a get leaves behind: its result, its last error (0 for success) and its outputs.
struct Got : Packet {
  Got(NosCompletionPort port, std::uint32_t milliseconds) {
    nosSetLastError(0);
    success = nosGetCompletion(port, bytes, key, overlapped, milliseconds);
    error = success ? 0 : nosGetLastError();
  }
  bool untouched() const { return !success && bytes == 7 && key == 8 && overlapped == nullptr; }
  bool success;
  unsigned error;
};

TEST(CompletionPort, GivesPacketsInTheirOrder) {
  CompletionPort port;
  int object = 0;
  const struct {
    NomULong bytes;
    std::uint64_t key;
    void* overlapped;
  } rows[] = {{0, 0, nullptr}, {0xFFFFFFFF, 0xFFFFFFFFFFFFFFFF, &object}, {1, 1ULL << 32, nullptr}};
  for (const auto& row : rows) EXPECT_TRUE(port.post(row.bytes, row.key, row.overlapped));
  for (const auto& row : rows) {
    const Got got(port.handle(), kNosInfinite);
    EXPECT_TRUE(got.success);
    EXPECT_EQ(got.bytes, row.bytes);
    EXPECT_EQ(got.key, row.key);
    EXPECT_EQ(got.overlapped, row.overlapped);
  }
}

TEST(CompletionPort, KeepsOrderWhileItGrowsAndRefusesWhatItCannotHold) {
  CompletionPort port;
  const std::uint64_t before = nosAllocatedBlocks();
  std::uint64_t first = 0, next = 0;
  for (int round = 0; round < 500; ++round) {
    for (int i = 0; i < 3; ++i) {
      nosFailAllocation(round % 7 == 0 ? 1 : 0);
      if (port.post(0, next, nullptr)) {
        ++next;
      } else {
        EXPECT_EQ(nosGetLastError(), kNosErrorNotEnoughMemory);
      }
    }
    nosFailAllocation(0);
    if (first < next) {
      ASSERT_EQ(Got(port.handle(), 0).key, first++);
    }
  }
  EXPECT_GT(next, 1400u);
  while (first < next - 1) ASSERT_EQ(Got(port.handle(), 0).key, first++);
  EXPECT_TRUE(port.close());
  EXPECT_EQ(nosAllocatedBlocks(), before);
}

TEST(CompletionPort, FailsAsTheSystemDoes) {
  CompletionPort closed;
  const NosCompletionPort handle = closed.handle();
  CompletionPort empty;
  for (const std::uint32_t limit : {0u, 20u}) {
    const std::int64_t start = nosGetRelativeTime();
    const Got late(empty.handle(), limit);
    EXPECT_EQ(late.error, 258u);
    EXPECT_TRUE(late.untouched());
    EXPECT_GE(nosGetRelativeTime() - start, limit);
  }
  EXPECT_TRUE(closed.close());
  for (const NosCompletionPort bad : {handle, NosCompletionPort{nullptr}}) {
    const Got none(bad, kNosInfinite);
    EXPECT_EQ(none.error, 6u);
    EXPECT_TRUE(none.untouched());
    nosSetLastError(0);
    EXPECT_FALSE(nosPostCompletion(bad, 1, 2, nullptr));
    EXPECT_EQ(nosGetLastError(), 6u);
    nosSetLastError(0);
    EXPECT_FALSE(nosCloseCompletionPort(bad));
    EXPECT_EQ(nosGetLastError(), 6u);
  }
  EXPECT_TRUE(empty.post(1, 2, nullptr));
}

// A thread that comes too late for the wait finds no port. Some round catches it waiting.
TEST(CompletionPort, ReleasesItsWaitersWhenItIsClosed) {
  for (bool caught = false; !caught;) {
    CompletionPort port;
    std::atomic<int> coming{0};
    unsigned errors[2] = {};
    std::vector<std::thread> waiters;
    for (unsigned& error : errors) {
      waiters.emplace_back([&coming, &error, handle = port.handle()] {
        ++coming;
        const Got got(handle, 2000);
        error = got.error;
        EXPECT_TRUE(got.untouched());
      });
    }
    while (coming.load() < 2) std::this_thread::yield();
    for (int i = 0; i < 100; ++i) std::this_thread::yield();
    port.close();
    for (std::thread& waiter : waiters) waiter.join();
    if (std::count(errors, errors + 2, 258u) != 0)
      GTEST_SKIP() << "the system's port keeps waiters";
    for (const unsigned error : errors) {
      ASSERT_TRUE(error == 6 || error == 735) << error;
      caught = caught || error == 735;
    }
  }
}

// Consumers give up all the time, so packets are handed over and put into the queue, in turn.
TEST(CompletionPort, LosesNothingBetweenManyThreads) {
  constexpr std::uint64_t kProducers = 3, kConsumers = 3, kEach = 5000;
  CompletionPort port;
  std::atomic<unsigned> received[kProducers * kEach] = {};
  std::atomic<std::uint64_t> left{kProducers * kEach};
  std::vector<std::thread> threads;
  for (std::uint64_t consumer = 0; consumer < kConsumers; ++consumer) {
    threads.emplace_back([&, consumer] {
      std::int64_t last[kProducers] = {-1, -1, -1};
      while (left.load() != 0) {
        const Got got(port.handle(), static_cast<std::uint32_t>(consumer));
        if (!got.success) {
          ASSERT_EQ(got.error, 258u);
          continue;
        }
        ++received[got.bytes * kEach + got.key];
        // One producer's packets come to one consumer in their order.
        ASSERT_GT(static_cast<std::int64_t>(got.key), last[got.bytes]);
        last[got.bytes] = static_cast<std::int64_t>(got.key);
        --left;
      }
    });
  }
  for (std::uint64_t producer = 0; producer < kProducers; ++producer) {
    threads.emplace_back([&, producer] {
      for (std::uint64_t i = 0; i < kEach; ++i) {
        ASSERT_TRUE(port.post(static_cast<NomULong>(producer), i, nullptr));
        if (i % 16 == 0) std::this_thread::yield();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const std::atomic<unsigned>& count : received) ASSERT_EQ(count.load(), 1u);
}

}  // namespace
