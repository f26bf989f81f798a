// Libraries through the dynamic loader. It tells failures as texts in the user's language alone, so
// the number for a library that does not load is always the same.

#include "nomos/dlldesc.h"

#include "copycut.h"
#include "linux/icumodule.h"
#include "platform.h"

#include <dlfcn.h>
#include <link.h>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace nomos::platform {
namespace {

// The libraries whose files tell the version of their interface.
constexpr struct {
  const char* library;
  const char* file;
} kVersionedFiles[] = {{"zlib1", "libz.so.1"}, {"geos_c", "libgeos_c.so.1"}};

constexpr unsigned kPathRoom = 640;

bool fits(int length, unsigned size) {
  return length >= 0 && static_cast<unsigned>(length) < size;
}

}  // namespace

bool libraryFileName(const char* library, unsigned index, char* buffer, unsigned size) {
  if (index != 0) return false;
  const auto* const row =
      std::find_if(std::begin(kVersionedFiles), std::end(kVersionedFiles),
                   [library](const auto& each) { return std::strcmp(each.library, library) == 0; });
  if (row == std::end(kVersionedFiles)) {
    return fits(std::snprintf(buffer, size, "lib%s.so", library), size);
  }
  return fits(std::snprintf(buffer, size, "%s", row->file), size);
}

void* openLibrary(const char* directory, const char* file, unsigned& error) noexcept {
  char path[kPathRoom];
  void* library = nullptr;
  if (fits(std::snprintf(path, sizeof path, "%s%s", directory, file), sizeof path)) {
    library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  }
  error = library == nullptr ? kNosNoSuchLibrary : 0;
  return library;
}

void closeLibrary(void* library) noexcept {
  dlclose(library);
}

void* findEntry(void* library, const char* entry) noexcept {
  return dlsym(library, entry);
}

unsigned copyLibraryPath(void* library, char* buffer, unsigned size) noexcept {
  const link_map* map = nullptr;
  return nomos::copyCut(dlinfo(library, RTLD_DI_LINKMAP, &map) == 0 ? map->l_name : "", buffer,
                        size);
}

}  // namespace nomos::platform

bool nosDescribeLocaleLibrary(char* path, unsigned pathSize, char* version,
                              unsigned versionSize) noexcept {
  using namespace nomos::platform;
  void* const address = findIcuEntry("nomosIcuVersion");
  Dl_info module;
  const bool isFound = address != nullptr && dladdr(address, &module) != 0;
  nomos::copyCut(isFound ? module.dli_fname : "", path, pathSize);
  nomos::copyCut(isFound ? reinterpret_cast<const char* (*)()>(address)() : "", version,
                 versionSize);
  return isFound;
}

void* nosFindExport(const char* name) noexcept {
  Dl_info self;
  if (dladdr(reinterpret_cast<const void*>(&nosFindExport), &self) == 0) return nullptr;
  void* const module = dlopen(self.dli_fname, RTLD_LAZY | RTLD_NOLOAD);
  if (module == nullptr) return nullptr;
  void* const address = dlsym(module, name);
  dlclose(module);
  // The loader goes on to the libraries that this one needs.
  Dl_info owner;
  const bool isOwn =
      address != nullptr && dladdr(address, &owner) != 0 && owner.dli_fbase == self.dli_fbase;
  return isOwn ? address : nullptr;
}
