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

// The first slot of an identifier in an index of 2^(32 - slotShift) slots (multiplicative hashing,
// Knuth volume 3, 6.4).
constexpr std::uint32_t nosMessageSlot(std::uint32_t identifier, unsigned slotShift) {
  return static_cast<std::uint32_t>(identifier * 0x9E3779B9u) >> slotShift;
}

// The index of a table of rows: each row's number, counted from 1, stands in the first slot that
// was free from nosMessageSlot of its identifier on; 0 is a free slot. With sixteen slots a row
// nearly every row stands in its first.
template <std::size_t kRowCount>
struct NosMessageIndex {
  static_assert(kRowCount < 0xFFFF, "a slot has 16 bits");

  // Of two rows with one identifier the first is found.
  constexpr explicit NosMessageIndex(const NosMessageRow (&rows)[kRowCount]) {
    for (std::size_t row = 0; row < kRowCount; ++row) {
      std::uint32_t slot = nosMessageSlot(rows[row].identifier, kSlotShift);
      while (slots[slot] != 0) slot = (slot + 1) & (kSlotCount - 1);
      slots[slot] = static_cast<std::uint16_t>(row + 1);
    }
  }

  // The shift of nosMessageSlot for this many rows.
  static constexpr unsigned slotShift() {
    unsigned shift = 28;
    while ((std::size_t{1} << (32 - shift)) < 16 * kRowCount) --shift;
    return shift;
  }

  static constexpr unsigned kSlotShift = slotShift();
  static constexpr std::size_t kSlotCount = std::size_t{1} << (32 - kSlotShift);
  std::uint16_t slots[kSlotCount] = {};
};

// A module that has a table, as it describes itself to the functions below.
struct NosMessageModule {
  const void* anchor;          // any address inside the module, by which Windows finds it
  const NosMessageRow* rows;   // this and the index are not read on Windows
  const std::uint16_t* slots;  // of the NosMessageIndex of rows
  unsigned slotShift;          // of the same
};

// The module itself where its table is its rows, which may then be read in place; null where it is
// a resource.
NOMOS_API const NosMessageModule* nosReadableRows(const NosMessageModule& module);

// The number, from 1, of the row in an identifier's first slot, which may be that of another one; 0
// when the slot is free.
inline std::uint32_t nosFirstRow(const NosMessageModule& module, std::uint32_t identifier) {
  return module.slots[nosMessageSlot(identifier, module.slotShift)];
}

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
