// The relative clock: whole milliseconds of a clock that only runs forward, from a moment of no
// meaning. Only the difference of two readings says something.
#ifndef NOMOS_RELATIVETIME_H
#define NOMOS_RELATIVETIME_H

#include "nomos/export.h"

#include <cstdint>

// A limit in milliseconds that is none: the wait ends only with what it waits for.
inline constexpr std::uint32_t kNosInfinite = 0xFFFFFFFF;

// The milliseconds of the relative clock, rounded down; never less than an earlier reading of any
// thread. The clock goes on when the wall clock is set.
NOMOS_API std::int64_t nosGetRelativeTime() noexcept;

// Suspends the calling thread for at least so many milliseconds; 0 gives way to others once.
NOMOS_API void nosSleep(std::uint32_t milliseconds) noexcept;

// Asks the system to end timed waits of the calling thread as near to their time as it can, which
// costs some power: without it they may end 50 microseconds (Linux) or 16 milliseconds (Windows)
// late. It lasts until the thread ends; on Windows, until the process ends for a thread that
// ThreadManager did not make.
NOMOS_API void nosUseFinestTimerSlack() noexcept;

#endif  // NOMOS_RELATIVETIME_H
