// Where the library lies, and the environment. The message files and the global configuration file
// lie in the folder of nomos.dll.

#include "copycut.h"
#include "platform.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

namespace nomos::platform {
namespace {

constexpr DWORD kPathRoom = 1024;

}  // namespace

const char kSeparator = '\\';

bool isSeparator(char character) {
  return character == '\\' || character == '/';
}

unsigned getEnvironment(const char* name, char* buffer, unsigned size) {
  DWORD length = GetEnvironmentVariableA(name, buffer, size);
  if (length == 0) return copyCut({}, buffer, size);
  if (length < size) return length;
  // The system does not cut: it tells the room, with the NUL, that the whole value takes.
  std::string value(length, '\0');
  length = GetEnvironmentVariableA(name, value.data(), length);
  value.resize(std::min<std::size_t>(length, value.size()));
  return copyCut(value, buffer, size);
}

unsigned findInstallDirectory(char* buffer, unsigned size) {
  HMODULE module = nullptr;
  char path[kPathRoom];
  DWORD length = 0;
  if (GetModuleHandleExA(
          GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
          &kSeparator, &module) != 0) {
    length = GetModuleFileNameA(module, path, kPathRoom);
  }
  // A length of the whole room means that the path was cut.
  if (length == kPathRoom) length = 0;
  const std::string_view library(path, length);
  const std::size_t folderEnd = library.rfind('\\');
  return copyCut(folderEnd == library.npos ? std::string_view{} : library.substr(0, folderEnd),
                 buffer, size);
}

}  // namespace nomos::platform
