// Numbers that are rare in a text: with white space, with a sign, or of ten digits and more, which
// the C library converts.

#include "textcursor.h"

#include <algorithm>
#include <cstdlib>

namespace nomutil::datetime {

Number TextCursor::takeLongUnsigned(const char* text) {
  char* behind;
  const unsigned long long value = std::strtoull(text, &behind, 10);
  return {static_cast<std::int64_t>(std::min<unsigned long long>(value, UINT32_MAX)),
          static_cast<std::size_t>(behind - text)};
}

Number TextCursor::takeLongSigned(const char* text) {
  char* behind;
  const long long value = std::strtoll(text, &behind, 10);
  return {std::clamp<long long>(value, INT32_MIN, INT32_MAX),
          static_cast<std::size_t>(behind - text)};
}

}  // namespace nomutil::datetime
