// Handles as text, and the finder of free slots. The handle 1F, 3, 4 with the tags 'Q', 'W' and 0
// is "1F-3-4-QW00". The finder has a byte for each slot, which is not 0 where the slot is taken.

#include "nomos/digits.h"
#include "sys/formatters.h"

#include <cstdint>
#include <cstring>
#include <new>

namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";

char* putHex(char* to, std::uint32_t value) {
  unsigned shift = 28;
  while (shift != 0 && value >> shift == 0) shift -= 4;
  for (;; shift -= 4) {
    *to++ = kHexDigits[value >> shift & 15];
    if (shift == 0) return to;
  }
}

// Only these letters, whatever the locale calls upper case.
char* putTag(char* to, std::uint8_t tag) {
  if (tag >= 'A' && tag <= 'Z') {
    *to++ = static_cast<char>(tag);
  } else {
    *to++ = kHexDigits[tag >> 4];
    *to++ = kHexDigits[tag & 15];
  }
  return to;
}

}  // namespace

// The longest text is "{FFFFFFFF-65535-65535-FFFFFF}", 29 characters.
const char* DskHandleFormatter::format(const DskHandle* handle) {
  char* to = _buffer;
  if (braces) *to++ = '{';
  if (handle == nullptr) {
    std::memcpy(to, "<null>", 6);
    to += 6;
  } else {
    to = putHex(to, static_cast<std::uint32_t>(handle->value));
    *to++ = '-';
    to = nomos::putNumber(to, handle->first);
    *to++ = '-';
    to = nomos::putNumber(to, handle->second);
    *to++ = '-';
    for (const std::uint8_t tag : handle->tags) to = putTag(to, tag);
  }
  if (braces) *to++ = '}';
  *to = '\0';
  return _buffer;
}

// Index 0 is unused. An array for more slots than memory has is the same as none.
HoleFinder::HoleFinder(unsigned slotCount) : _slotCount(slotCount) {
  if (slotCount == 0) return;
  try {
    _marks.reset(new unsigned char[std::size_t{slotCount} + 1]());
  } catch (const std::bad_alloc&) {
    _marks = nullptr;
  }
}

HoleFinder::~HoleFinder() = default;

void HoleFinder::markSlot(unsigned slot) const {
  if (slot >= 1 && slot <= _slotCount && _marks != nullptr) _marks[slot] = 1;
}

unsigned HoleFinder::getNextSlot() const {
  if (_slotCount == 0 || _marks == nullptr) return 1;
  const void* const hole = std::memchr(_marks.get() + 1, 0, _slotCount);
  if (hole == nullptr) return _slotCount + 1;
  return static_cast<unsigned>(static_cast<const unsigned char*>(hole) - _marks.get());
}
