// The monotonic clock, sleep, and how late the kernel may end a wait.

#include "nomos/relativetime.h"

#include "platform.h"

#include <cerrno>
#include <ctime>

#include <sched.h>
#include <sys/prctl.h>

std::int64_t nomos::platform::monotonicNanos() noexcept {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * std::int64_t{1000000000} + now.tv_nsec;
}

void nosSleep(std::uint32_t milliseconds) noexcept {
  if (milliseconds == 0) {
    sched_yield();
    return;
  }
  timespec left{milliseconds / 1000, milliseconds % 1000 * nomos::platform::kNanosPerMilli};
  while (clock_nanosleep(CLOCK_MONOTONIC, 0, &left, &left) == EINTR) {
  }
}

void nosUseFinestTimerSlack() noexcept {
  prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
}
