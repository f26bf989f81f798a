// What a backend owes to the code in source/common, beside the exported operations that it
// implements itself. source/linux and source/windows define each of these in a file of the same
// name: heap.cpp, format.cpp, console.cpp, directory.cpp, codepage.cpp, profile.cpp, clock.cpp,
// relativetime.cpp, event.cpp, thread.cpp, dlldesc.cpp, processdump.cpp, localedate.cpp.
// The files mutex.cpp, completionport.cpp, file.cpp, lasterror.cpp, locale.cpp and messagetable.cpp
// implement exported classes and functions.
#ifndef NOMOS_SOURCE_PLATFORM_H
#define NOMOS_SOURCE_PLATFORM_H

#include "nomos/localedate.h"
#include "nomos/thread.h"

#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdint>

namespace nomos::platform {

// heap.cpp: the system's allocator; null when it is exhausted. byteCount is not 0; who knows it
// says it again when the block is released.
void* allocate(std::size_t byteCount) noexcept;
void release(void* block, std::size_t byteCount = 0) noexcept;

// A page of 4,096 bytes, all 0, before one that may not be read; null when there is no memory.
char* guardedPage() noexcept;

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

// relativetime.cpp: nanoseconds of a clock that only runs forward and is never set.
std::int64_t monotonicNanos() noexcept;
inline constexpr std::int64_t kNanosPerMilli = 1000000;
inline constexpr std::int64_t kNever = INT64_MAX;

// event.cpp: waits while the low half of word is value, until somebody calls wakeOne or wakeAll for
// it or monotonicNanos reaches deadline; it may also return early. False when the deadline was
// reached, which is never reported early; a deadline of 0 or less has been, kNever is none. The
// wake calls use the address of word alone: the memory may be gone.
bool waitOnWord(const std::atomic<std::uint64_t>& word, std::uint32_t value,
                std::int64_t deadline) noexcept;
void wakeOne(const std::atomic<std::uint64_t>& word) noexcept;
void wakeAll(const std::atomic<std::uint64_t>& word) noexcept;

// thread.cpp: starts a thread as ThreadManager::createThread describes it; name is not null. The
// handle, an even number, is given to releaseThread, or to joinThread until that returns true. 0,
// with the last error set, when there is no thread.
std::uintptr_t startThread(const char* name, ThreadEntry entry, void* argument, bool takesSignals,
                           ThreadPriority priority) noexcept;
bool joinThread(std::uintptr_t handle, std::uint32_t milliseconds) noexcept;
void releaseThread(std::uintptr_t handle) noexcept;
// The last error of a thread that a limit of the system refuses.
extern const unsigned kThreadRefused;

// dlldesc.cpp: the name of the file that a library may have, tried from index 0 on; false where
// there is none, or not enough room. openLibrary takes a directory in normal form, or the empty
// text for the places where the system looks; null with error set, to kNosNoSuchLibrary when the
// file is not there. findEntry gives null for a missing one; copyLibraryPath cuts.
bool libraryFileName(const char* library, unsigned index, char* buffer, unsigned size);
void* openLibrary(const char* directory, const char* file, unsigned& error) noexcept;
void closeLibrary(void* library) noexcept;
void* findEntry(void* library, const char* entry) noexcept;
unsigned copyLibraryPath(void* library, char* buffer, unsigned size) noexcept;

// processdump.cpp: the number of this process; the folder for temporary files, not yet normalised,
// cut; a dump into a new file, which goes away again when it cannot be written whole: a system's
// error number, or 0. It is called by one thread at a time.
unsigned processNumber();
void findTemporaryDirectory(char* buffer, unsigned size);
unsigned writeProcessDump(const char* path, int kind);
extern const unsigned kFileExists;  // the error number of a file that is there already

// localedate.cpp: how a locale writes dates, as UTF-16. A text that the locale lacks, or that has
// no room, is empty. Months are those of its calendar, days start with Monday. A name has up to
// four forms: full and abbreviated, within a date and by itself. Patterns are made of the letters
// d, M (or L) and y, with literal text between apostrophes; the platforms agree so far.
struct LocaleDescription {
  static constexpr unsigned kRoom = 48;  // the longest name of CLDR 42 has 30 units
  static constexpr unsigned kForms = 4;
  using Text = char16_t[kRoom];

  NosCalendar calendar;
  Text shortDate;
  Text longDate;
  Text fullDate;  // with the day's name; the platform may have one long form only
  Text morning;
  Text afternoon;
  Text months[kForms][12];
  Text days[kForms][7];
};

// Describes a locale into an empty description; false when the platform does not know it. 1033,
// English of the United States, is known everywhere.
bool describeLocale(unsigned locale, LocaleDescription& description) noexcept;

// The simple case mappings of one character.
char32_t lowerCase(char32_t character) noexcept;
char32_t upperCase(char32_t character) noexcept;

// As nosFindLocale, nosGetLocaleName and nosFormatLocaleDate describe them.
unsigned findLocale(const char* name) noexcept;
bool localeName(unsigned index, char* buffer, unsigned size) noexcept;
bool formatDateIn(unsigned locale, NosDateStyle style, std::uint32_t date, char16_t* buffer,
                  unsigned room) noexcept;

// The day number of a date in a calendar that is not the Gregorian with other years; 0xFFFFFFFF for
// a date that does not exist there, and for a calendar that the platform lacks.
std::uint32_t dayNumberIn(NosCalendar calendar, int day, int month, int year) noexcept;

// The last of the hundred years in which a year of two digits falls; 0 when there are none.
int lastTwoDigitYear(NosCalendar calendar) noexcept;

}  // namespace nomos::platform

#endif  // NOMOS_SOURCE_PLATFORM_H
