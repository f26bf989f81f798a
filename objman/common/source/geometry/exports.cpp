// The exports whose rows say all: each finds its entry, calls it with its own arguments, and makes
// a status of what comes back, by the convention of its row.
#include "loader.h"

#include "sys/messages.h"

#include <cstdint>

namespace nomutil::geometry {
namespace {

constexpr const char* kSource = "objman/common/source/geometry";

template <class T, class V>
void store(T* place, V value) {
  NOMUTIL_REQUIRE_TEXT(kSource, place != nullptr, "the last argument is not null");
  if (place != nullptr) *place = static_cast<T>(value);
}

constexpr int statusOf(bool isGood) {
  return isGood ? kNoError : kSpatialLibraryError;
}

// One function for each convention. What the export has and the entry has not comes first.

template <Export row, class... Arguments>
int callValue(int* value, Arguments... arguments) {
  auto* const entry = findEntry<row>();
  if (entry == nullptr) return kEntryPointNotInLibrary;
  store(value, entry(arguments...));
  return kNoError;
}

template <Export row, class... Arguments>
int callCount(int* value, Arguments... arguments) {
  auto* const entry = findEntry<row>();
  if (entry == nullptr) return kEntryPointNotInLibrary;
  const int count = entry(arguments...);
  store(value, count);
  return statusOf(count >= 0);
}

template <Export row, class... Arguments>
int callSuccess(Arguments... arguments) {
  auto* const entry = findEntry<row>();
  if (entry == nullptr) return kEntryPointNotInLibrary;
  return statusOf(entry(arguments...) != 0);
}

template <Export row, class... Arguments>
int callZero(Arguments... arguments) {
  auto* const entry = findEntry<row>();
  if (entry == nullptr) return kEntryPointNotInLibrary;
  return statusOf(entry(arguments...) == 0);
}

template <Export row, class... Arguments>
int callPredicate(std::uint8_t* result, Arguments... arguments) {
  auto* const entry = findEntry<row>();
  if (entry == nullptr) return kEntryPointNotInLibrary;
  const auto answer = static_cast<std::uint8_t>(entry(arguments...));
  store(result, answer == 1);
  return statusOf(answer < 2);
}

template <Export row, class... Arguments>
auto callObject(std::uint32_t* status, Arguments... arguments) {
  store(status, kNoError);
  auto* const entry = findEntry<row>();
  auto* const object = entry != nullptr ? entry(arguments...) : nullptr;
  if (object == nullptr && status != nullptr) {
    *status = entry != nullptr ? kSpatialLibraryError : kEntryPointNotInLibrary;
  }
  return object;
}

template <Export row, class... Arguments>
int callRelease(Arguments... arguments) {
  auto* const entry = findEntry<row>();
  if (entry == nullptr) return kEntryPointNotInLibrary;
  entry(arguments...);
  return kNoError;
}

}  // namespace
}  // namespace nomutil::geometry

using namespace nomutil::geometry;

#define EXPORT_Own(name, result, arguments)
#define EXPORT_Value(name, result, arguments)                       \
  int name(NOMUTIL_NAMED arguments, int* value) {                   \
    return callValue<Export::name>(value, NOMUTIL_GIVEN arguments); \
  }
#define EXPORT_Count(name, result, arguments)                       \
  int name(NOMUTIL_NAMED arguments, int* value) {                   \
    return callCount<Export::name>(value, NOMUTIL_GIVEN arguments); \
  }
#define EXPORT_Success(name, result, arguments)                \
  int name(NOMUTIL_NAMED arguments) {                          \
    return callSuccess<Export::name>(NOMUTIL_GIVEN arguments); \
  }
#define EXPORT_Zero(name, result, arguments)                \
  int name(NOMUTIL_NAMED arguments) {                       \
    return callZero<Export::name>(NOMUTIL_GIVEN arguments); \
  }
#define EXPORT_Predicate(name, result, arguments)                        \
  int name(NOMUTIL_NAMED arguments, std::uint8_t* answer) {              \
    return callPredicate<Export::name>(answer, NOMUTIL_GIVEN arguments); \
  }
#define EXPORT_Object(name, result, arguments)                        \
  result name(NOMUTIL_NAMED arguments, std::uint32_t* status) {       \
    return callObject<Export::name>(status, NOMUTIL_GIVEN arguments); \
  }
#define EXPORT_Release(name, result, arguments)                \
  int name(NOMUTIL_NAMED arguments) {                          \
    return callRelease<Export::name>(NOMUTIL_GIVEN arguments); \
  }
#define EXPORT(convention, name, entry, result, arguments) \
  EXPORT_##convention(name, result, arguments)

NOMUTIL_GEOMETRY_ENTRIES(EXPORT)
