// Identifiers as text beside {fmt} with compiled format strings and snprintf, from the record to a
// terminated text: oidplain in the general style, oidpadded in the newer layout of the relational
// one. Peers print into a buffer, and only the parts that an identifier has. {fmt} does so by
// format_to, which looks at no size: format_to_n goes through an iterator, a character at a time,
// and takes longer than snprintf.
//
// Mixes of 1,024 identifiers, instances of 1 to 12 digits, an eighth of them transient, a quarter
// with an edition:
//   alone  without a parent
//   parts  with a parent, every second with level and sub-object number
//   full   as parts, with numbers as long as their fields allow
// A branch predictor learns these by heart. aloneMany, partsMany and fullMany are 16,384 each, more
// than it learns, as a caller's identifiers are.
// Before anything is timed, all have to give the same texts.

#include "sys/formatters.h"

#include <benchmark/benchmark.h>
#include <fmt/compile.h>

#include <cinttypes>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <random>
#include <string>
#include <vector>

namespace {

// The count is a power of two.
struct Mix {
  const char* name;
  std::size_t count;
  bool hasParents, isFull;
};
constexpr Mix kMixes[] = {
    {"alone", 1024, false, false},     {"parts", 1024, true, false},
    {"full", 1024, true, true},        {"aloneMany", 16384, false, false},
    {"partsMany", 16384, true, false}, {"fullMany", 16384, true, true},
};

ClassID classOf(std::uint32_t number) {
  ClassID id;
  std::memcpy(id.bytes, &number, sizeof id.bytes);
  return id;
}

std::vector<DskObjectId> oidsOf(const Mix& mix) {
  std::mt19937_64 random(1);
  const auto below = [&](std::uint32_t end) { return static_cast<std::uint32_t>(random() % end); };
  const std::uint32_t firstClass = mix.isFull ? 3000000 : 2048;
  std::vector<DskObjectId> oids(mix.count);
  for (DskObjectId& oid : oids) {
    oid.instanceId = random() >> (mix.isFull ? 0 : 24 + below(37));
    const std::uint32_t transient = below(8) == 0 ? 1u << 22 : 0;
    oid.classId = classOf(firstClass + below(1000) + transient);
    if (below(4) == 0) oid.edition = mix.isFull ? 0xFFFFFFFF : below(100);
    if (!mix.hasParents) continue;
    oid.parentClassId = classOf(firstClass + below(1000));
    if (below(2) == 0) continue;
    oid.level = static_cast<std::uint8_t>(mix.isFull ? 255 : 1 + below(3));
    oid.subId = static_cast<std::uint16_t>(mix.isFull ? 65535 : below(200));
  }
  return oids;
}

// The fields as the peers print them.
struct Fields {
  explicit Fields(const DskObjectId& oid)
      : classId(oid.classId.number() & 0x3FFFFF),
        parent(oid.parentClassId.number() & 0x3FFFFF),
        instance(oid.instanceId),
        level(oid.level),
        subId(oid.subId),
        edition(oid.edition),
        isTransient(oid.classId.number() >> 22 == 1) {}
  std::uint32_t classId, parent;
  std::uint64_t instance;
  std::uint32_t level, subId, edition;
  bool isTransient;
};

struct Ours {
  OidFormatter plainFormatter;
  RelationalDbOidFormatter paddedFormatter{RelationalDbOidFormatter::kNewerLayout};
  const char* plain(const DskObjectId& oid) { return plainFormatter.formatOid(oid); }
  const char* padded(const DskObjectId& oid) { return paddedFormatter.formatOid(oid); }
};

// Inlined into the loop that times it, where it is fastest.
struct Fmt {
  char text[OidFormatter::kBufferSize];
  [[gnu::always_inline]] const char* plain(const DskObjectId& oid) {
    const Fields of(oid);
    char* to = fmt::format_to(text, FMT_COMPILE("[{}.{}"), of.classId, of.instance);
    if (of.level != 0) {
      to = fmt::format_to(to, FMT_COMPILE(".{}.{}.{}"), of.parent, of.level, of.subId);
    } else if (of.parent != 0) {
      to = fmt::format_to(to, FMT_COMPILE(".{}"), of.parent);
    }
    if (of.edition != 0) to = fmt::format_to(to, FMT_COMPILE(":{}"), of.edition);
    to = of.isTransient ? fmt::format_to(to, FMT_COMPILE(" (t)]"))
                        : fmt::format_to(to, FMT_COMPILE("]"));
    *to = '\0';
    return text;
  }
  [[gnu::always_inline]] const char* padded(const DskObjectId& oid) {
    const Fields of(oid);
    char* to = fmt::format_to(text, FMT_COMPILE("{:07}.{:020}"), of.classId, of.instance);
    if (of.level != 0) {
      to = fmt::format_to(to, FMT_COMPILE(".{:07}.{:03}.{:05}"), of.parent, of.level, of.subId);
    } else if (of.parent != 0) {
      to = fmt::format_to(to, FMT_COMPILE(".{:07}"), of.parent);
    }
    if (of.isTransient) to = fmt::format_to(to, FMT_COMPILE(" (t)"));
    *to = '\0';
    return text;
  }
};

struct Snprintf {
  char text[OidFormatter::kBufferSize];
  const char* plain(const DskObjectId& oid) {
    const Fields of(oid);
    char edition[12] = "";
    if (of.edition != 0) std::snprintf(edition, sizeof edition, ":%u", of.edition);
    const char* const lifetime = of.isTransient ? " (t)" : "";
    if (of.parent == 0) {
      std::snprintf(text, sizeof text, "[%u.%" PRIu64 "%s%s]", of.classId, of.instance, edition,
                    lifetime);
    } else if (of.level == 0) {
      std::snprintf(text, sizeof text, "[%u.%" PRIu64 ".%u%s%s]", of.classId, of.instance,
                    of.parent, edition, lifetime);
    } else {
      std::snprintf(text, sizeof text, "[%u.%" PRIu64 ".%u.%u.%u%s%s]", of.classId, of.instance,
                    of.parent, of.level, of.subId, edition, lifetime);
    }
    return text;
  }
  const char* padded(const DskObjectId& oid) {
    const Fields of(oid);
    const char* const lifetime = of.isTransient ? " (t)" : "";
    if (of.parent == 0) {
      std::snprintf(text, sizeof text, "%07u.%020" PRIu64 "%s", of.classId, of.instance, lifetime);
    } else if (of.level == 0) {
      std::snprintf(text, sizeof text, "%07u.%020" PRIu64 ".%07u%s", of.classId, of.instance,
                    of.parent, lifetime);
    } else {
      std::snprintf(text, sizeof text, "%07u.%020" PRIu64 ".%07u.%03u.%05u%s", of.classId,
                    of.instance, of.parent, of.level, of.subId, lifetime);
    }
    return text;
  }
};

template <class Peer>
bool givesOurTexts(const char* name) {
  Ours ours;
  Peer peer;
  for (const Mix& mix : kMixes) {
    for (const DskObjectId& oid : oidsOf(mix)) {
      if (std::strcmp(ours.plain(oid), peer.plain(oid)) == 0 &&
          std::strcmp(ours.padded(oid), peer.padded(oid)) == 0) {
        continue;
      }
      std::cerr << name << " gives " << peer.plain(oid) << " and " << peer.padded(oid) << '\n';
      return false;
    }
  }
  return true;
}

template <class Peer>
void registerPeer(const std::string& name) {
  for (const Mix& mix : kMixes) {
    const auto add = [&](const std::string& operation, auto run) {
      const auto loop = [run, oids = oidsOf(mix)](benchmark::State& state) {
        Peer peer;
        const DskObjectId* const all = oids.data();
        const std::size_t mask = oids.size() - 1;
        std::size_t next = 0;
        for (auto unused : state) {
          benchmark::DoNotOptimize(run(peer, all[next++ & mask]));
          benchmark::ClobberMemory();
        }
      };
      benchmark::RegisterBenchmark((operation + "/" + name + "/" + mix.name).c_str(), loop);
    };
    add("oidplain", [](Peer& peer, const DskObjectId& oid) { return peer.plain(oid); });
    add("oidpadded", [](Peer& peer, const DskObjectId& oid) { return peer.padded(oid); });
  }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  if (!givesOurTexts<Fmt>("fmt") || !givesOurTexts<Snprintf>("snprintf")) return 1;
  registerPeer<Ours>("ours");
  registerPeer<Fmt>("fmt");
  registerPeer<Snprintf>("snprintf");
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
