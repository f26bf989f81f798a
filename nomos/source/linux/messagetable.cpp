// Message tables as rows in the module's data, found through their index by linear probing: nearly
// every identifier stands in its first slot. Last errors are the numbers that Windows gives, 317
// and 1815.
#include "nomos/messagetable.h"

#include "nomos/lasterror.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::uint32_t kEnglish = 1033;

const NosMessageRow* findRow(const NosMessageModule& module, std::uint32_t identifier) {
  std::uint32_t slot = nosMessageSlot(identifier, module.slotShift);
  while (const std::uint32_t number = module.slots[slot]) {
    const NosMessageRow& row = module.rows[number - 1];
    if (row.identifier == identifier) return &row;
    slot = (slot + 1) & (0xFFFFFFFFu >> module.slotShift);
  }
  return nullptr;
}

}  // namespace

const NosMessageModule* nosReadableRows(const NosMessageModule& module) {
  return &module;
}

bool nosFormatModuleMessage(const NosMessageModule& module, std::uint32_t identifier,
                            std::uint32_t language, char* buffer, std::uint32_t size) {
  if (language != 0 && language != kEnglish) {
    nosSetLastError(kNosMessageLanguageNotFound);
    return false;
  }
  const NosMessageRow* row = findRow(module, identifier);
  if (row == nullptr) {
    nosSetLastError(kNosMessageNotFound);
    return false;
  }
  const std::uint32_t kept = size != 0 ? std::min(size - 1, row->length) : row->length;
  std::memcpy(buffer, row->text, kept);
  buffer[kept] = '\0';
  return true;
}
