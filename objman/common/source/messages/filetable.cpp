// The entries are one growing array: searched from the start, so that of two lines with the same
// number the first one wins.
#include "filetable.h"

#include "nomos/heap.h"

#include <cstring>

namespace nomutil::messages {
namespace {

constexpr std::uint32_t kFirstCapacity = 3000;

}  // namespace

FileTable::~FileTable() {
  clear();
}

bool FileTable::add(std::int32_t number, std::string_view text) {
  if (_count == _capacity && !_grow()) return false;
  char* copy = static_cast<char*>(XHeap::library().allocate(text.size() + 1));
  if (copy == nullptr) return false;
  if (!text.empty()) std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  _entries[_count++] = {copy, number};
  return true;
}

void FileTable::clear() {
  for (std::uint32_t entry = 0; entry < _count; ++entry) {
    XHeap::library().release(_entries[entry].text);
  }
  XHeap::library().release(_entries);
  _entries = nullptr;
  _count = _capacity = 0;
}

char* FileTable::find(std::int32_t number) const {
  for (const Entry* entry = _entries; entry != _entries + _count; ++entry) {
    if (entry->number == number) return entry->text;
  }
  return nullptr;
}

bool FileTable::_grow() {
  const std::uint64_t capacity =
      _capacity == 0 ? kFirstCapacity : std::uint64_t{_capacity} * 3 / 2 + 1;
  if (capacity > UINT32_MAX) return false;
  Entry* entries = static_cast<Entry*>(XHeap::library().allocate(capacity * sizeof(Entry)));
  if (entries == nullptr) return false;
  if (_count != 0) std::memcpy(entries, _entries, _count * sizeof(Entry));
  XHeap::library().release(_entries);
  _entries = entries;
  _capacity = static_cast<std::uint32_t>(capacity);
  return true;
}

}  // namespace nomutil::messages
