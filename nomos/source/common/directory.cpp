// Directories in their normal form ("a//b" is "a/b/"), the environment, and the installation
// directory with its test hook.

#include "nomos/directory.h"

#include "nomos/mutex.h"
#include "nomos/testhooks.h"
#include "platform.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

constexpr unsigned kPathRoom = 520;

constinit ThreadMutex installMutex("NosInstall");
char installOverride[kPathRoom] NOMOS_GUARDED_BY(installMutex) = "";

}  // namespace

unsigned nosGetEnv(const char* name, char* buffer, unsigned size) {
  if (size == 0) return 0;
  try {
    return nomos::platform::getEnvironment(name, buffer, size);
  } catch (const std::bad_alloc&) {
    buffer[0] = '\0';
    return 0;
  }
}

unsigned nosGetInstallDirectory(char* buffer, unsigned size) {
  if (size == 0) return 0;
  buffer[0] = '\0';
  {
    ThreadMutexHold hold(installMutex);
    if (installOverride[0] != '\0') {
      const std::size_t length = std::min<std::size_t>(std::strlen(installOverride), size - 1);
      std::memcpy(buffer, installOverride, length);
      buffer[length] = '\0';
    }
  }
  try {
    if (buffer[0] == '\0') nomos::platform::findInstallDirectory(buffer, size);
  } catch (const std::bad_alloc&) {
    buffer[0] = '\0';
  }
  nosNormaliseDirectory(buffer, size);
  return static_cast<unsigned>(std::strlen(buffer));
}

void nosSetInstallDirectory(const char* path) {
  ThreadMutexHold hold(installMutex);
  std::strncpy(installOverride, path != nullptr ? path : "", kPathRoom - 1);
}

bool nosNormaliseDirectory(char* directory, unsigned size) {
  using nomos::platform::isSeparator;
  using nomos::platform::kSeparator;
  const bool isEmpty = directory[0] == '\0';
  const std::size_t length = std::strlen(directory);
  // The separators at the end become one; those that repeat on the way only make the text shorter.
  std::size_t joined = 0;
  for (std::size_t i = 0; i < length; ++i) {
    // Two separators at the front name a host where the separator is '\\'.
    const bool repeats = i > 0 && isSeparator(directory[i]) && isSeparator(directory[i - 1]) &&
                         !(i == 1 && kSeparator == '\\');
    if (!repeats) ++joined;
  }
  const bool endsWell = length > 0 && isSeparator(directory[length - 1]);
  const std::size_t wanted = isEmpty ? 2 : joined + (endsWell ? 0 : 1);
  if (wanted + 1 > size) return false;

  char* out = directory;
  if (isEmpty) *out++ = '.';
  char previous = '\0';
  for (std::size_t i = 0; i < length; ++i) {
    const char character = directory[i];
    const bool repeats =
        i > 0 && isSeparator(character) && isSeparator(previous) && !(i == 1 && kSeparator == '\\');
    previous = character;
    if (!repeats) *out++ = isSeparator(character) ? kSeparator : character;
  }
  if (!endsWell) *out++ = kSeparator;
  *out = '\0';
  return true;
}
