// Texts copied into buffers of a size.
#ifndef NOMOS_COPYCUT_H
#define NOMOS_COPYCUT_H

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace nomos {

// As much of the text as the buffer holds before its NUL; nothing for a size of 0. The number of
// characters.
inline unsigned copyCut(std::string_view text, char* buffer, unsigned size) {
  if (size == 0) return 0;
  const std::size_t length = std::min<std::size_t>(text.size(), size - 1);
  std::memcpy(buffer, text.data(), length);
  buffer[length] = '\0';
  return static_cast<unsigned>(length);
}

}  // namespace nomos

#endif  // NOMOS_COPYCUT_H
