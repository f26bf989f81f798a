// Bytes and NUL-terminated texts at the edges of the copy operations.
#ifndef NOMUTIL_PARAMS_TEXT_H
#define NOMUTIL_PARAMS_TEXT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace nomutil::params {

// Lengths are 32 bits wide; a longer text counts as one that fits nowhere.
inline std::uint32_t lengthOf(const char* text) {
  return static_cast<std::uint32_t>(std::min<std::size_t>(std::strlen(text), 0xFFFFFFFF));
}

// The two may overlap, and either may be null when count is 0.
inline void copyBytes(void* target, const void* source, std::size_t count) {
  if (count != 0) std::memmove(target, source, count);
}

}  // namespace nomutil::params

#endif  // NOMUTIL_PARAMS_TEXT_H
