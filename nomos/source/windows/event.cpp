// Waiting on a word with WaitOnAddress. Its limit is a whole number of milliseconds that may end up
// to a tick of the system early or late; the clock tells whether the deadline has been reached.

#include "platform.h"

#include <algorithm>

#include <windows.h>

namespace {

void* addressOf(const std::atomic<std::uint64_t>& word) {
  return const_cast<std::atomic<std::uint64_t>*>(&word);
}

}  // namespace

bool nomos::platform::waitOnWord(const std::atomic<std::uint64_t>& word, std::uint32_t value,
                                 std::int64_t deadline) noexcept {
  if (deadline == kNever) return WaitOnAddress(addressOf(word), &value, 4, INFINITE), true;
  const std::int64_t nanos = deadline - monotonicNanos();
  if (nanos <= 0) return false;
  const std::int64_t millis = (nanos - 1) / kNanosPerMilli + 1;
  // The caller waits again for what is left behind an hour.
  constexpr std::int64_t kLongestWait = 3600000;
  WaitOnAddress(addressOf(word), &value, 4, static_cast<DWORD>(std::min(millis, kLongestWait)));
  return true;
}

void nomos::platform::wakeOne(const std::atomic<std::uint64_t>& word) noexcept {
  WakeByAddressSingle(addressOf(word));
}

void nomos::platform::wakeAll(const std::atomic<std::uint64_t>& word) noexcept {
  WakeByAddressAll(addressOf(word));
}
