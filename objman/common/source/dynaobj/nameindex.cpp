// The memory of the index of property names, which holds its entries behind it.

#include "nameindex.h"

#include "nomos/heap.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <new>

namespace nomutil::dynaobj {

// Half of the entries stay free, so that a search is short.
NameIndex* NameIndex::create(std::uint32_t count, std::uint32_t stride) {
  const std::uint32_t entries = std::bit_ceil(count * 4);
  static_assert(sizeof(NameIndex) % alignof(Entry) == 0);
  void* const memory = XHeap::library().allocate(_byteCount(entries));
  if (memory == nullptr) return nullptr;
  NameIndex* const index = new (memory) NameIndex(entries - 1, stride);
  std::fill_n(index->_entries(), entries, Entry{0, kNoName});
  return index;
}

void NameIndex::release(NameIndex* index) {
  if (index == nullptr) return;
  XHeap::library().release(index, _byteCount(index->_mask + 1));
}

bool NameIndex::append(std::uint32_t hash) {
  if (_count > _mask / 2) return false;
  // Less than 2^32, as the length of the image that holds the name.
  const std::uint32_t offset = _count++ * _stride;
  for (std::uint32_t i = 0; i < kMaximumDistance; ++i) {
    Entry& entry = _entries()[(hash + i) & _mask];
    if (entry.offset != kNoName) continue;
    entry = {hash, offset};
    return true;
  }
  _firstLeftOut = std::min(_firstLeftOut, offset);
  return true;
}

}  // namespace nomutil::dynaobj
