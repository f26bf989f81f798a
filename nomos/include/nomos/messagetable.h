// The message table of a module: texts keyed by 32-bit identifiers, built into the module itself.
// On Windows it is the module's message-table resource; elsewhere an array of rows in its data,
// found through an index that the compiler builds.
#ifndef NOMOS_MESSAGETABLE_H
#define NOMOS_MESSAGETABLE_H

#include "nomos/export.h"

#include <cstddef>
#include <cstdint>

struct NosMessageRow {
  std::uint32_t identifier;
  std::uint32_t length;  // characters of text, without its NUL
  const char* text;      // ends with NUL
};

// The first slot of an identifier in an index of 2^slotBits slots (multiplicative hashing, Knuth
// volume 3, 6.4).
constexpr std::uint32_t nosMessageSlot(std::uint32_t identifier, unsigned slotBits) {
  return static_cast<std::uint32_t>(identifier * 0x9E3779B9u) >> (32 - slotBits);
}

// The index of a table of rows: each row's number, counted from 1, stands in the first slot that
// was free from nosMessageSlot of its identifier on; 0 is a free slot. With sixteen slots a row
// nearly every row stands in its first.
template <std::size_t kRowCount>
struct NosMessageIndex {
  static_assert(kRowCount < 0xFFFF, "a slot has 16 bits");

  constexpr explicit NosMessageIndex(const NosMessageRow (&rows)[kRowCount]) {
    for (std::size_t row = 0; row < kRowCount; ++row) {
      std::uint32_t slot = nosMessageSlot(rows[row].identifier, kSlotBits);
      while (slots[slot] != 0) slot = (slot + 1) & ((1u << kSlotBits) - 1);
      slots[slot] = static_cast<std::uint16_t>(row + 1);
    }
  }

  static constexpr unsigned slotBits() {
    unsigned bits = 4;
    while ((std::size_t{1} << bits) < 16 * kRowCount) ++bits;
    return bits;
  }

  static constexpr unsigned kSlotBits = slotBits();
  std::uint16_t slots[std::size_t{1} << kSlotBits] = {};
};

struct NosMessageModule {
  const void* anchor;          // any address inside the module, by which Windows finds it
  const NosMessageRow* rows;   // this and the index are not read on Windows
  const std::uint16_t* slots;  // of the NosMessageIndex of rows
  unsigned slotBits;           // of the same
};

// Last errors of nosFormatModuleMessage, the same numbers on both platforms.
inline constexpr unsigned kNosMessageNotFound = 317;
inline constexpr unsigned kNosMessageLanguageNotFound = 1815;

// Copies the text of an identifier, at most size - 1 characters and a NUL; a size of 0 copies it
// whole. language is a Windows language identifier; 0 takes the first language that has the
// text. Rows are in language 1033, English. Inserts (%1) stay as they stand. Returns true, or
// false with one of the two last errors above and buffer untouched.
NOMOS_API bool nosFormatModuleMessage(const NosMessageModule& module, std::uint32_t identifier,
                                      std::uint32_t language, char* buffer, std::uint32_t size);

#endif  // NOMOS_MESSAGETABLE_H
