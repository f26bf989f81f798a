// Texts read as dates and timestamps beside strptime with timegm, Abseil's time, ICU and the header
// date.h, which became C++20's: a text ends as a day number, with milliseconds for a timestamp. A
// peer is told the pattern of the text; ours finds it out. strptimefields stops at day, month and
// year, which are no day number yet. ICU takes UTF-16, made before.
//
//   stamp   "05 January 2024, 14:07:09"
//   millis  "2024:01:05:14:07:09.042", which strptime and ICU's pattern letters do to the second
//   iso     "2024-01-05"
// Each of 1,024 texts is of another day of the years 1900 to 2099. Before anything is timed, all
// have to read the same values.

#include "nomos/calendar.h"
#include "sys/datetime.h"

#include <absl/time/time.h>
#include <benchmark/benchmark.h>
#include <date/date.h>
#include <unicode/udat.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <iostream>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t kTexts = 1024;
constexpr std::uint32_t kEpoch = 2440588;
constexpr std::int64_t kMillisOfDay = 86400000;

struct Case {
  std::string text;
  std::u16string wideText;
  std::int64_t millis;  // since 1 January 1970
};

// The texts of a form and what they say.
std::vector<Case> casesOf(std::string_view form) {
  std::mt19937_64 random(4);
  const std::uint32_t first = julianDay(1, 1, 1900);
  const std::uint32_t days = julianDay(1, 1, 2100) - first;
  std::vector<Case> cases(kTexts);
  for (Case& row : cases) {
    DskTimeStamp stamp = {first + static_cast<std::uint32_t>(random() % days), 0};
    const auto time = static_cast<std::uint32_t>(random() % kMillisOfDay);
    char text[64];
    if (form == "stamp") {
      stamp.time = time / 1000 * 1000;
      row.text = formatTimeStamp(stamp, text, sizeof text);
    } else {
      row.text = formatDateYMD(stamp.date, text, sizeof text);
      std::replace(row.text.begin(), row.text.end(), '/', '-');
    }
    row.wideText.assign(row.text.begin(), row.text.end());
    row.millis = (std::int64_t{stamp.date} - kEpoch) * kMillisOfDay + stamp.time;
  }
  return cases;
}

// Each gives milliseconds since 1 January 1970; -1, which is none of them, for a text it refuses.
struct Ours {
  static std::int64_t stamp(const Case& row) {
    DskTimeStamp stamp;
    extractTimeStamp(row.text.c_str(), stamp);
    return (std::int64_t{stamp.date} - kEpoch) * kMillisOfDay + stamp.time;
  }
  static std::int64_t iso(const Case& row) {
    return (std::int64_t{extractDate(row.text.c_str())} - kEpoch) * kMillisOfDay;
  }
};

struct Strptime {
  static std::int64_t stamp(const Case& row) {
    std::tm parts{};
    if (strptime(row.text.c_str(), "%d %B %Y, %H:%M:%S", &parts) == nullptr) return -1;
    return timegm(&parts) * 1000;
  }
  static std::int64_t iso(const Case& row) {
    std::tm parts{};
    if (strptime(row.text.c_str(), "%Y-%m-%d", &parts) == nullptr) return -1;
    return timegm(&parts) * 1000;
  }
  // The fields alone, which are no day number yet.
  static std::int64_t isoFields(const Case& row) {
    std::tm parts{};
    return strptime(row.text.c_str(), "%Y-%m-%d", &parts) == nullptr ? -1 : parts.tm_mday;
  }
};

struct Abseil {
  static std::int64_t read(const char* format, const std::string& text) {
    absl::Time time;
    std::string error;
    return absl::ParseTime(format, text, &time, &error) ? absl::ToUnixMillis(time) : -1;
  }
  static std::int64_t stamp(const Case& row) { return read("%d %B %Y, %H:%M:%S", row.text); }
  static std::int64_t iso(const Case& row) { return read("%Y-%m-%d", row.text); }
};

struct Icu {
  static UDateFormat* open(const char16_t* pattern) {
    UErrorCode status = U_ZERO_ERROR;
    return udat_open(UDAT_PATTERN, UDAT_PATTERN, "en_US", u"UTC", -1, pattern, -1, &status);
  }
  static std::int64_t read(UDateFormat* format, const std::u16string& text) {
    UErrorCode status = U_ZERO_ERROR;
    const UDate date =
        udat_parse(format, text.data(), static_cast<int>(text.size()), nullptr, &status);
    return U_SUCCESS(status) ? static_cast<std::int64_t>(date) : -1;
  }
  static std::int64_t stamp(const Case& row) {
    static UDateFormat* const format = open(u"dd MMMM yyyy, HH:mm:ss");
    return read(format, row.wideText);
  }
  static std::int64_t iso(const Case& row) {
    static UDateFormat* const format = open(u"yyyy-MM-dd");
    return read(format, row.wideText);
  }
};

struct DateHeader {
  template <class Duration>
  static std::int64_t read(const char* format, const std::string& text) {
    std::istringstream in(text);
    date::sys_time<Duration> time;
    in >> date::parse(format, time);
    return in.fail()
               ? -1
               : std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch())
                     .count();
  }
  static std::int64_t stamp(const Case& row) {
    return read<std::chrono::seconds>("%d %B %Y, %H:%M:%S", row.text);
  }
  static std::int64_t iso(const Case& row) { return read<date::days>("%Y-%m-%d", row.text); }
};

using Read = std::int64_t (*)(const Case&);

bool readsAll(const std::string& name, std::string_view form, Read read) {
  for (const Case& row : casesOf(form)) {
    if (read(row) == row.millis) continue;
    std::cerr << name << " reads " << row.text << " as " << read(row) << ", not " << row.millis
              << "\n";
    return false;
  }
  return true;
}

template <Read kRead>
void registerForm(const std::string& form, const std::string& peer) {
  const auto loop = [cases = casesOf(form)](benchmark::State& state) {
    std::size_t i = 0;
    for (auto unused : state) {
      benchmark::DoNotOptimize(kRead(cases[i]));
      i = (i + 1) % kTexts;
    }
  };
  benchmark::RegisterBenchmark((form + "/" + peer).c_str(), loop);
}

template <class Peer>
bool registerPeer(const char* name) {
  registerForm<Peer::stamp>("stamp", name);
  registerForm<Peer::iso>("iso", name);
  return readsAll(name, "stamp", Peer::stamp) && readsAll(name, "iso", Peer::iso);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  if (!registerPeer<Ours>("ours") || !registerPeer<Strptime>("strptime") ||
      !registerPeer<Abseil>("abseil") || !registerPeer<Icu>("icu") ||
      !registerPeer<DateHeader>("dateheader")) {
    return 1;
  }
  registerForm<Strptime::isoFields>("iso", "strptimefields");
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
