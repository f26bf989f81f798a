// The single-byte code page in force, and its inverse.
#ifndef NOMOS_SOURCE_COMMON_CODEPAGES_H
#define NOMOS_SOURCE_COMMON_CODEPAGES_H

#include "platform.h"

#include <cstdint>

namespace nomos {

// The process-wide code page: the configured one from the first call on. Its table lives as long
// as the process.
const platform::CodePage& currentCodePage();

// The byte of a character; '?' and false when the code page lacks it.
bool encodeCharacter(const platform::CodePage& codePage, std::uint32_t character,
                     unsigned char& byte);

}  // namespace nomos

#endif  // NOMOS_SOURCE_COMMON_CODEPAGES_H
