// A dynamic object is defined, sent as the bytes of its three images, rebuilt, and read by
// somebody who knows nothing of its properties. Exits with 1 when anything goes another way.
#include "sys/dynaobj.h"
#include "sys/messages.h"

#include <cstdio>
#include <string>

namespace {

std::string bytesOf(const KoraString<unsigned char>& image) {
  return {static_cast<const char*>(image.bytes()), image.length()};
}

int take(DynamicObject& object, int (DynamicObject::*set)(const void*, std::uint32_t),
         const std::string& image) {
  return (object.*set)(image.data(), static_cast<std::uint32_t>(image.size()));
}

}  // namespace

int main() {
  const DskObjectId parent = {17, {{7, 8, 0}}, 0, {}, 0, 0, 0};  // object 17 of class 2055
  KoraDynamicObject sent(parent);
  const std::int32_t wheels = 4;
  if (sent.addAndSetAttributeValue("maker", DSKCSTRING, 4, "Anna") != kNoError ||
      sent.addAndSetAttributeValue("wheels", DSKINTEGER, sizeof wheels, &wheels) != kNoError) {
    return 1;
  }
  const int status = sent.addAttribute("wheels", DSKINTEGER64);
  char text[128];
  nomGetMessageText(static_cast<unsigned>(status), text, sizeof text);
  std::printf("%d: %s\n", status, text);

  KoraDynamicObject received(parent);
  if (take(received, &DynamicObject::setPropertyDescriptions,
           bytesOf(sent.getPropertyDescriptions())) != kNoError ||
      take(received, &DynamicObject::setValues, bytesOf(sent.getValues())) != kNoError ||
      take(received, &DynamicObject::setLongValues, bytesOf(sent.getLongValues())) != kNoError) {
    return 1;
  }
  for (std::uint32_t index = 1; index <= received.getPropertyCount(); ++index) {
    char name[DynamicObject::kMaximumNameLength + 1];
    DskParam value;  // becomes what the property holds
    if (paramCreateKoraAny(&value, 0) != kNoError ||
        received.getPropertyName(index, name, sizeof name) != kNoError ||
        received.getPropertyValue(index, &value) != kNoError ||
        paramToString(&value, text, sizeof text) != kNoError) {
      return 1;
    }
    std::printf("%s = %s\n", name, text);
    paramDeleteKoraAny(&value);
  }
  return status == kPropertyNameConflict ? 0 : 1;
}
