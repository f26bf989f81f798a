// The exported text functions: a text goes straight into a buffer that has room for any, and into a
// short one what that can hold.

#include "text.h"

#include "sys/datetime.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace nomutil::datetime {
namespace {

template <auto kWrite, class... Parts>
[[gnu::noinline]] char* renderShort(char* buffer, unsigned length, Parts... parts) {
  if (length == 0) return buffer;
  char room[kRoom];
  const std::size_t stored = std::min<std::size_t>(std::strlen(kWrite(room, parts...)), length - 1);
  std::memcpy(buffer, room, stored);
  buffer[stored] = '\0';
  return buffer;
}

template <auto kWrite, class... Parts>
char* render(char* buffer, unsigned length, Parts... parts) {
  return length >= kRoom ? kWrite(buffer, parts...) : renderShort<kWrite>(buffer, length, parts...);
}

// The functions that check their input also end the buffer itself.
template <auto kWrite, class... Parts>
char* renderChecked(char* buffer, unsigned length, Parts... parts) {
  if (length != 0) buffer[length - 1] = '\0';
  return render<kWrite>(buffer, length, parts...);
}

}  // namespace
}  // namespace nomutil::datetime

using namespace nomutil::datetime;

char* formatDate(unsigned date, char* buffer, unsigned length) {
  return renderChecked<writeDate>(buffer, length, date);
}
char* formatTime(unsigned time, char* buffer, unsigned length) {
  return renderChecked<writeTime>(buffer, length, time);
}
char* formatTimeStamp(const DskTimeStamp& stamp, char* buffer, unsigned length) {
  return renderChecked<writeTimeStamp>(buffer, length, stamp.date, stamp.time);
}
char* formatTimeStampOffset(const DskTimeStampOffset& stamp, char* buffer, unsigned length) {
  return renderChecked<writeTimeStampOffset>(buffer, length, stamp.date, stamp.time, stamp.offset);
}
char* formatTimeStampInterval(const DskTimeStampInterval& interval, char* buffer, unsigned length) {
  return renderChecked<writeInterval>(buffer, length, interval.milliseconds);
}

void literalFormatDate(unsigned date, char* buffer, unsigned length) {
  render<writeLiteralDate>(buffer, length, date);
}
void literalFormatTime(unsigned time, char* buffer, unsigned length) {
  render<writeLiteralTime>(buffer, length, time);
}
void literalFormatTimeStamp(DskTimeStamp stamp, char* buffer, unsigned length) {
  render<writeLiteralTimeStamp>(buffer, length, stamp.date, stamp.time);
}

char* formatDateYMD(unsigned date, char* buffer, unsigned length) {
  return render<writeDateYMD>(buffer, length, date);
}
char* formatElapsedTime(unsigned milliseconds, char* buffer, unsigned length) {
  return render<writeElapsedTime>(buffer, length, milliseconds);
}
