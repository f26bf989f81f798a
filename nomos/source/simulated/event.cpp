// Event among fibers: the low half of the state is that of the real one (common/event.cpp), which
// says who passes; the high half counts who waits. A set wakes all that wait, and the first to run
// on takes the signal of an auto-reset event.

#include "nomos/event.h"

#include "platform.h"
#include "simulated/scheduler.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

using nomos::simulated::Simulation;
namespace platform = nomos::platform;

namespace {

constexpr std::uint64_t kWaiter = std::uint64_t{1} << 32;

}  // namespace

bool Event::_tryTake() noexcept {
  const auto word = static_cast<std::uint32_t>(_state);
  if (_manualReset) return (word & 1) != 0;
  if (word != 0) --_state;
  return word != 0;
}

bool Event::_waitUntilNanos(std::int64_t deadline) noexcept {
  Simulation* const simulation = Simulation::running();
  if (simulation == nullptr) std::abort();  // nobody could end the wait
  const std::uint32_t closed = _manualReset ? static_cast<std::uint32_t>(_state) & ~1U : 0;
  _state += kWaiter;
  bool inTime = true;
  while (static_cast<std::uint32_t>(_state) == closed && inTime) {
    inTime = simulation->block(this, deadline);
  }
  // A signal that came with the end of the time counts.
  const bool signalled = static_cast<std::uint32_t>(_state) != closed;
  _state -= kWaiter + (signalled && !_manualReset ? 1 : 0);
  return signalled;
}

bool Event::wait(std::uint32_t milliseconds) noexcept {
  if (Simulation* const simulation = Simulation::running()) simulation->step("waits");
  if (_tryTake()) return true;
  if (milliseconds == 0) return false;
  if (milliseconds == kNosInfinite) return _waitUntilNanos(platform::kNever);
  return _waitUntilNanos(platform::monotonicNanos() + milliseconds * platform::kNanosPerMilli);
}

bool Event::waitUntil(std::int64_t relativeTime) noexcept {
  if (Simulation* const simulation = Simulation::running()) simulation->step("waits");
  if (_tryTake()) return true;
  return _waitUntilNanos(relativeTime * platform::kNanosPerMilli);
}

bool Event::signal() noexcept {
  if (Simulation* const simulation = Simulation::running()) simulation->extraStep("sets");
  const auto word = static_cast<std::uint32_t>(_state);
  if (_manualReset) {
    if ((word & 1) == 0) _state += 3;
  } else if (word <= _state / kWaiter) {
    ++_state;
  }
  return true;
}

void Event::wakeAll(const Event* event) noexcept {
  if (Simulation* const simulation = Simulation::running()) simulation->wake(event);
}

void Event::set() noexcept {
  if (signal()) wakeAll(this);
}

void Event::reset() noexcept {
  if (_manualReset) {
    _state &= ~std::uint64_t{1};
  } else {
    // What waiting threads have been given stays theirs.
    const std::uint64_t waiters = _state / kWaiter;
    _state = waiters * kWaiter + std::min<std::uint64_t>(_state % kWaiter, waiters);
  }
}
