// The line of a text that holds a position.

#include "nomos/exception.h"
#include "sys/textutil.h"

#include <algorithm>
#include <cstring>
#include <iterator>

std::uint32_t getLineAtPosition(const char* text, std::uint32_t length, std::uint32_t position,
                                KoraString<char>& line) {
  if (text == nullptr || position == 0 || position > length) {
    line.clear();
    return 0;
  }
  // An LF is the last character of its own line.
  const char* const at = text + position - 1;
  const char* const begin =
      std::find(std::reverse_iterator(at), std::reverse_iterator(text), '\n').base();
  const void* const lineFeed = std::memchr(at, '\n', length - (position - 1));
  const char* const end =
      lineFeed == nullptr ? text + length : static_cast<const char*>(lineFeed) + 1;
  const auto linesBefore = static_cast<std::uint32_t>(std::count(text, begin, '\n'));
  try {
    line.set(begin, static_cast<std::uint32_t>(end - begin));
  } catch (const NomException&) {
    line.clear();
    return 0;
  }
  return linesBefore + 1;
}
