// A named mutex, not recursive: a thread that acquires it twice waits for itself for ever.
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
  void acquire() NOMOS_ACQUIRE();

  // Takes the mutex if it is free; false, without waiting, if it is not.
  bool tryAcquire() NOMOS_TRY_ACQUIRE(true);

  // REQUIRES: the calling thread holds the mutex.
  void relinquish() NOMOS_RELEASE();

  const char* name() const noexcept { return _name; }

 private:
  // Linux: a futex word, 0 free, 1 held, 2 held with waiters. Windows: the SRWLOCK.
  std::atomic<std::uintptr_t> _state{0};
  const char* _name;
};

// Holds a mutex for the life of a scope.
class NOMOS_SCOPED_CAPABILITY ThreadMutexHold {
 public:
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
