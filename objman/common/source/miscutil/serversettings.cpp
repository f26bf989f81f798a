// What the configuration says of the server: one boolean, as a parameter whose first word is
// 0x30007, format 7 and usage 3.

#include "nomos/log.h"
#include "nomos/profile.h"
#include "sys/messages.h"
#include "sys/miscutil.h"
#include "sys/params.h"

#include <cstdint>

namespace {

// A parameter whose value is the address of another.
constexpr unsigned kByReference = 30;

}  // namespace

int getServerSettings(DskParam* result) {
  DskParam* target = result;
  if (result != nullptr && result->header.format == kByReference) {
    target = result->getValue<DskParam*>();
  }
  if (target == nullptr) {
    nomLog("getServerSettings: no parameter for the result");
    return kInvalidParameterType;
  }
  const bool isEnhanced = getIniFileBooleanParam("KoraEnvironment", "EnhancedLocaleSupport", false,
                                                 getGlbIniFileName());
  target->header.format = DSKBOOLEAN;
  target->header.usage = 3;
  target->header.more = 0;
  target->setValue(static_cast<std::uint8_t>(isEnhanced));
  return kNoError;
}
