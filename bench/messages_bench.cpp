// The lookup of a built-in text, with its copying, beside hash maps that find and copy the same
// texts. 65536 numbers at random are more than a branch predictor remembers, as in real use; 1024
// over and over it learns; 1 is a single number again and again.
#include "sys/messages.h"

#include <absl/container/flat_hash_map.h>
#include <benchmark/benchmark.h>
#include <boost/unordered_map.hpp>

#include <cstdint>
#include <cstring>
#include <iterator>
#include <random>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace {

struct Row {
  std::uint32_t number;
  std::string_view text;
};
#define NOMUTIL_BENCH_ROW(name, number, text) {number, text},
constexpr Row kRows[] = {NOMUTIL_MESSAGE_LIST(NOMUTIL_BENCH_ROW)};
#undef NOMUTIL_BENCH_ROW

std::vector<std::uint32_t> randomNumbers(std::size_t count) {
  std::mt19937 random(1);
  std::vector<std::uint32_t> numbers(count);
  for (std::uint32_t& number : numbers) number = kRows[random() % std::size(kRows)].number;
  return numbers;
}

template <class Lookup>
void run(benchmark::State& state, Lookup lookup) {
  const auto count = static_cast<std::size_t>(state.range(0));
  const std::vector<std::uint32_t> numbers = randomNumbers(count);
  char buffer[300];
  std::size_t next = 0;
  for (auto _ : state) {
    lookup(numbers[next++ & (count - 1)], buffer, sizeof buffer);
    benchmark::DoNotOptimize(buffer);
    benchmark::ClobberMemory();
  }
}

void builtIn(benchmark::State& state) {
  run(state, nomGetMessageText);
}

template <class Map>
void hashMap(benchmark::State& state) {
  Map map;
  for (const Row& row : kRows) map.emplace(row.number, row.text);
  run(state, [&map](std::uint32_t number, char* buffer, std::size_t size) {
    const auto found = map.find(number);
    if (found == map.end() || found->second.size() >= size) return;
    std::memcpy(buffer, found->second.data(), found->second.size());
    buffer[found->second.size()] = '\0';
  });
}

void mixes(benchmark::internal::Benchmark* bench) {
  bench->ArgName("numbers")->Arg(65536)->Arg(1024)->Arg(1);
}

BENCHMARK(builtIn)->Apply(mixes);
BENCHMARK(hashMap<absl::flat_hash_map<std::uint32_t, std::string_view>>)->Apply(mixes);
BENCHMARK(hashMap<std::unordered_map<std::uint32_t, std::string_view>>)->Apply(mixes);
BENCHMARK(hashMap<boost::unordered_map<std::uint32_t, std::string_view>>)->Apply(mixes);

}  // namespace

BENCHMARK_MAIN();
