// The entries of GEOS, found by name. What was found is kept for the life of the process, so that a
// call costs one load and one branch above GEOS's own.
#ifndef NOMUTIL_GEOMETRY_LOADER_H
#define NOMUTIL_GEOMETRY_LOADER_H

#include "entries.h"

#include "nomos/dlldesc.h"

#include <atomic>
#include <cstddef>

namespace nomutil::geometry {

// One enumerator for each row, named by its export.
enum class Export : std::size_t {
#define NOMUTIL_GEOMETRY_NAME(convention, name, entry, result, arguments) name,
  NOMUTIL_GEOMETRY_ENTRIES(NOMUTIL_GEOMETRY_NAME)
#undef NOMUTIL_GEOMETRY_NAME
      kCount
};

inline constexpr std::size_t kExportCount = static_cast<std::size_t>(Export::kCount);
static_assert(kExportCount == 77);

// EntryType<Export::GEOS_Area>::Function is int(Context, const Geometry*, double*).
template <Export row>
struct EntryType;
#define NOMUTIL_GEOMETRY_TYPE(convention, name, entry, result, arguments) \
  template <>                                                             \
  struct EntryType<Export::name> {                                        \
    using Function = result arguments;                                    \
  };
NOMUTIL_GEOMETRY_ENTRIES(NOMUTIL_GEOMETRY_TYPE)
#undef NOMUTIL_GEOMETRY_TYPE

// The library. It is never unloaded, since entries stay in use until the process ends.
DllDesc& geosLibrary() noexcept;

// The entries that were found, by the number of their row. A thread that sees an address also sees
// the library initialised. Racing first calls store the same address.
extern constinit std::atomic<void*> foundEntries[kExportCount];

// Looks an entry up and keeps it. Without it: one line in the log, the last error 1008, null.
void* lookUpEntry(Export row) noexcept;

template <Export row>
typename EntryType<row>::Function* findEntry() noexcept {
  void* address = foundEntries[static_cast<std::size_t>(row)].load(std::memory_order_acquire);
  if (address == nullptr) [[unlikely]] {
    address = lookUpEntry(row);
  }
  return reinterpret_cast<typename EntryType<row>::Function*>(address);
}

}  // namespace nomutil::geometry

#endif  // NOMUTIL_GEOMETRY_LOADER_H
