// Something that threads wait for until another says that it has happened.
// A manual-reset event stays signalled, and lets every waiter pass, until reset. An auto-reset
// event lets one waiter pass for each set: with two threads waiting, two sets release both; with
// none waiting it keeps one signal, for the next that comes.
#ifndef NOMOS_EVENT_H
#define NOMOS_EVENT_H

#include "nomos/export.h"
#include "nomos/relativetime.h"

#include <atomic>
#include <cstdint>

// Any thread may call any operation at any time. What a thread did before set is seen by the
// thread that wait releases, and by one whose reset takes that signal back. Who is released may
// destroy the event at once, even while the call of set is still returning. No operation fails or
// allocates memory.
class NOMOS_API Event {
 public:
  // The event is usable before main.
  constexpr explicit Event(bool manualReset, bool signalled = false) noexcept
      : _state(signalled ? 1 : 0), _manualReset(manualReset) {}
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  // Waits for the signal, at most so many milliseconds of real time, 0 not at all. True when it was
  // signalled: an auto-reset event has then given its signal to this thread. False, never before
  // the time is over, when it was not.
  bool wait(std::uint32_t milliseconds = kNosInfinite) noexcept;

  // Waits for the signal, at most until nosGetRelativeTime reaches relativeTime: the wait ends on
  // that boundary, not up to a millisecond behind it as a wait for a difference does. A time that
  // has been reached does not wait. While a test replaces the clock, this is the replaced clock,
  // looked at every millisecond.
  bool waitUntil(std::int64_t relativeTime) noexcept;

  // Signals the event and wakes who may pass.
  void set() noexcept;

  // set in two steps, for who sets under a lock that the released will want at once: signal says
  // whether somebody has to be woken, which wakeAll does when the lock has been given back. Nothing
  // of the event is read then: who was released meanwhile may have destroyed it.
  [[nodiscard]] bool signal() noexcept;
  static void wakeAll(const Event* event) noexcept;

  // Takes back a signal that nobody has been given.
  void reset() noexcept;

 private:
  bool _tryTake() noexcept;
  bool _waitUntilNanos(std::int64_t deadline) noexcept;

  // Low half: the word that the system waits on, of which bit 0 is set while a manual-reset event
  // is signalled, and which counts the signals of an auto-reset event. High half: waiting threads.
  std::atomic<std::uint64_t> _state;
  const bool _manualReset;
};

#endif  // NOMOS_EVENT_H
