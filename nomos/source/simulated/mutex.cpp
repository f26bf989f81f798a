// ThreadMutex among fibers: the state is 1 while it is held. Who waits tries again when it is given
// back, so that any of the waiters, or one that just came, may have it. Outside a simulation there
// is nobody to wait for.

#include "nomos/mutex.h"

#include "platform.h"
#include "simulated/scheduler.h"

using nomos::simulated::Simulation;

static_assert(NOMOS_MUTEX_IN_PLACE == 0, "every call has to be seen");

namespace {

void take(const ThreadMutex& mutex) {
  if (Simulation* const simulation = Simulation::running()) {
    simulation->countLocks(1);
    simulation->observer().acquired(mutex);
  }
}

}  // namespace

void ThreadMutex::acquire() NOMOS_NO_THREAD_SAFETY_ANALYSIS {
  Simulation* const simulation = Simulation::running();
  if (simulation != nullptr) {
    simulation->step("acquires");
    while (_state != 0) simulation->block(this, nomos::platform::kNever);
  }
  _state = 1;
  take(*this);
}

bool ThreadMutex::tryAcquire() NOMOS_NO_THREAD_SAFETY_ANALYSIS {
  if (Simulation* const simulation = Simulation::running()) simulation->step("tries to acquire");
  if (_state != 0) return false;
  _state = 1;
  take(*this);
  return true;
}

void ThreadMutex::relinquish() NOMOS_NO_THREAD_SAFETY_ANALYSIS {
  Simulation* const simulation = Simulation::running();
  if (simulation != nullptr) simulation->observer().relinquishing(*this);
  _state = 0;
  if (simulation == nullptr) return;
  simulation->countLocks(-1);
  simulation->wake(this);
  simulation->extraStep("has relinquished");
}
