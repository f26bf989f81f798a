// Configuration: the global file's path and typed reading of keys. The backends give a value with
// the comment behind it, "1 ; one", which is cut here.

#include "nomos/profile.h"

#include "nomos/directory.h"
#include "nomos/intl.h"
#include "nomos/mutex.h"
#include "nomos/testhooks.h"
#include "platform.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

constexpr unsigned kPathRoom = 520;
constexpr unsigned kValueRoom = 1024;

constinit ThreadMutex pathMutex("NosProfile");
char path[kPathRoom] NOMOS_GUARDED_BY(pathMutex) = "";

// ASCII letters in any case.
bool equalsIgnoringCase(const char* left, const char* right) {
  const auto fold = [](char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character + 32) : character;
  };
  while (*left != '\0' && fold(*left) == fold(*right)) {
    ++left;
    ++right;
  }
  return fold(*left) == fold(*right);
}

// A value that memory does not suffice to read counts as missing.
bool tryReadProfile(const char* file, const char* section, const char* key, char* buffer,
                    unsigned size) {
  try {
    return nomos::platform::readProfile(file, section, key, buffer, size);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool isBlank(char character) {
  return character == ' ' || character == '\t';
}

// Where the value without the comment behind it ends.
std::size_t commentStart(const char* value, std::size_t length) {
  for (std::size_t i = 0; i < length; ++i) {
    if (value[i] != ';' || (i > 0 && !isBlank(value[i - 1]))) continue;
    while (i > 0 && isBlank(value[i - 1])) --i;
    return i;
  }
  return length;
}

bool isAnyOf(const char* text, const char* const (&words)[4]) {
  return std::any_of(std::begin(words), std::end(words),
                     [text](const char* word) { return equalsIgnoringCase(text, word); });
}

}  // namespace

const char* getGlbIniFileName() {
  ThreadMutexHold hold(pathMutex);
  if (path[0] == '\0' && nosGetEnv("NOMUTIL_INI", path, kPathRoom) == 0) {
    constexpr char kName[] = "nomutil.ini";
    const unsigned length = nosGetInstallDirectory(path, kPathRoom - sizeof kName);
    std::memcpy(path + length, kName, sizeof kName);
  }
  // The text changes only through the test hook.
  return path;
}

void nosSetGlbIniFileName(const char* newPath) {
  ThreadMutexHold hold(pathMutex);
  std::strncpy(path, newPath != nullptr ? newPath : "", kPathRoom - 1);
}

unsigned getIniFileStringParam(const char* section, const char* key, const char* defaultValue,
                               char* buffer, unsigned size, const char* file) {
  if (size == 0) return 0;
  char value[kValueRoom];
  const char* begin = defaultValue;
  std::size_t length = std::strlen(defaultValue);
  if (tryReadProfile(file, section, key, value, sizeof value)) {
    begin = value;
    const std::size_t whole = std::strlen(value);
    length = commentStart(value, whole);
    // Quotes before a comment are still there.
    const bool isQuoted = length < whole && length >= 2 && (value[0] == '"' || value[0] == '\'') &&
                          value[length - 1] == value[0];
    if (isQuoted) {
      ++begin;
      length -= 2;
    }
  }
  length = std::min<std::size_t>(length, size - 1);
  std::memmove(buffer, begin, length);
  buffer[length] = '\0';
  return static_cast<unsigned>(length);
}

bool getIniFileBooleanParam(const char* section, const char* key, bool defaultValue,
                            const char* file) {
  char value[16];
  getIniFileStringParam(section, key, "", value, sizeof value, file);
  if (isAnyOf(value, {"true", "yes", "on", "1"})) return true;
  if (isAnyOf(value, {"false", "no", "off", "0"})) return false;
  return defaultValue;
}
