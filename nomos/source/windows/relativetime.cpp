// The performance counter, sleep, and the period of the system's timer.

#include "nomos/relativetime.h"

#include "platform.h"
#include "windows/timerperiod.h"

#include <algorithm>

#include <windows.h>

#include <timeapi.h>

using nomos::platform::kNanosPerMilli;
using nomos::platform::monotonicNanos;

namespace {
// Whether this thread has asked for the finest period, which the process counts.
thread_local bool isPeriodFinest = false;
}  // namespace

std::int64_t nomos::platform::monotonicNanos() noexcept {
  constexpr std::int64_t kNanosPerSecond = 1000000000;
  static const std::int64_t frequency = [] {
    LARGE_INTEGER ticksPerSecond;
    QueryPerformanceFrequency(&ticksPerSecond);
    return ticksPerSecond.QuadPart;
  }();
  LARGE_INTEGER now;
  QueryPerformanceCounter(&now);
  return now.QuadPart / frequency * kNanosPerSecond +
         now.QuadPart % frequency * kNanosPerSecond / frequency;
}

// Sleep may end up to a tick early, and never ends for 0xFFFFFFFF.
void nosSleep(std::uint32_t milliseconds) noexcept {
  const std::int64_t end = monotonicNanos() + milliseconds * kNanosPerMilli;
  for (std::int64_t left = milliseconds;;) {
    Sleep(static_cast<DWORD>(std::min<std::int64_t>(left, INFINITE - 1)));
    const std::int64_t nanos = end - monotonicNanos();
    if (milliseconds == 0 || nanos <= 0) return;
    left = (nanos - 1) / kNanosPerMilli + 1;
  }
}

void nosUseFinestTimerSlack() noexcept {
  if (!isPeriodFinest) isPeriodFinest = timeBeginPeriod(1) == TIMERR_NOERROR;
}

void nomos::platform::endFinestTimerPeriod() noexcept {
  if (isPeriodFinest) timeEndPeriod(1);
  isPeriodFinest = false;
}
