// The formatter of the compiler's runtime: the system's own knows neither C99's return value nor
// its conversions.

#include "platform.h"

#include <cstdio>

namespace nomos::platform {

int formatBounded(char* buffer, std::size_t size, const char* format, std::va_list arguments) {
  return __mingw_vsnprintf(buffer, size, format, arguments);
}

}  // namespace nomos::platform
