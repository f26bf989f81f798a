// The single-byte code page in force, and its inverse: in Windows-1252 the byte 80 is the character
// 20AC, and the character 20AC the byte 80.
#ifndef NOMOS_SOURCE_COMMON_CODEPAGES_H
#define NOMOS_SOURCE_COMMON_CODEPAGES_H

#include "platform.h"

#include <cstdint>

namespace nomos {

struct IndexedCodePage : platform::CodePage {
  std::uint8_t byCharacter[128];  // the bytes 80 to FF in the order of their characters
};

// The process-wide code page: the configured one from the first call on. Its table lives as long
// as the process.
const IndexedCodePage& currentCodePage();

// The byte of a character of 80 or above; '?' and false when the code page lacks it.
bool encodeCharacter(const IndexedCodePage& codePage, std::uint32_t character, unsigned char& byte);

}  // namespace nomos

#endif  // NOMOS_SOURCE_COMMON_CODEPAGES_H
