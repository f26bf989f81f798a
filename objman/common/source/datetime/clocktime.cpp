// The reader of times of day: "10:30", "10:30:15.5", "10.30 p.m.". Hours are checked by the whole
// time alone, which is computed in 32 bits: "24:00" is none, yet "1194:00" wraps around to
// 00:57:12.704.

#include "readers.h"

#include "nomos/intl.h"
#include "nomos/localedate.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>

namespace nomutil::datetime {
namespace {

constexpr std::uint32_t kMillisOfDay = 86400000;

// The milliseconds of the digits behind the point, cut: 5 is 500, 05 is 50, 123456 is 123. Of more
// than nine digits the number is at most 0xFFFFFFFF, so that ten nines are 429.
std::uint32_t millisOf(const Number& fraction) {
  std::int64_t millis = fraction.value;
  for (std::size_t digits = fraction.length; digits < 3; ++digits) millis *= 10;
  for (std::size_t digits = fraction.length; digits > 3 && millis != 0; --digits) millis /= 10;
  return static_cast<std::uint32_t>(millis);
}

enum class Half { None, Morning, Afternoon };
struct Designator {
  Half half;
  std::size_t length;
};

Designator englishDesignator(const char* text) {
  const std::uint32_t letter = lowered(text[0]);
  if (letter != 'a' && letter != 'p') return {Half::None, 0};
  const Half half = letter == 'a' ? Half::Morning : Half::Afternoon;
  if (lowered(text[1]) == 'm') return {half, 2};
  if (text[1] == '.' && lowered(text[2]) == 'm' && text[3] == '.') return {half, 4};
  return {Half::None, 0};
}

// Without designators of the locale that are in force there are none, not even English ones.
Designator localeDesignator(const char* text) {
  if (!nosIsDTNMode()) return {Half::None, 0};
  const NlsLocale* const locale = LocaleDataStore::ThreadLocale();
  if (locale == nullptr) return {Half::None, 0};
  for (const Half half : {Half::Morning, Half::Afternoon}) {
    const char* const designator =
        locale->LocaleInfo(half == Half::Morning ? kNosMorningDesignator : kNosAfternoonDesignator);
    const std::size_t length = std::strlen(designator);
    if (length != 0 && intlStrnicmp(text, designator, static_cast<unsigned>(length)) == 0) {
      return {half, length};
    }
  }
  return {Half::None, 0};
}

}  // namespace

Reading readTime(TextCursor at, Fraction fraction, Designators designators) {
  const Number hourNumber = at.takeUnsigned();
  if (hourNumber.length == 0) return {kInvalid, at};
  at.skipSeparators();
  const Number minutes = at.takeUnsigned();
  if (minutes.length == 0 || minutes.value > 59) return {kInvalid, at};
  at.skipSeparators();
  const Number seconds = at.takeUnsigned();
  if (seconds.value > 59) return {kInvalid, at};
  std::uint32_t millis = 0;
  if (fraction == Fraction::Yes) {
    at.skipSeparators();
    millis = millisOf(at.takeUnsigned());
  }

  at.skipBlanks();
  auto hours = static_cast<std::uint32_t>(hourNumber.value);
  if (!at.isAtEnd()) {
    const auto [half, length] = designators == Designators::English ? englishDesignator(at.text())
                                                                    : localeDesignator(at.text());
    if (half != Half::None) {
      if (hours > 12) return {kInvalid, at};
      hours = hours % 12 + (half == Half::Afternoon ? 12 : 0);
    }
    at.step(length);
  }
  const std::uint32_t allMinutes = hours * 60 + static_cast<std::uint32_t>(minutes.value);
  const std::uint32_t allSeconds = allMinutes * 60 + static_cast<std::uint32_t>(seconds.value);
  const std::uint32_t time = allSeconds * 1000 + millis;
  return {time < kMillisOfDay ? time : kInvalid, at};
}

}  // namespace nomutil::datetime
