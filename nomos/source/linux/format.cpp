// The C library's formatter, which keeps to C99: %lld has 64 bits, and the length that the whole
// text has is returned when it was cut.

#include "platform.h"

#include <cstdio>

namespace nomos::platform {

int formatBounded(char* buffer, std::size_t size, const char* format, std::va_list arguments) {
  return std::vsnprintf(buffer, size, format, arguments);
}

}  // namespace nomos::platform
