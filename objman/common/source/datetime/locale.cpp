// The locale that texts of dates and numbers follow. The key is read once in a process, and its
// number kept beside a mark that it was: -1, which is 0xFFFFFFFF, is a locale like any other, and 0
// leaves the choice to the thread. "TRUE" is 5129.

#include "nomos/locale.h"
#include "nomos/intl.h"
#include "nomos/profile.h"
#include "sys/datetime.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>

namespace {

// The identifier of the key in the low half, once it was read.
constexpr std::uint64_t kRead = std::uint64_t{1} << 32;
std::atomic<std::uint64_t> keptLocale{0};

std::uint32_t readLocale() {
  constexpr unsigned kRoom = 20 + 1;
  constexpr std::uint32_t kSingleLocale = 5129;  // English as used in New Zealand
  char text[kRoom];
  getIniFileStringParam("KoraClient", "SingleLocaleNode", "", text, kRoom, getGlbIniFileName());
  if (nosStrcmpi(text, "TRUE") == 0) return kSingleLocale;
  const long long number = std::strtoll(text, nullptr, 10);
  return static_cast<std::uint32_t>(std::clamp<long long>(number, INT32_MIN, INT32_MAX));
}

}  // namespace

// Two first callers may both read the key, and keep the same.
unsigned getCurrentLocaleId() {
  std::uint64_t kept = keptLocale.load(std::memory_order_relaxed);
  if (kept == 0) {
    kept = kRead | readLocale();
    keptLocale.store(kept, std::memory_order_relaxed);
  }
  const auto locale = static_cast<std::uint32_t>(kept);
  return locale != 0 ? locale : nosGetThreadLocale();
}
