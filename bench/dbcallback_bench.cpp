// A call of updateProgress with callbacks that do nothing: "silent" none of them is reached, but
// for every 51st heartbeat; "reported" percent and bytes are with each call; "bare" nothing is set.
// There is no peer.

#include "sys/dbcallback.h"

#include <benchmark/benchmark.h>

#include <cstdint>

namespace {

enum Load { kBare, kSilent, kReported };

void progress(benchmark::State& state, Load load) {
  DbCallbackHandler handler;
  if (load != kBare) {
    handler.setPercentProgressCB([](DbCallbackHandler*, unsigned) { return true; });
    handler.setByteProgressCB([](DbCallbackHandler*, std::uint64_t) { return true; });
    handler.setHeartbeatCB([](DbCallbackHandler*) { return true; });
  }
  handler.startOperation("backup", "f.dat", std::uint64_t{1} << 40);
  if (load == kSilent) handler.byteStep = handler.percentStep = ~std::uint32_t{0};
  // A hundredth of the whole, or a byte.
  const std::uint64_t step = load == kReported ? handler.bytesToDo / 99 : 1;
  std::uint64_t bytes = 0;
  for (auto _ : state) {
    bytes = bytes + step < handler.bytesToDo ? bytes + step : step;
    benchmark::DoNotOptimize(handler.updateProgress(bytes));
  }
}

}  // namespace

BENCHMARK_CAPTURE(progress, bare, kBare)->Name("progressbare/ours");
BENCHMARK_CAPTURE(progress, silent, kSilent)->Name("progresssilent/ours");
BENCHMARK_CAPTURE(progress, reported, kReported)->Name("progressreported/ours");

BENCHMARK_MAIN();
