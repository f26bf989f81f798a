// The texts of dates, times, timestamps, offsets and intervals, with a NUL, where there is room for
// any: kRoom bytes, all of which may be written. Each function returns text.
#ifndef NOMUTIL_DATETIME_TEXT_H
#define NOMUTIL_DATETIME_TEXT_H

#include <cstdint>

namespace nomutil::datetime {

// The longest text has less than 40 characters.
inline constexpr unsigned kRoom = 48;

char* writeDate(char* text, std::uint32_t date);
char* writeTime(char* text, std::uint32_t time);
char* writeTimeStamp(char* text, std::uint32_t date, std::uint32_t time);
char* writeTimeStampOffset(char* text, std::uint32_t date, std::uint32_t time, std::int32_t offset);
char* writeInterval(char* text, std::int64_t milliseconds);

char* writeLiteralDate(char* text, std::uint32_t date);
char* writeLiteralTime(char* text, std::uint32_t time);
char* writeLiteralTimeStamp(char* text, std::uint32_t date, std::uint32_t time);

char* writeDateYMD(char* text, std::uint32_t date);
char* writeElapsedTime(char* text, std::uint32_t milliseconds);

}  // namespace nomutil::datetime

#endif  // NOMUTIL_DATETIME_TEXT_H
