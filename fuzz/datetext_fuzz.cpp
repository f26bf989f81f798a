// Any text, read by every reader of dates and times in several locales. Laws: a value is valid or
// the invalid one; where a reader stops lies within the text, and at its end for a value; white
// space around a text makes no difference, but before none; and what was read, written and read
// again is the same.
// Input: one byte for the locale and the designators, then the text.
#include "nomos/locale.h"
#include "nomos/testhooks.h"
#include "sys/datetime.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>

namespace {

constexpr std::uint32_t kInvalid = 0xFFFFFFFF;
constexpr std::uint32_t kMillisOfDay = 86400000;
constexpr unsigned kLocales[] = {1033, 2057, 1031, 1053, 1054, 1041};

void require(bool holds) {
  if (!holds) __builtin_trap();
}

bool isDate(std::uint32_t date) {
  return date == 0 || date == kInvalid || getMonth(date) != 0;
}
bool isTime(std::uint32_t time) {
  return time == kInvalid || time < kMillisOfDay;
}
bool same(const DskTimeStamp& left, const DskTimeStamp& right) {
  return nosDskTimeStampCompare(&left, &right) == 0;
}

void checkStop(const char* text, bool inLocale, const DskTimeStamp& stamp) {
  const std::size_t length = std::strlen(text);
  const std::size_t stop = findTimeStampStop(text, inLocale);
  const bool isRead = stamp.date != kInvalid && stamp.time != kInvalid;
  require(stop <= length && (!isRead || stop == length));
}

void checkDatesAndTimes(const char* text) {
  const std::uint32_t time = extractTime(text);
  require(isTime(time) && isDate(extractDate(text)) && isDate(extractDateForCurrentLocale(text)));
  char written[64];
  if (time != kInvalid) require(extractTime(formatElapsedTime(time, written, 64)) == time);
  const std::string spaced = std::string("\v ") + text + "\t\n";
  if (*text == '\0') return;
  require(extractDate(spaced.c_str()) == extractDate(text));
  require(extractTime(spaced.c_str()) == time);
}

void checkStamps(const char* text) {
  DskTimeStamp stamp, again;
  extractTimeStamp(text, stamp);
  require(isDate(stamp.date) && isTime(stamp.time));
  require((stamp.date == kInvalid) == (stamp.time == kInvalid));
  checkStop(text, false, stamp);
  char written[64];
  if (stamp.date != kInvalid && stamp.date != 0) {
    literalFormatTimeStamp(stamp, written, sizeof written);
    require(same(extractTimeStamp(written, again), stamp));
  }
  extractTimeStampForEnhancedLocale(text, again);
  require(isDate(again.date) && isTime(again.time));
  extractDateTimeForCurrentLocale(text, stamp);
  require(isDate(stamp.date) && isTime(stamp.time));
  checkStop(text, true, stamp);
}

void checkOffsetsAndIntervals(const char* text) {
  char written[64];
  DskTimeStampOffset zoned, zonedAgain;
  extractTimeStampOffset(text, zoned);
  require(isDate(zoned.date) && isTime(zoned.time));
  require(zoned.offset == 0x7FFFFFFF || (zoned.offset >= -840 && zoned.offset <= 840));
  if (zoned.date != 0 && zoned.date != kInvalid && zoned.time != kInvalid) {
    zoned.time -= zoned.time % 1000;
    extractTimeStampOffset(formatTimeStampOffset(zoned, written, sizeof written), zonedAgain);
    require(std::memcmp(&zoned, &zonedAgain, sizeof zoned) == 0);
  }
  DskTimeStampInterval interval, intervalAgain;
  extractTimeStampInterval(text, interval);
  if (interval.milliseconds == INT64_MIN) return;
  formatTimeStampInterval(interval, written, sizeof written);
  require(extractTimeStampInterval(written, intervalAgain).milliseconds == interval.milliseconds);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  nosSetThreadLocale(kLocales[(data[0] >> 1) % std::size(kLocales)]);
  nosSetDTNMode(data[0] & 1);
  // A block of exactly the size, so that reading beyond the text is seen.
  const std::unique_ptr<char[]> text(new char[size]);
  std::memcpy(text.get(), data + 1, size - 1);
  text[size - 1] = '\0';
  checkDatesAndTimes(text.get());
  checkStamps(text.get());
  checkOffsetsAndIntervals(text.get());
  return 0;
}
