// What ThreadMutex does when it is held or waited for. The futex is the low half of the state.

#include "nomos/mutex.h"

#include "linux/futex.h"

using nomos::platform::futex;

namespace {

constexpr std::uintptr_t kFree = 0;
constexpr std::uintptr_t kContended = 2;

}  // namespace

// Who waits leaves the word contended, since others may wait as well.
void ThreadMutex::_acquireHeld() noexcept {
  while (_state.exchange(kContended, std::memory_order_acquire) != kFree) {
    futex(_state, FUTEX_WAIT, kContended);
  }
}

// The word looks held without waiters for a moment. Who comes then makes it contended again: it
// finds it free before it sleeps, or sleeps beside the one woken here, who leaves the word
// contended.
void ThreadMutex::_wakeWaiter() noexcept {
  _state.store(kFree, std::memory_order_release);
  futex(_state, FUTEX_WAKE, 1);
}
