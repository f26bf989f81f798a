// Look-ups in the table of character entities, by two indexes that the compiler sorts, and the
// table as text.

#include "entitytable.h"

#include "nomos/intl.h"
#include "sys/textutil.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <numeric>
#include <string_view>

using nomutil::textutil::CharEntity;
using nomutil::textutil::kEntities;
using nomutil::textutil::kEntityCount;

namespace {

constexpr std::uint32_t kNoEntity = 0x7FFFFFFF;

using Index = std::array<std::uint16_t, kEntityCount>;

constexpr std::string_view nameOf(std::uint16_t row) {
  return kEntities[row].name;
}
constexpr int codePointOf(std::uint16_t row) {
  return kEntities[row].codePoint;
}

// Rows in the order of their keys, equal keys in the order of the table.
template <class KeyOf>
constexpr Index sortedBy(KeyOf keyOf) {
  Index rows{};
  std::iota(rows.begin(), rows.end(), std::uint16_t{0});
  std::sort(rows.begin(), rows.end(), [keyOf](std::uint16_t left, std::uint16_t right) {
    return keyOf(left) != keyOf(right) ? keyOf(left) < keyOf(right) : left < right;
  });
  return rows;
}

constexpr Index kByName = sortedBy(nameOf);
constexpr Index kByCodePoint = sortedBy(codePointOf);

// The first row of a key, or null.
template <class Key, class KeyOf>
const CharEntity* find(const Index& rows, Key key, KeyOf keyOf) {
  const auto found = std::ranges::lower_bound(rows, key, {}, keyOf);
  return found != rows.end() && keyOf(*found) == key ? &kEntities[*found] : nullptr;
}

// An upper bound of a row's size: room for eight digits and signs, two tabs and a line end.
constexpr std::uint32_t roomOf(const CharEntity& entity) {
  constexpr std::uint32_t kBesideTexts = 11;
  return static_cast<std::uint32_t>(std::string_view(entity.name).size() +
                                    std::string_view(entity.description).size()) +
         kBesideTexts;
}

constexpr std::uint32_t kDumpSize = [] {
  std::uint32_t size = 0;
  for (std::size_t row = 0; row < kEntityCount; ++row) size += roomOf(kEntities[row]);
  return size;
}();

}  // namespace

std::uint32_t findCharEntityByName(const char* name, const char** description) {
  const CharEntity* const entity =
      name == nullptr ? nullptr : find(kByName, std::string_view(name), nameOf);
  if (entity == nullptr) return kNoEntity;
  if (description != nullptr) *description = entity->description;
  return static_cast<std::uint32_t>(entity->codePoint);
}

bool findCharEntityByNumber(int codePoint, const char** name, const char** description) {
  const CharEntity* const entity = find(kByCodePoint, codePoint, codePointOf);
  if (entity == nullptr) return false;
  if (name != nullptr) *name = entity->name;
  if (description != nullptr) *description = entity->description;
  return true;
}

std::uint32_t dumpCharEntityTable(char* buffer, std::uint32_t size) {
  if (buffer == nullptr) return kDumpSize;
  if (size == 0) return 0;
  std::uint32_t written = 0;
  for (const CharEntity* row = kEntities; row->name != nullptr; ++row) {
    if (written + roomOf(*row) >= size) break;
    written +=
        static_cast<std::uint32_t>(intlSnprintf(buffer + written, size - written, "%s\t%d\t%s\r\n",
                                                row->name, row->codePoint, row->description));
  }
  buffer[written] = '\0';
  return written;
}
