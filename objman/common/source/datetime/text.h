// Rendering: a text is put together where there is room for any, and cut to the caller's buffer.
#ifndef NOMUTIL_DATETIME_TEXT_H
#define NOMUTIL_DATETIME_TEXT_H

#include "nomos/digits.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace nomutil::datetime {

// Room for the longest text and what its making may write behind it.
inline constexpr unsigned kRoom = 64;

// put writes a text of less than kRoom characters, may write to the end of the room behind it, and
// returns its end.
template <class Put>
void render(char* buffer, unsigned length, Put put) {
  if (length >= kRoom) {
    *put(buffer) = '\0';
  } else if (length != 0) {
    char room[kRoom];
    const auto size = static_cast<std::size_t>(put(room) - room);
    const std::size_t stored = std::min<std::size_t>(size, length - 1);
    std::memcpy(buffer, room, stored);
    buffer[stored] = '\0';
  }
}

// The functions that check their input also end the buffer itself.
template <class Put>
char* renderChecked(char* buffer, unsigned length, Put put) {
  if (length != 0) buffer[length - 1] = '\0';
  render(buffer, length, put);
  return buffer;
}

inline char* putText(char* to, std::string_view text) {
  std::memcpy(to, text.data(), text.size());
  return to + text.size();
}

inline constexpr std::string_view kInvalidText = "*invalid*";

// A name of at most 15 characters, copied as 16 bytes.
struct Name {
  char text[16];
  std::uint8_t length;
};
inline char* putName(char* to, const Name& name) {
  std::memcpy(to, name.text, sizeof name.text);
  return to + name.length;
}

// Months from 1; the name of month 0 is not used.
extern const Name kMonthNames[13];

}  // namespace nomutil::datetime

#endif  // NOMUTIL_DATETIME_TEXT_H
