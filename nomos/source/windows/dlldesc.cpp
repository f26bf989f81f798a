// Libraries through LoadLibraryEx, with the search that leaves out the current folder and PATH:
// what lies there may be anybody's. A library that nomos was shipped with lies beside it, which
// need not be the folder of the program.

#include "nomos/dlldesc.h"

#include "platform.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace nomos::platform {
namespace {

static_assert(kNosNoSuchLibrary == ERROR_MOD_NOT_FOUND);
static_assert(kNosNoSuchEntry == ERROR_PROC_NOT_FOUND);

constexpr unsigned kPathRoom = 1024;

bool fits(int length, unsigned size) {
  return length >= 0 && static_cast<unsigned>(length) < size;
}

// The libraries that this one needs may lie in its folder too.
HMODULE loadFrom(const char* directory, const char* file) {
  char path[kPathRoom];
  char whole[kPathRoom];
  SetLastError(ERROR_MOD_NOT_FOUND);
  if (!fits(std::snprintf(path, sizeof path, "%s%s", directory, file), sizeof path)) return nullptr;
  const DWORD length = GetFullPathNameA(path, sizeof whole, whole, nullptr);
  if (length == 0 || length >= sizeof whole) return nullptr;
  return LoadLibraryExA(whole, nullptr,
                        LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
}

HMODULE loadFromBesideNomos(const char* file) {
  char folder[kPathRoom];
  const unsigned length = findInstallDirectory(folder, sizeof folder - 1);
  folder[length] = kSeparator;
  folder[length + 1] = '\0';
  return loadFrom(folder, file);
}

HMODULE selfModule() {
  HMODULE module = nullptr;
  GetModuleHandleExA(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      &kSeparator, &module);
  return module;
}

void* entryOf(HMODULE module, const char* entry) {
  const FARPROC address = GetProcAddress(module, entry);
  void* plain;
  static_assert(sizeof plain == sizeof address);
  std::memcpy(&plain, &address, sizeof plain);
  return plain;
}

}  // namespace

bool libraryFileName(const char* library, unsigned index, char* buffer, unsigned size) {
  switch (index) {
    case 0:
      return fits(std::snprintf(buffer, size, "%s.dll", library), size);
    case 1: {
      const char* const version = std::strcmp(library, "geos_c") == 0 ? "-1" : "";
      return fits(std::snprintf(buffer, size, "lib%s%s.dll", library, version), size);
    }
    default:
      return false;
  }
}

void* openLibrary(const char* directory, const char* file, unsigned& error) noexcept {
  HMODULE library;
  if (directory[0] != '\0') {
    library = loadFrom(directory, file);
  } else {
    library = loadFromBesideNomos(file);
    if (library == nullptr && GetLastError() == kNosNoSuchLibrary) {
      library = LoadLibraryExA(file, nullptr, LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
    }
  }
  error = library == nullptr ? GetLastError() : 0;
  return library;
}

void closeLibrary(void* library) noexcept {
  FreeLibrary(static_cast<HMODULE>(library));
}

void* findEntry(void* library, const char* entry) noexcept {
  return entryOf(static_cast<HMODULE>(library), entry);
}

unsigned copyLibraryPath(void* library, char* buffer, unsigned size) noexcept {
  if (size == 0) return 0;
  const DWORD length = GetModuleFileNameA(static_cast<HMODULE>(library), buffer, size);
  buffer[std::min<DWORD>(length, size - 1)] = '\0';
  return std::min<DWORD>(length, size - 1);
}

}  // namespace nomos::platform

// GetVersionEx shows programs an older system than there is.
bool nosDescribeLocaleLibrary(char* path, unsigned pathSize, char* version,
                              unsigned versionSize) noexcept {
  using namespace nomos::platform;
  copyLibraryPath(GetModuleHandleA("kernel32.dll"), path, pathSize);
  OSVERSIONINFOW system{};
  system.dwOSVersionInfoSize = sizeof system;
  void* const address = entryOf(GetModuleHandleA("ntdll.dll"), "RtlGetVersion");
  if (address != nullptr) reinterpret_cast<LONG(WINAPI*)(OSVERSIONINFOW*)>(address)(&system);
  std::snprintf(version, versionSize, "%lu.%lu.%lu", system.dwMajorVersion, system.dwMinorVersion,
                system.dwBuildNumber);
  return true;
}

void* nosFindExport(const char* name) noexcept {
  return nomos::platform::entryOf(nomos::platform::selfModule(), name);
}
