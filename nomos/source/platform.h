// What a backend owes to the code in source/common, beside the exported operations that it
// implements itself. source/linux and source/windows define each of these in a file of the same
// name: heap.cpp, format.cpp, console.cpp, directory.cpp, codepage.cpp, profile.cpp, clock.cpp.
// The files mutex.cpp, file.cpp, lasterror.cpp, locale.cpp and messagetable.cpp implement exported
// classes and functions.
#ifndef NOMOS_SOURCE_PLATFORM_H
#define NOMOS_SOURCE_PLATFORM_H

#include <cstdarg>
#include <cstddef>
#include <cstdint>

namespace nomos::platform {

// heap.cpp: the system's allocator; null when it is exhausted. byteCount is not 0.
void* allocate(std::size_t byteCount);
void release(void* block);

// format.cpp: vsnprintf of C99, with ll as the 64-bit length modifier. Returns the length that the
// whole text has, or a negative number.
int formatBounded(char* buffer, std::size_t size, const char* format, std::va_list arguments);

// console.cpp. Each takes a text that ends with NUL and writes it as one line.
void writeErrorLine(const char* line);
bool appendLine(const char* path, const char* line);  // false when the file cannot be written
// Shows a window where somebody sees it; false, without having done anything, elsewhere.
bool showMessageBox(const char* text, const char* title);

// directory.cpp: '/' or '\\'; whether a character separates path elements; the value of an
// environment variable, cut to size - 1 characters (its stored length is returned, 0 when unset);
// the installation directory as nosGetInstallDirectory describes it, not yet normalised.
extern const char kSeparator;
bool isSeparator(char character);
unsigned getEnvironment(const char* name, char* buffer, unsigned size);
unsigned findInstallDirectory(char* buffer, unsigned size);

// profile.cpp: copies the value of a key, trimmed, one pair of quotes taken off, then cut to size -
// 1 characters; a comment behind it is still there. False when file, section or key is missing.
bool readProfile(const char* file, const char* section, const char* key, char* buffer,
                 unsigned size);

// codepage.cpp: a single-byte code page, tabulated once when it is chosen.
struct CodePage {
  unsigned number;
  std::uint32_t character[256];  // UTF-32 of each byte, 0xFFFFFFFF for one that has none
  std::uint8_t classes[256];     // the bits below
  std::uint8_t lower[256];       // each byte's lower-case form, or itself
};
inline constexpr std::uint8_t kAlpha = 1;
inline constexpr std::uint8_t kDigit = 2;
inline constexpr std::uint8_t kUpper = 4;
inline constexpr std::uint8_t kLower = 8;

// Fills the table of a code page; 0 asks for the system's own (1252 on Linux). False when the
// platform lacks it or it is not single-byte.
bool loadCodePage(unsigned number, CodePage& table);

// clock.cpp: the local date and time of day; a leap second is second 60.
struct LocalTime {
  int year, month, day, hour, minute, second, millisecond;
};
LocalTime localTime();

}  // namespace nomos::platform

#endif  // NOMOS_SOURCE_PLATFORM_H
