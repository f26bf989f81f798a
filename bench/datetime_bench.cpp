// Timestamps as text beside {fmt} with compiled format strings (fields, and its calendar type),
// snprintf, strftime, Abseil's time and ICU: display and literal form, from the record, day number
// and milliseconds, to a terminated text. A peer with a calendar uses it, strftime and fmtchrono
// that of the C library; snprintf and fmt have none and get the fields from ours. ICU may stop at
// UTF-16. strftime and fmtchrono have no milliseconds and get them by hand.
//
// Mixes of 1,024 timestamps of the years 1900 to 2099:
//   millis  all with milliseconds
//   whole   none
//   mixed   half of them, at random
// Before anything is timed, all have to give the same texts.

#include "nomos/calendar.h"
#include "sys/datetime.h"

#include <absl/time/time.h>
#include <benchmark/benchmark.h>
#include <fmt/chrono.h>
#include <fmt/compile.h>
#include <unicode/udat.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <iostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t kStamps = 1024;
constexpr unsigned kRoom = 64;
constexpr const char* kMixes[] = {"millis", "whole", "mixed"};

std::vector<DskTimeStamp> stampsOf(std::string_view mix) {
  std::mt19937_64 random(4);
  const std::uint32_t first = julianDay(1, 1, 1900);
  const std::uint32_t days = julianDay(1, 1, 2100) - first;
  std::vector<DskTimeStamp> stamps(kStamps);
  for (DskTimeStamp& stamp : stamps) {
    stamp.date = first + static_cast<std::uint32_t>(random() % days);
    stamp.time = static_cast<std::uint32_t>(random() % 86400) * 1000;
    const bool isWhole = mix == "whole" || (mix == "mixed" && random() % 2 == 0);
    if (!isWhole) stamp.time += 1 + static_cast<std::uint32_t>(random() % 999);
  }
  return stamps;
}

struct Ours {
  static void display(DskTimeStamp stamp, char* text) { formatTimeStamp(stamp, text, kRoom); }
  static void literal(DskTimeStamp stamp, char* text) {
    literalFormatTimeStamp(stamp, text, kRoom);
  }
};

struct Fields {
  int day, month, year, hour, minute, second, millisecond;
};
Fields split(DskTimeStamp stamp) {
  Fields f;
  nosDateTimeToGregorian(stamp, &f.day, &f.month, &f.year, &f.hour, &f.minute, &f.second,
                         &f.millisecond);
  return f;
}

struct Snprintf {
  static void display(DskTimeStamp stamp, char* text) {
    const Fields f = split(stamp);
    std::snprintf(text, kRoom, "%02d %s %04d, %02d:%02d:%02d", f.day, getMonthName(f.month), f.year,
                  f.hour, f.minute, f.second);
  }
  static void literal(DskTimeStamp stamp, char* text) {
    const Fields f = split(stamp);
    if (f.millisecond == 0) {
      std::snprintf(text, kRoom, "%04d:%02d:%02d:%02d:%02d:%02d", f.year, f.month, f.day, f.hour,
                    f.minute, f.second);
    } else {
      std::snprintf(text, kRoom, "%04d:%02d:%02d:%02d:%02d:%02d.%03d", f.year, f.month, f.day,
                    f.hour, f.minute, f.second, f.millisecond);
    }
  }
};

struct Fmt {
  static void display(DskTimeStamp stamp, char* text) {
    const Fields f = split(stamp);
    *fmt::format_to(text, FMT_COMPILE("{:02} {} {:04}, {:02}:{:02}:{:02}"), f.day,
                    getMonthName(f.month), f.year, f.hour, f.minute, f.second) = '\0';
  }
  static void literal(DskTimeStamp stamp, char* text) {
    const Fields f = split(stamp);
    char* const end =
        f.millisecond == 0
            ? fmt::format_to(text, FMT_COMPILE("{:04}:{:02}:{:02}:{:02}:{:02}:{:02}"), f.year,
                             f.month, f.day, f.hour, f.minute, f.second)
            : fmt::format_to(text, FMT_COMPILE("{:04}:{:02}:{:02}:{:02}:{:02}:{:02}.{:03}"), f.year,
                             f.month, f.day, f.hour, f.minute, f.second, f.millisecond);
    *end = '\0';
  }
};

std::int64_t unixMillis(DskTimeStamp stamp) {
  return (std::int64_t{stamp.date} - 2440588) * 86400000 + stamp.time;
}

std::tm breakDown(DskTimeStamp stamp) {
  const std::time_t seconds = (std::time_t{stamp.date} - 2440588) * 86400 + stamp.time / 1000;
  std::tm parts;
  gmtime_r(&seconds, &parts);
  return parts;
}
void appendMillis(char* to, std::uint32_t time) {
  const std::uint32_t millis = time % 1000;
  if (millis != 0) {
    *to++ = '.';
    *to++ = static_cast<char>('0' + millis / 100);
    *to++ = static_cast<char>('0' + millis / 10 % 10);
    *to++ = static_cast<char>('0' + millis % 10);
  }
  *to = '\0';
}

