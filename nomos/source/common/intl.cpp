// Conversions between the code page, UTF-8 and UTF-32, and what a code page says of its characters.
//
// The euro sign is the byte 80 of Windows-1252, E2 82 AC in UTF-8 and AC 20 00 00 in UTF-32.

#include "nomos/intl.h"

#include "nomos/status.h"

#include "codepages.h"

#include <algorithm>
#include <cstring>

using nomos::currentCodePage;
using nomos::encodeCharacter;

namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

bool isScalar(std::uint32_t character) {
  return character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF);
}

// Reads one character of `left` bytes at text, 1 or more; returns its length, 0 when malformed.
unsigned decodeUtf8(const unsigned char* text, std::uint32_t left, std::uint32_t& character) {
  const unsigned char lead = text[0];
  if (lead < 0x80) {
    character = lead;
    return 1;
  }
  // The smallest characters of 2, 3 and 4 bytes: what is below is overlong.
  static constexpr std::uint32_t kSmallest[] = {0x80, 0x800, 0x10000};
  const unsigned length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || left < length) return 0;
  character = lead & (0x7Fu >> length);
  for (unsigned i = 1; i < length; ++i) {
    if ((text[i] & 0xC0) != 0x80) return 0;
    character = character << 6 | (text[i] & 0x3F);
  }
  return character >= kSmallest[length - 2] && isScalar(character) ? length : 0;
}

// How many bytes at the front of a text are ASCII.
std::uint32_t asciiLength(const unsigned char* text, std::uint32_t left) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080;
  std::uint32_t length = 0;
  for (std::uint64_t eight; left - length >= sizeof eight; length += sizeof eight) {
    std::memcpy(&eight, text + length, sizeof eight);
    if ((eight & kHighBits) != 0) break;
  }
  while (length < left && text[length] < 0x80) ++length;
  return length;
}

unsigned encodeUtf8(std::uint32_t character, unsigned char* bytes) {
  if (character < 0x80) {
    bytes[0] = static_cast<unsigned char>(character);
    return 1;
  }
  const unsigned length = character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
  for (unsigned i = length - 1; i > 0; --i) {
    bytes[i] = static_cast<unsigned char>(0x80 | (character & 0x3F));
    character >>= 6;
  }
  bytes[0] = static_cast<unsigned char>((0xF00u >> length) | character);
  return length;
}

// Reads one character of a form; returns its length in bytes, 0 when malformed. ASCII needs no
// code page, so that a program without other characters never loads one.
unsigned decode(IntlFormat form, const unsigned char* text, std::uint32_t left,
                std::uint32_t& character) {
  switch (form) {
    case IntlFormat::CodePage:
      character = text[0] < 0x80 ? text[0] : currentCodePage().character[text[0]];
      if (character == 0xFFFFFFFF) character = kReplacement;
      return 1;
    case IntlFormat::Utf8:
      return decodeUtf8(text, left, character);
    case IntlFormat::Utf32:
      if (left < 4) return 0;
      character = static_cast<std::uint32_t>(text[0]) | static_cast<std::uint32_t>(text[1]) << 8 |
                  static_cast<std::uint32_t>(text[2]) << 16 |
                  static_cast<std::uint32_t>(text[3]) << 24;
      return isScalar(character) ? 4 : 0;
  }
  return 0;
}

// Writes one character of a form, at most 4 bytes; returns how many.
unsigned encode(IntlFormat form, std::uint32_t character, unsigned char* bytes) {
  switch (form) {
    case IntlFormat::CodePage:
      if (character < 0x80) {
        bytes[0] = static_cast<unsigned char>(character);
      } else {
        encodeCharacter(currentCodePage(), character, bytes[0]);
      }
      return 1;
    case IntlFormat::Utf8:
      return encodeUtf8(character, bytes);
    case IntlFormat::Utf32:
      for (unsigned i = 0; i < 4; ++i) {
        bytes[i] = static_cast<unsigned char>(character >> (8 * i));
      }
      return 4;
  }
  return 0;
}

