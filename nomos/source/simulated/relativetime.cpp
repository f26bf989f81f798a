// The virtual clock, and sleep by it.

#include "nomos/relativetime.h"

#include "platform.h"
#include "simulated/scheduler.h"

using nomos::simulated::Simulation;

std::int64_t nomos::platform::monotonicNanos() noexcept {
  Simulation* const simulation = Simulation::running();
  return simulation != nullptr ? simulation->readClock() : 0;
}

void nosSleep(std::uint32_t milliseconds) noexcept {
  Simulation* const simulation = Simulation::running();
  if (simulation == nullptr) return;
  simulation->step("sleeps");
  if (milliseconds == 0) return;
  const char nobody = 0;  // no wake names it
  simulation->block(&nobody, simulation->now() + milliseconds * nomos::platform::kNanosPerMilli);
}

void nosUseFinestTimerSlack() noexcept {}
