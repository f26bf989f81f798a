// The relative clock and what a test puts in its place.

#include "nomos/relativetime.h"

#include "common/relativetime.h"
#include "nomos/testhooks.h"
#include "platform.h"

#include <atomic>

namespace {
std::atomic<NosRelativeClock> replacement{nullptr};
}

std::int64_t nosGetRelativeTime() noexcept {
  if (const NosRelativeClock clock = replacement.load(std::memory_order_relaxed)) return clock();
  return nomos::platform::monotonicNanos() / nomos::platform::kNanosPerMilli;
}

void nosSetRelativeClock(NosRelativeClock clock) noexcept {
  replacement.store(clock, std::memory_order_relaxed);
}

bool nomos::relativeClockIsReplaced() noexcept {
  return replacement.load(std::memory_order_relaxed) != nullptr;
}
