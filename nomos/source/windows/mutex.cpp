// ThreadMutex as a slim reader-writer lock, only ever taken exclusively. All zero is a free lock.

#include "nomos/mutex.h"

#include <windows.h>

static_assert(sizeof(SRWLOCK) == sizeof(std::atomic<std::uintptr_t>));
static_assert(alignof(SRWLOCK) == alignof(std::atomic<std::uintptr_t>));

namespace {

SRWLOCK* lockOf(std::atomic<std::uintptr_t>& state) {
  return reinterpret_cast<SRWLOCK*>(&state);
}

}  // namespace

void ThreadMutex::acquire() NOMOS_NO_THREAD_SAFETY_ANALYSIS {
  AcquireSRWLockExclusive(lockOf(_state));
}

bool ThreadMutex::tryAcquire() NOMOS_NO_THREAD_SAFETY_ANALYSIS {
  return TryAcquireSRWLockExclusive(lockOf(_state)) != 0;
}

void ThreadMutex::relinquish() NOMOS_NO_THREAD_SAFETY_ANALYSIS {
  ReleaseSRWLockExclusive(lockOf(_state));
}
