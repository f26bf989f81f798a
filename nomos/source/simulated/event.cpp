// Event among fibers: the state is 1 while it is signalled. A set wakes all that wait; of those
// that wait for an auto-reset event the first to run on takes the signal.

#include "nomos/event.h"

#include "platform.h"
#include "simulated/scheduler.h"

#include <cstdlib>

using nomos::simulated::Simulation;
namespace platform = nomos::platform;

bool Event::_tryTake() noexcept {
  if (_state == 0) return false;
  if (!_manualReset) _state = 0;
  return true;
}

bool Event::_waitUntilNanos(std::int64_t deadline) noexcept {
  Simulation* const simulation = Simulation::running();
  if (simulation == nullptr) std::abort();  // nobody could end the wait
  while (!_tryTake()) {
    if (!simulation->block(this, deadline)) return _tryTake();
  }
  return true;
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
  _state = 1;
  return true;
}

void Event::wakeAll(const Event* event) noexcept {
  if (Simulation* const simulation = Simulation::running()) simulation->wake(event);
}

void Event::set() noexcept {
  if (signal()) wakeAll(this);
}

void Event::reset() noexcept {
  _state = 0;
}
