// Threads as fibers. A handle is twice the fiber's number; fiber 0 is never a thread.

#include "nomos/event.h"
#include "platform.h"
#include "simulated/scheduler.h"

using nomos::simulated::Simulation;

const unsigned nomos::platform::kThreadRefused = 11;

std::uintptr_t nomos::platform::startThread(const char*, ThreadEntry entry, void* argument, bool,
                                            ThreadPriority) noexcept {
  Simulation* const simulation = Simulation::running();
  if (simulation == nullptr) return 0;
  return 2 * std::uintptr_t{simulation->start([entry, argument] { entry(argument); })};
}

bool nomos::platform::joinThread(std::uintptr_t handle, std::uint32_t milliseconds) noexcept {
  return Simulation::running()->join(static_cast<unsigned>(handle / 2), milliseconds);
}

void nomos::platform::releaseThread(std::uintptr_t) noexcept {}
