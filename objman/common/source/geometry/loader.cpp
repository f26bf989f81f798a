// Looking entries up. A library or an entry that is missing is looked for again at each call: it
// may have been installed since.
#include "loader.h"

#include "nomos/lasterror.h"
#include "nomos/log.h"
#include "sys/messages.h"

#include <iterator>

namespace nomutil::geometry {
namespace {

constexpr const char* kLibraryName = "geos_c";

constexpr const char* kEntryNames[] = {
#define NOMUTIL_GEOMETRY_ENTRY(convention, name, entry, result, arguments) #entry,
    NOMUTIL_GEOMETRY_ENTRIES(NOMUTIL_GEOMETRY_ENTRY)
#undef NOMUTIL_GEOMETRY_ENTRY
};
static_assert(std::size(kEntryNames) == kExportCount);

// A descriptor without an end: other threads may still be inside GEOS when the process ends.
union Immortal {
  Immortal() noexcept : library(kLibraryName) {}
  ~Immortal() {}
  DllDesc library;
};
Immortal immortal;

}  // namespace

constinit std::atomic<void*> foundEntries[kExportCount] = {};

DllDesc& geosLibrary() noexcept {
  return immortal.library;
}

void* lookUpEntry(Export row) noexcept {
  const auto number = static_cast<std::size_t>(row);
  void* const address = immortal.library.getMethod(kEntryNames[number], false);
  if (address == nullptr) {
    nomLog("GEOS_C: Unable to get address of '%s' in '%s', O/S Error %d.", kEntryNames[number],
           kLibraryName, static_cast<int>(nosGetLastError()));
    nosSetLastError(kEntryPointNotInLibrary);
    return nullptr;
  }
  foundEntries[number].store(address, std::memory_order_release);
  return address;
}

}  // namespace nomutil::geometry
