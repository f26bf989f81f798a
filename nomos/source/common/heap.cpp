// XHeap: the system's allocator. The count of live blocks and the failure of an allocation are for
// tests: nothing is counted until one of them asks, so that threads that allocate share no counter.

#include "nomos/heap.h"

#include "nomos/testhooks.h"
#include "platform.h"

#include <atomic>

namespace {

std::atomic<bool> isWatched{false};
std::atomic<std::uint64_t> liveBlocks{0};  // since it is watched, modulo 2^64
// Allocations up to and with the one that fails; 0 when none is to fail.
std::atomic<std::uint64_t> untilFailure{0};

bool failsNow() {
  std::uint64_t left = untilFailure.load(std::memory_order_relaxed);
  while (left != 0) {
    if (untilFailure.compare_exchange_weak(left, left - 1, std::memory_order_relaxed)) {
      return left == 1;
    }
  }
  return false;
}

}  // namespace

XHeap& XHeap::library() noexcept {
  static constinit XHeap heap;
  return heap;
}

void* XHeap::allocate(std::size_t byteCount) noexcept {
  const bool watched = isWatched.load(std::memory_order_relaxed);
  if (watched && failsNow()) return nullptr;
  void* const block = nomos::platform::allocate(byteCount != 0 ? byteCount : 1);
  if (watched && block != nullptr) liveBlocks.fetch_add(1, std::memory_order_relaxed);
  return block;
}

void XHeap::release(void* block) noexcept {
  release(block, 0);
}

void XHeap::release(void* block, std::size_t byteCount) noexcept {
  if (block == nullptr) return;
  if (isWatched.load(std::memory_order_relaxed)) {
    liveBlocks.fetch_sub(1, std::memory_order_relaxed);
  }
  nomos::platform::release(block, byteCount);
}

char* nosGuardedPage() noexcept {
  static char* const page = nomos::platform::guardedPage();
  return page;
}

void nosFailAllocation(std::uint64_t n) {
  untilFailure.store(n, std::memory_order_relaxed);
  isWatched.store(true, std::memory_order_relaxed);
}
std::uint64_t nosAllocatedBlocks() {
  isWatched.store(true, std::memory_order_relaxed);
  return liveBlocks.load(std::memory_order_relaxed);
}