struct FmtChrono {
  static void display(DskTimeStamp stamp, char* text) {
    *fmt::format_to(text, FMT_COMPILE("{:%d %B %Y, %H:%M:%S}"), breakDown(stamp)) = '\0';
  }
  static void literal(DskTimeStamp stamp, char* text) {
    appendMillis(fmt::format_to(text, FMT_COMPILE("{:%Y:%m:%d:%H:%M:%S}"), breakDown(stamp)),
                 stamp.time);
  }
};

struct Strftime {
  static void display(DskTimeStamp stamp, char* text) {
    const std::tm parts = breakDown(stamp);
    std::strftime(text, kRoom, "%d %B %Y, %H:%M:%S", &parts);
  }
  static void literal(DskTimeStamp stamp, char* text) {
    const std::tm parts = breakDown(stamp);
    appendMillis(text + std::strftime(text, kRoom, "%Y:%m:%d:%H:%M:%S", &parts), stamp.time);
  }
};

struct Abseil {
  static void print(const char* format, DskTimeStamp stamp, char* text) {
    const absl::Time time = absl::FromUnixMillis(unixMillis(stamp));
    const std::string made = absl::FormatTime(format, time, absl::UTCTimeZone());
    std::memcpy(text, made.c_str(), made.size() + 1);
  }
  static void display(DskTimeStamp stamp, char* text) {
    print("%d %B %E4Y, %H:%M:%S", stamp, text);
  }
  static void literal(DskTimeStamp stamp, char* text) {
    const bool isWhole = stamp.time % 1000 == 0;
    print(isWhole ? "%E4Y:%m:%d:%H:%M:%S" : "%E4Y:%m:%d:%H:%M:%E3S", stamp, text);
  }
};

struct Icu {
  static inline bool isChecking = true;
  static UDateFormat* open(const char16_t* pattern) {
    UErrorCode status = U_ZERO_ERROR;
    return udat_open(UDAT_PATTERN, UDAT_PATTERN, "en_US", u"UTC", -1, pattern, -1, &status);
  }
  static void print(UDateFormat* format, DskTimeStamp stamp, char* text) {
    UErrorCode status = U_ZERO_ERROR;
    char16_t wide[kRoom];
    const auto date = static_cast<UDate>(unixMillis(stamp));
    const int length = udat_format(format, date, wide, kRoom, nullptr, &status);
    benchmark::DoNotOptimize(wide[0]);
    if (!isChecking) return;
    std::transform(wide, wide + length, text, [](char16_t c) { return static_cast<char>(c); });
    text[length] = '\0';
  }
  static void display(DskTimeStamp stamp, char* text) {
    static UDateFormat* const format = open(u"dd MMMM yyyy, HH:mm:ss");
    print(format, stamp, text);
  }
  static void literal(DskTimeStamp stamp, char* text) {
    static UDateFormat* const whole = open(u"yyyy:MM:dd:HH:mm:ss");
    static UDateFormat* const millis = open(u"yyyy:MM:dd:HH:mm:ss.SSS");
    print(stamp.time % 1000 == 0 ? whole : millis, stamp, text);
  }
};

template <class Peer>
bool givesOurTexts(const char* name) {
  for (const char* mix : kMixes) {
    for (const DskTimeStamp& stamp : stampsOf(mix)) {
      char ours[2][kRoom], theirs[2][kRoom];
      Ours::display(stamp, ours[0]);
      Ours::literal(stamp, ours[1]);
      Peer::display(stamp, theirs[0]);
      Peer::literal(stamp, theirs[1]);
      for (const int form : {0, 1}) {
        if (std::strcmp(ours[form], theirs[form]) == 0) continue;
        std::cerr << name << ", " << mix << ": " << theirs[form] << "\nand not " << ours[form]
                  << "\n";
        return false;
      }
    }
  }
  return true;
}

template <class Print>
void registerForm(const std::string& form, const std::string& peer, Print print) {
  for (const char* mix : kMixes) {
    const auto loop = [print, stamps = stampsOf(mix)](benchmark::State& state) {
      char text[kRoom];
      std::size_t i = 0;
      for (auto unused : state) {
        print(stamps[i], text);
        benchmark::DoNotOptimize(text[0]);
        benchmark::ClobberMemory();
        i = (i + 1) % kStamps;
      }
    };
    benchmark::RegisterBenchmark((form + "/" + peer + "/" + mix).c_str(), loop);
  }
}

template <class Peer>
void registerPeer(const char* name) {
  registerForm("display", name, [](DskTimeStamp stamp, char* text) { Peer::display(stamp, text); });
  registerForm("literal", name, [](DskTimeStamp stamp, char* text) { Peer::literal(stamp, text); });
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  if (!givesOurTexts<Snprintf>("snprintf") || !givesOurTexts<Fmt>("fmt") ||
      !givesOurTexts<FmtChrono>("fmtchrono") || !givesOurTexts<Strftime>("strftime") ||
      !givesOurTexts<Abseil>("abseil") || !givesOurTexts<Icu>("icu")) {
    return 1;
  }
  Icu::isChecking = false;
  registerPeer<Ours>("ours");
  registerPeer<Snprintf>("snprintf");
  registerPeer<Fmt>("fmt");
  registerPeer<FmtChrono>("fmtchrono");
  registerPeer<Strftime>("strftime");
  registerPeer<Abseil>("abseil");
  registerPeer<Icu>("icu");
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