unsigned char folded(unsigned char character) {
  if (character < 0x80) {
    return character >= 'A' && character <= 'Z' ? static_cast<unsigned char>(character + 32)
                                                : character;
  }
  return currentCodePage().lower[character];
}

int compareFolded(const char* left, const char* right, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const int a = folded(static_cast<unsigned char>(left[i]));
    const int b = folded(static_cast<unsigned char>(right[i]));
    if (a != b) return a - b;
    if (a == 0) break;
  }
  return 0;
}

bool hasClass(unsigned char character, std::uint8_t classes) {
  if (character < 0x80) {
    const bool upper = character >= 'A' && character <= 'Z';
    const bool lower = character >= 'a' && character <= 'z';
    const bool digit = character >= '0' && character <= '9';
    const unsigned own = (upper ? nomos::platform::kUpper | nomos::platform::kAlpha : 0u) |
                         (lower ? nomos::platform::kLower | nomos::platform::kAlpha : 0u) |
                         (digit ? nomos::platform::kDigit : 0u);
    return (own & classes) != 0;
  }
  return (currentCodePage().classes[character] & classes) != 0;
}

}  // namespace

int intlConvertString(IntlFormat from, const void* source, std::uint32_t sourceBytes, IntlFormat to,
                      void* target, std::uint32_t room, std::uint32_t& byteCount,
                      std::uint32_t& characterCount) {
  byteCount = 0;
  characterCount = 0;
  const auto* text = static_cast<const unsigned char*>(source);
  auto* const out = static_cast<unsigned char*>(target);
  // Both forms have ASCII as it is.
  const bool copiesAscii = from != IntlFormat::Utf32 && to != IntlFormat::Utf32;
  while (sourceBytes > 0) {
    if (copiesAscii && text[0] < 0x80) {
      const std::uint32_t run = asciiLength(text, std::min(sourceBytes, room - byteCount));
      if (run == 0) return kNosStringTooLong;
      std::memmove(out + byteCount, text, run);
      byteCount += run;
      characterCount += run;
      text += run;
      sourceBytes -= run;
      continue;
    }
    std::uint32_t character;
    const unsigned read = decode(from, text, sourceBytes, character);
    if (read == 0) return kNosInvalidParameterValue;
    unsigned char bytes[4];
    const unsigned length = encode(to, character, bytes);
    if (length > room - byteCount) return kNosStringTooLong;
    std::memcpy(out + byteCount, bytes, length);
    byteCount += length;
    ++characterCount;
    text += read;
    sourceBytes -= read;
  }
  return 0;
}

int intlStringUTF8VerifyCountchars(const unsigned char* text, std::uint32_t byteCount,
                                   std::uint32_t& characterCount) {
  characterCount = 0;
  while (byteCount > 0) {
    std::uint32_t character;
    const bool isAscii = text[0] < 0x80;
    const std::uint32_t read =
        isAscii ? asciiLength(text, byteCount) : decodeUtf8(text, byteCount, character);
    if (read == 0) return kNosInvalidParameterValue;
    characterCount += isAscii ? read : 1;
    text += read;
    byteCount -= read;
  }
  return 0;
}

int intlStrnicmp(const char* left, const char* right, unsigned count) {
  return compareFolded(left, right, count);
}

int nosStrcmpi(const char* left, const char* right) {
  return compareFolded(left, right, static_cast<std::size_t>(-1));
}

bool nosIsCharAlpha(unsigned char character) {
  return hasClass(character, nomos::platform::kAlpha);
}
bool nosIsCharAlphaNumeric(unsigned char character) {
  return hasClass(character, nomos::platform::kAlpha | nomos::platform::kDigit);
}
bool nosIsCharUpper(unsigned char character) {
  return hasClass(character, nomos::platform::kUpper);
}
bool nosIsCharLower(unsigned char character) {
  return hasClass(character, nomos::platform::kLower);
}
