// The lookup of a built-in text, with its copying, beside hash maps that find and copy the same
// texts, in three mixes. random: 65,536 numbers, more than a branch predictor remembers, as in real
// use; repeated: 1,024 over and over, which it learns; single: one number again and again.
#include "sys/messages.h"

#include <absl/container/flat_hash_map.h>
#include <benchmark/benchmark.h>
#include <boost/unordered_map.hpp>

#include <cstdint>
#include <cstring>
#include <iostream>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
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

// Whether a lookup gives our texts.
template <class Lookup>
bool givesOurTexts(Lookup lookup) {
  for (const Row& row : kRows) {
    char buffer[300] = "";
    lookup(row.number, buffer, sizeof buffer);
    if (buffer != row.text) return false;
  }
  return true;
}

template <class Lookup>
bool registerPeer(const std::string& name, Lookup lookup) {
  if (!givesOurTexts(lookup)) {
    std::cerr << name << " gives other texts\n";
    return false;
  }
  const std::pair<const char*, std::size_t> mixes[] = {
      {"random", 65536}, {"repeated", 1024}, {"single", 1}};
  for (const auto& [mix, count] : mixes) {
    const auto loop = [lookup, all = randomNumbers(count)](benchmark::State& state) {
      const std::uint32_t* const numbers = all.data();
      const std::size_t mask = all.size() - 1;
      char buffer[300];
      std::size_t next = 0;
      for (auto unused : state) {
        lookup(numbers[next++ & mask], buffer, sizeof buffer);
        benchmark::DoNotOptimize(buffer);
        benchmark::ClobberMemory();
      }
    };
    benchmark::RegisterBenchmark(("lookup/" + name + "/" + mix).c_str(), loop);
  }
  return true;
}

template <class Map>
bool registerMap(const std::string& name) {
  const auto map = std::make_shared<Map>();
  for (const Row& row : kRows) map->emplace(row.number, row.text);
  return registerPeer(name, [map](std::uint32_t number, char* buffer, std::size_t size) {
    const auto found = map->find(number);
    if (found == map->end() || found->second.size() >= size) return;
    std::memcpy(buffer, found->second.data(), found->second.size());
    buffer[found->second.size()] = '\0';
  });
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  using Number = std::uint32_t;
  using Text = std::string_view;
  const auto ours = [](Number number, char* buffer, unsigned size) {
    nomGetMessageText(number, buffer, size);
  };
  if (!registerPeer("ours", ours) || !registerMap<absl::flat_hash_map<Number, Text>>("absl") ||
      !registerMap<boost::unordered_map<Number, Text>>("boost") ||
      !registerMap<std::unordered_map<Number, Text>>("std")) {
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
