// ThreadMutex as a futex word: 0 free, 1 held, 2 held with waiters (Drepper, "Futexes Are Tricky",
// the second mutex). The futex is the low half of the state.

#include "nomos/mutex.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr std::uintptr_t kFree = 0;
constexpr std::uintptr_t kHeld = 1;
constexpr std::uintptr_t kContended = 2;

void futex(std::atomic<std::uintptr_t>& state, int operation, std::uintptr_t value) {
  syscall(SYS_futex, &state, operation, static_cast<std::uint32_t>(value), nullptr, nullptr, 0);
}

}  // namespace

void ThreadMutex::acquire() NOMOS_NO_THREAD_SAFETY_ANALYSIS {
  std::uintptr_t expected = kFree;
  if (_state.compare_exchange_strong(expected, kHeld, std::memory_order_acquire)) return;
  // Who waits leaves the word contended, since others may wait as well.
  while (_state.exchange(kContended, std::memory_order_acquire) != kFree) {
    futex(_state, FUTEX_WAIT_PRIVATE, kContended);
  }
}

bool ThreadMutex::tryAcquire() NOMOS_NO_THREAD_SAFETY_ANALYSIS {
  std::uintptr_t expected = kFree;
  return _state.compare_exchange_strong(expected, kHeld, std::memory_order_acquire);
}

void ThreadMutex::relinquish() NOMOS_NO_THREAD_SAFETY_ANALYSIS {
  if (_state.exchange(kFree, std::memory_order_release) == kContended) {
    futex(_state, FUTEX_WAKE_PRIVATE, 1);
  }
}
