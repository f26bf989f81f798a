// The module that knows ICU: tabulates a single-byte code page with ICU's converter and character
// properties.

#include "platform.h"

#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <cstdio>
#include <memory>

using nomos::platform::CodePage;

namespace {

struct CloseConverter {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};

// ICU's name of a Windows code page number.
void nameOf(unsigned number, char (&name)[24]) {
  if (number >= 28591 && number <= 28606) {
    std::snprintf(name, sizeof name, "iso-8859-%u", number - 28590);
  } else if (number == 20866) {
    std::snprintf(name, sizeof name, "KOI8-R");
  } else if (number == 21866) {
    std::snprintf(name, sizeof name, "KOI8-U");
  } else {
    std::snprintf(name, sizeof name, "windows-%u", number);
  }
}

std::uint8_t classesOf(UChar32 character) {
  using namespace nomos::platform;
  return static_cast<std::uint8_t>((u_isalpha(character) ? kAlpha : 0) |
                                   (u_isdigit(character) ? kDigit : 0) |
                                   (u_hasBinaryProperty(character, UCHAR_UPPERCASE) ? kUpper : 0) |
                                   (u_hasBinaryProperty(character, UCHAR_LOWERCASE) ? kLower : 0));
}

}  // namespace

extern "C" __attribute__((visibility("default"))) bool nomosIcuLoadCodePage(unsigned number,
                                                                            CodePage* table) {
  char name[24];
  nameOf(number, name);
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<UConverter, CloseConverter> converter(ucnv_open(name, &status));
  if (U_FAILURE(status) || ucnv_getMaxCharSize(converter.get()) != 1) return false;

  table->number = number;
  for (unsigned byte = 0; byte < 256; ++byte) {
    const char source = static_cast<char>(byte);
    UChar text[4];
    status = U_ZERO_ERROR;
    const int32_t length = ucnv_toUChars(converter.get(), text, 4, &source, 1, &status);
    const bool known = U_SUCCESS(status) && length == 1 && text[0] != 0xFFFD;
    table->character[byte] = known ? text[0] : 0xFFFFFFFF;
    table->classes[byte] = known ? classesOf(text[0]) : std::uint8_t{0};
  }
  for (unsigned byte = 0; byte < 256; ++byte) {
    table->lower[byte] = static_cast<std::uint8_t>(byte);
    if (table->character[byte] == 0xFFFFFFFF) continue;
    const UChar32 lower = u_tolower(static_cast<UChar32>(table->character[byte]));
    for (unsigned other = 0; other < 256; ++other) {
      if (table->character[other] == static_cast<std::uint32_t>(lower)) {
        table->lower[byte] = static_cast<std::uint8_t>(other);
        break;
      }
    }
  }
  return true;
}
