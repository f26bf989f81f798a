// The limit is one atomic number. The configuration is not read before the first block, and what a
// program sets meanwhile goes before it.

#include "limit.h"

#include "nomos/profile.h"
#include "sys/compress.h"
#include "sys/textutil.h"

#include <atomic>

namespace nomutil::compress {
namespace {

constinit std::atomic<std::uint64_t> limit{kUncompressLimitOfConfiguration};

// Never kUncompressLimitOfConfiguration, which is as good as no limit.
std::uint64_t readConfigured() {
  char text[64];
  getIniFileStringParam("NomCompress", "UncompressLimit", "0", text, sizeof text,
                        getGlbIniFileName());
  std::uint64_t byteCount = 0;
  stringToUInteger64(text, byteCount);
  return byteCount != kUncompressLimitOfConfiguration ? byteCount : 0;
}

}  // namespace

std::uint64_t uncompressLimit() {
  std::uint64_t current = limit.load(std::memory_order_relaxed);
  if (current != kUncompressLimitOfConfiguration) return current;
  const std::uint64_t configured = readConfigured();
  const bool isTaken =
      limit.compare_exchange_strong(current, configured, std::memory_order_relaxed);
  return isTaken ? configured : current;
}

}  // namespace nomutil::compress

void doSetUncompressLimit(std::uint64_t byteCount) {
  nomutil::compress::limit.store(byteCount, std::memory_order_relaxed);
}
