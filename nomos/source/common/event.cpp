// Event over a word that the system can wait on, the low half of the state.
// Auto-reset: the word is the number of signals that may be taken. A set adds one unless there is
// one more than waiters already, so that each set releases a waiter of its own and one signal is
// kept. Any thread may take a signal, a waiter or one that just came.
// Manual-reset: bit 0 of the word is the signal, the rest counts the sets that gave one. A waiter
// passes when the word is no more what it found: also when a reset followed the set at once.

#include "nomos/event.h"

#include "common/relativetime.h"
#include "platform.h"

#include <algorithm>

namespace platform = nomos::platform;

namespace {

constexpr std::uint64_t kWaiter = std::uint64_t{1} << 32;

std::uint32_t wordOf(std::uint64_t state) {
  return static_cast<std::uint32_t>(state);
}
std::uint32_t waitersOf(std::uint64_t state) {
  return static_cast<std::uint32_t>(state >> 32);
}

// The state with another word.
std::uint64_t withWord(std::uint64_t state, std::uint32_t word) {
  return (state & ~std::uint64_t{0xFFFFFFFF}) | word;
}

}  // namespace

// Takes a signal that is there.
bool Event::_tryTake() noexcept {
  std::uint64_t state = _state.load(std::memory_order_acquire);
  if (_manualReset) return (state & 1) != 0;
  while (wordOf(state) != 0) {
    if (_state.compare_exchange_weak(state, state - 1, std::memory_order_acquire)) return true;
  }
  return false;
}

bool Event::_waitUntilNanos(std::int64_t deadline) noexcept {
  std::uint64_t state = _state.fetch_add(kWaiter, std::memory_order_relaxed) + kWaiter;
  const std::uint32_t closed = _manualReset ? wordOf(state) & ~1U : 0;
  const std::uint64_t leaveWithSignal = _manualReset ? kWaiter : kWaiter + 1;
  for (bool inTime = true;;) {
    state = _state.load(std::memory_order_relaxed);
    // A signal that came with the end of the time counts.
    const bool signalled = wordOf(state) != closed;
    if (signalled || !inTime) {
      const std::uint64_t next = state - (signalled ? leaveWithSignal : kWaiter);
      if (_state.compare_exchange_weak(state, next, std::memory_order_acquire)) return signalled;
    } else {
      inTime = platform::waitOnWord(_state, closed, deadline);
    }
  }
}

bool Event::wait(std::uint32_t milliseconds) noexcept {
  if (_tryTake()) return true;
  if (milliseconds == 0) return false;
  if (milliseconds == kNosInfinite) return _waitUntilNanos(platform::kNever);
  return _waitUntilNanos(platform::monotonicNanos() + milliseconds * platform::kNanosPerMilli);
}

bool Event::waitUntil(std::int64_t relativeTime) noexcept {
  if (_tryTake()) return true;
  if (nomos::relativeClockIsReplaced()) {
    while (nosGetRelativeTime() < relativeTime) {
      if (wait(1)) return true;
    }
    return _tryTake();
  }
  const std::int64_t millis = std::max<std::int64_t>(relativeTime, 0);
  if (millis > platform::kNever / platform::kNanosPerMilli) {
    return _waitUntilNanos(platform::kNever);
  }
  return _waitUntilNanos(millis * platform::kNanosPerMilli);
}

// The exchange happens also where the word stays as it is: it orders what this thread did before
// what the next taker of the signal, or a reset, sees. Nothing of the event is read behind it.
bool Event::signal() noexcept {
  const bool manualReset = _manualReset;
  std::uint64_t state = _state.load(std::memory_order_relaxed);
  std::uint64_t next;
  do {
    const std::uint32_t word = wordOf(state);
    const bool open = manualReset ? (word & 1) != 0 : word > waitersOf(state);
    next = open ? state : withWord(state, word + (manualReset ? 3 : 1));
  } while (!_state.compare_exchange_weak(state, next, std::memory_order_release,
                                         std::memory_order_relaxed));
  if (next == state || waitersOf(state) == 0) return false;
  return manualReset || wordOf(state) < waitersOf(state);
}

void Event::wakeAll(const Event* event) noexcept {
  platform::wakeAll(event->_state);
}

void Event::set() noexcept {
  const bool manualReset = _manualReset;
  if (!signal()) return;
  manualReset ? platform::wakeAll(_state) : platform::wakeOne(_state);
}

void Event::reset() noexcept {
  std::uint64_t state = _state.load(std::memory_order_relaxed);
  std::uint64_t next;
  do {
    const std::uint32_t word = wordOf(state);
    const std::uint32_t closed = _manualReset ? word & ~1U : std::min(word, waitersOf(state));
    next = withWord(state, closed);
  } while (!_state.compare_exchange_weak(state, next, std::memory_order_acq_rel));
}
