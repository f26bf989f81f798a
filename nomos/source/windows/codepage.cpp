// Code pages through the system's tables of characters and their classes. In all of them but the
// double-byte ones, such as 932, a byte is a character: the euro sign is 80 in 1252 and 88 in 1251.

#include "platform.h"

#include <windows.h>

namespace nomos::platform {
namespace {

constexpr std::uint32_t kNone = 0xFFFFFFFF;

// The superscripts two, three and one, and those in the block from 2070 on: the system counts them
// as digits, but they form no number.
bool isRaisedDigit(wchar_t character) {
  return character == 0xB2 || character == 0xB3 || character == 0xB9 ||
         (character >= 0x2070 && character < 0x20A0);
}

std::uint8_t classesOf(wchar_t character) {
  WORD type = 0;
  GetStringTypeW(CT_CTYPE1, &character, 1, &type);
  const bool digit = (type & C1_DIGIT) != 0 && !isRaisedDigit(character);
  return static_cast<std::uint8_t>(((type & C1_ALPHA) != 0 ? kAlpha : 0) | (digit ? kDigit : 0) |
                                   ((type & C1_UPPER) != 0 ? kUpper : 0) |
                                   ((type & C1_LOWER) != 0 ? kLower : 0));
}

// The byte of the lower-case form of a byte's character; the byte itself when the page has none.
std::uint8_t lowerOf(const CodePage& table, std::uint8_t byte) {
  if (table.character[byte] == kNone) return byte;
  const auto character = static_cast<wchar_t>(table.character[byte]);
  wchar_t lower = character;
  LCMapStringW(LOCALE_INVARIANT, LCMAP_LOWERCASE, &character, 1, &lower, 1);
  for (unsigned other = 0; other < 256; ++other) {
    if (table.character[other] == lower) return static_cast<std::uint8_t>(other);
  }
  return byte;
}

}  // namespace

bool loadCodePage(unsigned number, CodePage& table) {
  if (number == 0) number = GetACP();
  // Numbers that stand for whatever page the system, or the thread, has at the moment.
  if (number == CP_OEMCP || number == CP_MACCP || number == CP_THREAD_ACP) return false;
  CPINFO information;
  if (GetCPInfo(number, &information) == 0 || information.MaxCharSize != 1) return false;

  table.number = number;
  for (unsigned byte = 0; byte < 256; ++byte) {
    const char source = static_cast<char>(byte);
    wchar_t character = 0;
    const bool known =
        MultiByteToWideChar(number, MB_ERR_INVALID_CHARS, &source, 1, &character, 1) == 1;
    table.character[byte] = known ? character : kNone;
    table.classes[byte] = known ? classesOf(character) : std::uint8_t{0};
  }
  for (unsigned byte = 0; byte < 256; ++byte) {
    table.lower[byte] = lowerOf(table, static_cast<std::uint8_t>(byte));
  }
  return true;
}

}  // namespace nomos::platform
