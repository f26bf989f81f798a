// The C library's formatter.

#include "platform.h"

#include <cstdio>

namespace nomos::platform {

int formatBounded(char* buffer, std::size_t size, const char* format, std::va_list arguments) {
  return std::vsnprintf(buffer, size, format, arguments);
}

}  // namespace nomos::platform
