// XHeap: the system's allocator with a count of live blocks and the hook that fails an allocation.
// Both are atomic counters, so that no thread waits for another here.

#include "nomos/heap.h"

#include "nomos/testhooks.h"
#include "platform.h"

#include <atomic>

namespace {

std::atomic<std::uint64_t> liveBlocks{0};
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
  if (failsNow()) return nullptr;
  void* const block = nomos::platform::allocate(byteCount != 0 ? byteCount : 1);
  if (block != nullptr) liveBlocks.fetch_add(1, std::memory_order_relaxed);
  return block;
}

void XHeap::release(void* block) noexcept {
  if (block == nullptr) return;
  liveBlocks.fetch_sub(1, std::memory_order_relaxed);
  nomos::platform::release(block);
}

void nosFailAllocation(std::uint64_t n) {
  untilFailure.store(n, std::memory_order_relaxed);
}
std::uint64_t nosAllocatedBlocks() {
  return liveBlocks.load(std::memory_order_relaxed);
}
