// Profile files through the system's own calls, which trim a value and take one pair of quotes off.
// They know no comment behind a value: "1 ; one" is the whole value here.

#include "platform.h"

#include <windows.h>

#include <cstring>

namespace nomos::platform {
namespace {

// Whether reading the key with this default, one character, gives the default back.
bool givesDefault(const char* path, const char* section, const char* key, const char* fallback) {
  char value[3];
  GetPrivateProfileStringA(section, key, fallback, value, sizeof value, path);
  return std::strcmp(value, fallback) == 0;
}

}  // namespace

bool readProfile(const char* file, const char* section, const char* key, char* buffer,
                 unsigned size) {
  // A relative path would be looked for in the system's own folder.
  char path[MAX_PATH * 2];
  const DWORD length = GetFullPathNameA(file, sizeof path, path, nullptr);
  if (length == 0 || length >= sizeof path) return false;
  // The call does not tell whether the key is there: only then do two defaults give the same.
  if (givesDefault(path, section, key, "0") && givesDefault(path, section, key, "1")) return false;
  GetPrivateProfileStringA(section, key, "", buffer, size, path);
  return true;
}

}  // namespace nomos::platform
