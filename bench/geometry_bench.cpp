// What an export costs above the entry of GEOS that it forwards to: each pair calls the same entry
// of the same library, "direct" through a pointer and "export" through our function, on entries
// that do next to nothing. "overhead" times both in turns, many short rounds, and counts the median
// of the differences as nanos. The aim is at most 5 ns. The last ones read and write the outline of
// a square, where the export copies the text.

#include "geometry/loader.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

namespace {

using namespace nomutil::geometry;

constexpr const char* kSquare = "POLYGON ((0 0, 1 0, 1 1, 0 1, 0 0))";

// The entry itself, found as the exports find it.
template <Export row>
auto* directly() {
  return findEntry<row>();
}

// A context with a geometry and a line's coordinates.
struct World {
  World() {
    std::uint32_t status = 0;
    context = GEOS_Init(nullptr, nullptr);
    reader = GEOS_WKTReaderCreate(context, &status);
    writer = GEOS_WKTWriterCreate(context, &status);
    geometry = GEOS_WKTReaderRead(context, reader, kSquare, &status);
    ring =
        GEOS_GetCoordSequence(context, GEOS_GetExteriorRing(context, geometry, &status), &status);
  }

  GEOSContextHandle_t context;
  GEOSWKTReader* reader = nullptr;
  GEOSWKTWriter* writer = nullptr;
  GEOSGeometry* geometry = nullptr;
  const GEOSCoordSequence* ring = nullptr;
};

template <class Call>
double nanosOf(Call& call, int rounds) {
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < rounds; ++i) call();
  const std::chrono::duration<double, std::nano> took = std::chrono::steady_clock::now() - begin;
  return took.count() / rounds;
}

template <class Direct, class Ours>
void registerPair(const std::string& name, Direct direct, Ours ours) {
  const auto loop = [](auto call) {
    return [call](benchmark::State& state) mutable {
      for (auto unused : state) call();
    };
  };
  benchmark::RegisterBenchmark((name + "/direct").c_str(), loop(direct));
  benchmark::RegisterBenchmark((name + "/export").c_str(), loop(ours));
  benchmark::RegisterBenchmark(
      (name + "/overhead").c_str(), [direct, ours](benchmark::State& state) mutable {
        std::vector<double> differences;
        for (auto unused : state) {
          const double before = nanosOf(direct, 1000);
          differences.push_back(nanosOf(ours, 1000) - before);
        }
        const auto middle =
            differences.begin() + static_cast<std::ptrdiff_t>(differences.size() / 2);
        std::nth_element(differences.begin(), middle, differences.end());
        state.counters["nanos"] = *middle;
      });
}

void registerAll(const World& world) {
  const auto [c, reader, writer, g, ring] = world;
  registerPair(
      "getsrid",
      [c = c, g = g, entry = directly<Export::GEOS_GetSRID>()] {
        benchmark::DoNotOptimize(entry(c, g));
      },
      [c = c, g = g] {
        int srid;
        benchmark::DoNotOptimize(GEOS_GetSRID(c, g, &srid));
        benchmark::DoNotOptimize(srid);
      });
  registerPair(
      "isempty",
      [c = c, g = g, entry = directly<Export::GEOS_IsEmpty>()] {
        benchmark::DoNotOptimize(entry(c, g));
      },
      [c = c, g = g] {
        std::uint8_t answer;
        benchmark::DoNotOptimize(GEOS_IsEmpty(c, g, &answer));
        benchmark::DoNotOptimize(answer);
      });
  registerPair(
      "getx",
      [c = c, ring = ring, entry = directly<Export::GEOS_CoordSeq_GetX>()] {
        double x;
        benchmark::DoNotOptimize(entry(c, ring, 1, &x));
      },
      [c = c, ring = ring] {
        double x;
        benchmark::DoNotOptimize(GEOS_CoordSeq_GetX(c, ring, 1, &x));
      });
  registerPair(
      "exteriorring",
      [c = c, g = g, entry = directly<Export::GEOS_GetExteriorRing>()] {
        benchmark::DoNotOptimize(entry(c, g));
      },
      [c = c, g = g] {
        std::uint32_t status;
        benchmark::DoNotOptimize(GEOS_GetExteriorRing(c, g, &status));
        benchmark::DoNotOptimize(status);
      });
  registerPair(
      "read",
      [c = c, reader = reader, entry = directly<Export::GEOS_WKTReaderRead>()] {
        GEOS_Destroy(c, entry(c, reader, kSquare));
      },
      [c = c, reader = reader] {
        std::uint32_t status;
        GEOS_Destroy(c, GEOS_WKTReaderRead(c, reader, kSquare, &status));
      });
  registerPair(
      "write",
      [c = c, g = g, writer = writer, entry = directly<Export::GEOS_WKTWriterWrite>()] {
        char* const text = entry(c, writer, g);
        char buffer[256];
        std::strncpy(buffer, text, sizeof buffer - 1);
        benchmark::DoNotOptimize(buffer);
        GEOS_Free(c, text);
      },
      [c = c, g = g, writer = writer] {
        char buffer[256];
        std::uint32_t size = sizeof buffer;
        benchmark::DoNotOptimize(GEOS_WKTWriterWrite(c, writer, g, buffer, &size));
        benchmark::DoNotOptimize(buffer);
      });
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  const World world;
  if (world.ring == nullptr) {
    std::cerr << "there is no GEOS\n";
    return 1;
  }
  registerAll(world);
  benchmark::RunSpecifiedBenchmarks();
  GEOS_Destroy(world.context, world.geometry);
  GEOS_WKTReaderDestroy(world.context, world.reader);
  GEOS_WKTWriterDestroy(world.context, world.writer);
  GEOS_Finish(world.context);
}
