// Message tables as rows in the module's data. Where the time goes is branches that cannot be
// foreseen, on a collision and on the length of the text: so the index is sparse, and texts of
// usual length are copied without any.
#include "nomos/messagetable.h"

#include "nomos/lasterror.h"

#include <cstring>

namespace {

constexpr std::uint32_t kEnglish = 1033;
constexpr std::uint32_t kBlock = 16;

struct Block {
  std::uint64_t low;
  std::uint64_t high;
};
static_assert(sizeof(Block) == kBlock);

void copyBlock(char* target, const char* source) {
  Block block;
  std::memcpy(&block, source, kBlock);
  std::memcpy(target, &block, kBlock);
}

// The lesser of two offsets below 2^31, in arithmetic that compilers do not turn into a branch.
std::uint32_t lesser(std::uint32_t left, std::uint32_t right) {
  const std::uint32_t difference = left - right;
  return right + (difference & (0u - (difference >> 31)));
}

// Copies byteCount bytes. 16 to 80 of them go as five blocks, each pulled back to end with the
// bytes at the latest: a short text is written more than once, but nothing outside of it.
void copyBytes(char* target, const char* source, std::uint32_t byteCount) {
  const std::uint32_t last = byteCount - kBlock;
  if (byteCount < kBlock || byteCount > 5 * kBlock) {
    std::memcpy(target, source, byteCount);
    return;
  }
  const std::uint32_t second = lesser(kBlock, last);
  const std::uint32_t third = lesser(2 * kBlock, last);
  const std::uint32_t fourth = lesser(3 * kBlock, last);
  copyBlock(target, source);
  copyBlock(target + second, source + second);
  copyBlock(target + third, source + third);
  copyBlock(target + fourth, source + fourth);
  copyBlock(target + last, source + last);
}

const NosMessageRow* findRow(const NosMessageModule& module, std::uint32_t identifier) {
  std::uint32_t slot = nosMessageSlot(identifier, module.slotBits);
  while (const std::uint32_t number = module.slots[slot]) {
    const NosMessageRow& row = module.rows[number - 1];
    if (row.identifier == identifier) return &row;
    slot = (slot + 1) & ((1u << module.slotBits) - 1);
  }
  return nullptr;
}

}  // namespace

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
  if (size != 0 && size <= row->length) {
    std::memcpy(buffer, row->text, size - 1);
    buffer[size - 1] = '\0';
  } else {
    copyBytes(buffer, row->text, row->length + 1);
  }
  return true;
}
