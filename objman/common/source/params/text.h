// Bytes and NUL-terminated texts at the edges of the copy operations, where a text of no length may
// lie nowhere and one of 2^32 bytes or more fits nowhere.
#ifndef NOMUTIL_PARAMS_TEXT_H
#define NOMUTIL_PARAMS_TEXT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace nomutil::params {

// At most 0xFFFFFFFF, for which no room is large enough.
inline std::uint32_t lengthOf(const char* text) {
  return static_cast<std::uint32_t>(std::min<std::size_t>(std::strlen(text), 0xFFFFFFFF));
}

// The two may overlap, and either may be null when count is 0.
inline void copyBytes(void* target, const void* source, std::size_t count) {
  if (count != 0) std::memmove(target, source, count);
}

}  // namespace nomutil::params

#endif  // NOMUTIL_PARAMS_TEXT_H
