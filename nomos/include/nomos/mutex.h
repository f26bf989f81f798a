// A named mutex, not recursive: a thread that acquires it twice waits for itself for ever. It is
// two words and needs neither start nor end: all that it holds when free is its name.
#ifndef NOMOS_MUTEX_H
#define NOMOS_MUTEX_H

#include "nomos/annotations.h"
#include "nomos/export.h"

#include <atomic>
#include <cstdint>

class NOMOS_API NOMOS_CAPABILITY("mutex") ThreadMutex {
 public:
  // name must outlive the mutex; debuggers show it. The mutex is usable before main.
  constexpr explicit ThreadMutex(const char* name) noexcept : _name(name) {}
  ThreadMutex(const ThreadMutex&) = delete;
  ThreadMutex& operator=(const ThreadMutex&) = delete;

  // Waits until the mutex is free and takes it.
  NOMOS_IN_PLACE void acquire() NOMOS_ACQUIRE();

  // Takes the mutex if it is free; false, without waiting, if it is not.
  NOMOS_IN_PLACE bool tryAcquire() NOMOS_TRY_ACQUIRE(true);

  // REQUIRES: the calling thread holds the mutex.
  NOMOS_IN_PLACE void relinquish() NOMOS_RELEASE();

  // As given to the constructor.
  const char* name() const noexcept { return _name; }

 private:
#if NOMOS_MUTEX_IN_PLACE
  void _acquireHeld() noexcept;
  void _wakeWaiter() noexcept;
#endif

  // Linux: a futex word, 0 free, 1 held, 2 held with waiters (Drepper, "Futexes Are Tricky", the
  // second mutex). Windows: the SRWLOCK.
  std::atomic<std::uintptr_t> _state{0};
  const char* _name;
};

#if NOMOS_MUTEX_IN_PLACE
inline void ThreadMutex::acquire() NOMOS_NO_THREAD_SAFETY_ANALYSIS {
  if (!tryAcquire()) _acquireHeld();
}

inline bool ThreadMutex::tryAcquire() NOMOS_NO_THREAD_SAFETY_ANALYSIS {
  std::uintptr_t free = 0;
  return _state.compare_exchange_strong(free, 1, std::memory_order_acquire);
}

// A subtraction costs less than an exchange. It frees a word that was held without waiters.
inline void ThreadMutex::relinquish() NOMOS_NO_THREAD_SAFETY_ANALYSIS {
  if (_state.fetch_sub(1, std::memory_order_release) != 1) _wakeWaiter();
}
#endif

// Holds a mutex for the life of a scope.
class NOMOS_SCOPED_CAPABILITY ThreadMutexHold {
 public:
  // Waits until the mutex is free and takes it; it must outlive the scope.
  explicit ThreadMutexHold(ThreadMutex& mutex) NOMOS_ACQUIRE(mutex) : _mutex(mutex) {
    _mutex.acquire();
  }
  ~ThreadMutexHold() NOMOS_RELEASE() { _mutex.relinquish(); }
  ThreadMutexHold(const ThreadMutexHold&) = delete;
  ThreadMutexHold& operator=(const ThreadMutexHold&) = delete;

 private:
  ThreadMutex& _mutex;
};

#endif  // NOMOS_MUTEX_H
