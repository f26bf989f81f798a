// Waiting on a word with the futex whose deadline is a time of the monotonic clock: the kernel ends
// the wait on that time and does not start anew when a signal handler interrupts it.

#include "linux/futex.h"
#include "platform.h"

#include <algorithm>
#include <cerrno>
#include <climits>

bool nomos::platform::waitOnWord(const std::atomic<std::uint64_t>& word, std::uint32_t value,
                                 std::int64_t deadline) noexcept {
  if (deadline == kNever) return futex(word, FUTEX_WAIT_BITSET, value), true;
  constexpr std::int64_t kNanosPerSecond = 1000000000;
  const std::int64_t nanos = std::max<std::int64_t>(deadline, 0);
  const timespec limit{nanos / kNanosPerSecond, nanos % kNanosPerSecond};
  return futex(word, FUTEX_WAIT_BITSET, value, &limit) == 0 || errno != ETIMEDOUT;
}

void nomos::platform::wakeOne(const std::atomic<std::uint64_t>& word) noexcept {
  futex(word, FUTEX_WAKE, 1);
}

void nomos::platform::wakeAll(const std::atomic<std::uint64_t>& word) noexcept {
  futex(word, FUTEX_WAKE, INT_MAX);
}
