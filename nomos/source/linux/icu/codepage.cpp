// The module that knows ICU: tabulates a single-byte code page with ICU's converter and character
// properties.

#include "platform.h"

#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/uversion.h>
#include <array>
#include <cstdio>
#include <memory>
#include <utility>

using nomos::platform::CodePage;

namespace {

struct CloseConverter {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};

using Converter = std::unique_ptr<UConverter, CloseConverter>;

Converter open(const char* form, unsigned number) {
  char name[24];
  std::snprintf(name, sizeof name, form, number);
  UErrorCode status = U_ZERO_ERROR;
  return Converter(ucnv_open(name, &status));  // null for a name that ICU does not know
}

// The converter of a Windows code page number. Where both names exist (874), the first is right.
Converter openPage(unsigned number) {
  if (number >= 28591 && number <= 28606) return open("iso-8859-%u", number - 28590);
  Converter converter = open("windows-%u", number);
  return converter != nullptr ? std::move(converter) : open("cp%u", number);
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
  const Converter converter = openPage(number);
  if (converter == nullptr || ucnv_getMaxCharSize(converter.get()) != 1) return false;

  table->number = number;
  for (unsigned byte = 0; byte < 256; ++byte) {
    const char source = static_cast<char>(byte);
    UChar text[4];
    UErrorCode status = U_ZERO_ERROR;
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

// The version of ICU that is loaded, which may be later than that of its headers.
extern "C" __attribute__((visibility("default"))) const char* nomosIcuVersion() {
  static const auto text = [] {
    UVersionInfo numbers;
    std::array<char, U_MAX_VERSION_STRING_LENGTH> made{};
    u_getVersion(numbers);
    u_versionToString(numbers, made.data());
    return made;
  }();
  return text.data();
}
