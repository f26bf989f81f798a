// Formatted text and the texts of reals. Formats may say I64 for the 64-bit length modifier, which
// is rewritten to ll: "%020I64u" becomes "%020llu".

#include "nomos/heap.h"
#include "nomos/intl.h"
#include "platform.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstring>

namespace {

// Copies a format with I64 rewritten. REQUIRES: room for the format, which never grows.
void rewriteFormat(const char* format, char* out) {
  while (*format != '\0') {
    if (*format != '%') {
      *out++ = *format++;
      continue;
    }
    *out++ = *format++;
    const std::size_t flags = std::strspn(format, "-+ #0123456789.*");
    std::memcpy(out, format, flags);
    format += flags;
    out += flags;
    if (std::strncmp(format, "I64", 3) == 0) {
      *out++ = 'l';
      *out++ = 'l';
      format += 3;
    }
    if (*format != '\0') *out++ = *format++;
  }
  *out = '\0';
}

int formatRewritten(char* buffer, unsigned size, const char* format, std::va_list arguments) {
  const int wanted = nomos::platform::formatBounded(buffer, size, format, arguments);
  if (wanted < 0) {
    buffer[0] = '\0';
    return 0;
  }
  return std::min(wanted, static_cast<int>(size - 1));
}

// The longest texts: 309 digits before the point, or 1,074 places, beyond which a double has none.
constexpr int kMaxPlaces = 1074;
constexpr unsigned kRealRoom = 1500;

template <class Real>
unsigned realToStringFixed(char* buffer, unsigned size, Real value, int decimals) {
  if (size == 0) return 0;
  char text[kRealRoom];
  const int places = std::min(decimals, kMaxPlaces);
  const std::to_chars_result end =
      decimals > 0
          ? std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, places)
          : std::to_chars(text, text + sizeof text, value, std::chars_format::fixed);
  // Infinities and NaNs have neither places nor, for a NaN, a sign that is worth showing.
  const bool isNumber = value - value == 0;
  const char* const begin = value != value ? "nan" : text;
  const auto length = value != value ? 3u : static_cast<unsigned>(end.ptr - text);
  const auto zeros = isNumber ? static_cast<unsigned>(std::max(decimals - kMaxPlaces, 0)) : 0u;

  const unsigned stored = std::min(length, size - 1);
  std::memcpy(buffer, begin, stored);
  const unsigned padded = std::min(zeros, size - 1 - stored);
  std::memset(buffer + stored, '0', padded);
  buffer[stored + padded] = '\0';
  return stored + padded;
}

}  // namespace

int intlVsnprintf(char* buffer, unsigned size, const char* format, std::va_list arguments) {
  if (size == 0) return 0;
  size = std::min(size, static_cast<unsigned>(INT_MAX));
  if (std::strstr(format, "I64") == nullptr) {
    return formatRewritten(buffer, size, format, arguments);
  }
  const std::size_t formatSize = std::strlen(format) + 1;
  char rewritten[512];
  if (formatSize <= sizeof rewritten) {
    rewriteFormat(format, rewritten);
    return formatRewritten(buffer, size, rewritten, arguments);
  }
  const auto room = static_cast<char*>(XHeap::library().allocate(formatSize));
  if (room == nullptr) {
    buffer[0] = '\0';
    return 0;
  }
  rewriteFormat(format, room);
  const int stored = formatRewritten(buffer, size, room, arguments);
  XHeap::library().release(room);
  return stored;
}

int intlSnprintf(char* buffer, unsigned size, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int stored = intlVsnprintf(buffer, size, format, arguments);
  va_end(arguments);
  return stored;
}

int intlSprintf(char* buffer, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int stored = intlVsnprintf(buffer, INT_MAX, format, arguments);
  va_end(arguments);
  return stored;
}

unsigned intlDoubleToStringFixed(char* buffer, unsigned size, double value, int decimals) {
  return realToStringFixed(buffer, size, value, decimals);
}

unsigned intlFloatToStringFixed(char* buffer, unsigned size, float value, int decimals) {
  return realToStringFixed(buffer, size, value, decimals);
}
