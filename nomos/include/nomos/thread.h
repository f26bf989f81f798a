// Threads of the library's own.
#ifndef NOMOS_THREAD_H
#define NOMOS_THREAD_H

#include "nomos/export.h"
#include "nomos/relativetime.h"

#include <cstdint>
#include <utility>

// What a thread runs. It must not throw; its result is dropped.
using ThreadEntry = int (*)(void* argument);

// How a thread ranks among those of its process that could run. The system may refuse to raise one
// (Linux asks for a privilege): it then runs as Normal.
enum class ThreadPriority : int {
  Idle = 0,
  Lowest = 1,
  BelowNormal = 2,
  Normal = 3,
  AboveNormal = 4,
  Highest = 5
};

// A thread that can be waited for, or nothing. It is moved, not copied, and used by one thread at a
// time. Destruction neither ends the thread nor waits for it: it runs on, and gives back what it
// holds when it ends.
class NOMOS_API Thread {
 public:
  constexpr Thread() noexcept = default;
  Thread(Thread&& other) noexcept : _handle(std::exchange(other._handle, 0)) {}
  Thread& operator=(Thread&& other) noexcept {
    std::swap(_handle, other._handle);
    return *this;
  }
  ~Thread() { _letGo(); }

  // Whether there is a thread whose end has not been waited for.
  explicit operator bool() const noexcept { return _handle != 0; }

  // Waits until the thread has ended, at most so many milliseconds. True when it has: nothing of it
  // runs any more, all that it did is seen, and this object holds nothing. True at once when it
  // holds nothing. A thread must not wait for itself.
  bool wait(std::uint32_t milliseconds = kNosInfinite) noexcept;

 private:
  friend class ThreadManager;
  static constexpr std::uintptr_t kNotJoinable = 1;  // the handle of no thread
  void _letGo() noexcept;

  std::uintptr_t _handle = 0;
};

// Makes threads.
class NOMOS_API ThreadManager {
 public:
  // Starts a thread that runs entry with argument and ends when it returns.
  // - name, copied, is what debuggers show; Linux shows its first 15 characters. Null is "".
  // - joinable: false lets go of the thread at once; what is returned then only tells that it was
  //   started, and wait returns false at once.
  // - takesSignals: false keeps the signals of the process from running their handlers in it. It
  //   means nothing on Windows.
  // Returns an object that holds nothing, and sets the last error, when memory or a limit of the
  // system refuses the thread.
  static Thread createThread(const char* name, ThreadEntry entry, void* argument, bool joinable,
                             bool takesSignals, ThreadPriority priority) noexcept;
};

#endif  // NOMOS_THREAD_H
