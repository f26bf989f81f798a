// The exported readers: what a text must and may hold beside the values that are read from it.

#include "readers.h"

#include "nomos/localedate.h"
#include "sys/datetime.h"

#include <cstddef>
#include <cstdint>

namespace nomutil::datetime {
namespace {

constexpr DskTimeStamp kInvalidStamp = {kInvalid, kInvalid};

bool isAtEndButForWhiteSpace(TextCursor at) {
  at.skipWhiteSpace();
  return at.isAtEnd();
}

std::uint32_t valueOfWholeText(const Reading& reading) {
  return isAtEndButForWhiteSpace(reading.behind) ? reading.value : kInvalid;
}

// The time behind a date; midnight when the text ends with the date.
Reading readTimeBehind(TextCursor date, Fraction fraction, Designators designators) {
  date.skipSeparators();
  return date.isAtEnd() ? Reading{0, date} : readTime(date, fraction, designators);
}

DskTimeStamp readTimeStamp(const char* text, Designators designators) {
  if (text == nullptr) return kInvalidStamp;
  const Reading date = readEnglishDate(TextCursor(text));
  if (date.value == kInvalid) return kInvalidStamp;
  const Reading time = readTimeBehind(date.behind, Fraction::Yes, designators);
  const std::uint32_t millis = valueOfWholeText(time);
  return millis == kInvalid ? kInvalidStamp : DskTimeStamp{date.value, millis};
}

DskTimeStamp readLocaleTimeStamp(const char* text) {
  if (text == nullptr) return kInvalidStamp;
  const Reading date = readLocaleDate(TextCursor(text));
  const Reading time = readTimeBehind(date.behind, Fraction::Yes, Designators::English);
  if (!isAtEndButForWhiteSpace(time.behind)) return kInvalidStamp;
  return {date.value, time.value};
}

constexpr std::int64_t kInvalidInterval = INT64_MIN;

std::int64_t readInterval(const char* text) {
  constexpr std::int64_t kMostDays = 622191233;
  constexpr std::int64_t kMillisOfDay = 86400000;
  if (text == nullptr) return kInvalidInterval;
  TextCursor at(text);
  at.skipWhiteSpace();
  const bool isNegative = at.next() == '-';
  if (isNegative) at.step(1);
  const Number days = at.takeUnsigned();  // none is 0
  at.skipSeparators();
  const Reading time = readTime(at, Fraction::Yes, Designators::English);
  if (days.value > kMostDays || time.value == kInvalid) return kInvalidInterval;
  const std::int64_t milliseconds = days.value * kMillisOfDay + time.value;
  return isNegative ? -milliseconds : milliseconds;
}

constexpr DskTimeStampOffset kInvalidOffset = {kInvalid, kInvalid, 0x7FFFFFFF};

DskTimeStampOffset readTimeStampOffset(const char* text) {
  constexpr std::uint32_t kMostMinutes = 840;
  if (text == nullptr) return kInvalidOffset;
  const Reading date = readEnglishDate(TextCursor(text));
  const Reading time = readTimeBehind(date.behind, Fraction::No, Designators::English);
  TextCursor at = time.behind;
  const std::int64_t zone = at.takeSigned().value;  // +1330 is 13 hours and 30 minutes
  const auto magnitude = static_cast<std::uint32_t>(zone < 0 ? -zone : zone);
  const std::uint32_t minutes = magnitude / 100 * 60 + magnitude % 100;
  if (minutes > kMostMinutes || !isAtEndButForWhiteSpace(at)) return kInvalidOffset;
  const auto bias = static_cast<std::int32_t>(minutes);
  return {date.value, time.value, zone < 0 ? bias : -bias};
}

}  // namespace
}  // namespace nomutil::datetime

using namespace nomutil::datetime;

unsigned extractDate(const char* text) {
  return text == nullptr ? kInvalid : valueOfWholeText(readEnglishDate(TextCursor(text)));
}
unsigned extractTime(const char* text) {
  if (text == nullptr) return kInvalid;
  return valueOfWholeText(readTime(TextCursor(text), Fraction::Yes, Designators::English));
}
DskTimeStamp& extractTimeStamp(const char* text, DskTimeStamp& result) {
  return result = readTimeStamp(text, Designators::English);
}
DskTimeStamp& extractTimeStampForEnhancedLocale(const char* text, DskTimeStamp& result) {
  return result = readTimeStamp(text, Designators::Locale);
}
DskTimeStampInterval& extractTimeStampInterval(const char* text, DskTimeStampInterval& result) {
  result.milliseconds = readInterval(text);
  return result;
}
DskTimeStampOffset& extractTimeStampOffset(const char* text, DskTimeStampOffset& result) {
  return result = readTimeStampOffset(text);
}

unsigned extractDateForCurrentLocale(const char* text) {
  return text == nullptr ? kInvalid : valueOfWholeText(readLocaleDate(TextCursor(text)));
}
DskTimeStamp& extractDateTimeForCurrentLocale(const char* text, DskTimeStamp& result) {
  return result = readLocaleTimeStamp(text);
}

std::size_t findTimeStampStop(const char* text, bool forCurrentLocale) {
  if (text == nullptr) return 0;
  const TextCursor start(text);
  const Reading date = forCurrentLocale ? tryReadLocaleDate(start) : readEnglishDate(start);
  TextCursor at = date.behind;
  if (date.value != kInvalid) {
    const Reading time = readTimeBehind(at, Fraction::Yes, Designators::English);
    at = time.behind;
    if (time.value != kInvalid) at.skipWhiteSpace();
  }
  return static_cast<std::size_t>(at.text() - text);
}
