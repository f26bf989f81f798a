// The table of message texts that is built into the library, a row for each number of the list in
// sys/messages.h, and the identifiers of its rows: 1002, "Invalid parameter value", has 610003EA
// (hexadecimal).
#ifndef NOMUTIL_MESSAGES_BUILTIN_H
#define NOMUTIL_MESSAGES_BUILTIN_H

#include "nomos/messagetable.h"

namespace nomutil::messages {

extern const NosMessageModule kBuiltInMessages;

// The identifier of a message in a module's table:
//
//   bits  0 to 15  the low 16 bits of the number
//   bits 16 to 31  severity shifted left by 14, or facility, or 2000 (hexadecimal)
//
// The numbers of the list have severity 1 and facility 256. A negative number takes its low bits:
// -32001 is 33535, 82FF.
constexpr std::uint32_t messageIdentifier(std::uint32_t number, int severity,
                                          std::uint32_t facility) {
  const std::uint32_t high = static_cast<std::uint32_t>(severity) << 14 | facility | 0x2000u;
  return high << 16 | (number & 0xFFFFu);
}

inline constexpr int kSeverity = 1;
inline constexpr unsigned kFacility = 256;

}  // namespace nomutil::messages

#endif  // NOMUTIL_MESSAGES_BUILTIN_H
