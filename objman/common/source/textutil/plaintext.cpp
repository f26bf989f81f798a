// UTF-8 as plain 7-bit text: what is not printable ASCII becomes an entity or a number, so that
// "caf\u00E9" is "caf&eacute;", or "caf&#xE9;" where markup is escaped.

#include "nomos/exception.h"
#include "nomos/intl.h"
#include "sys/messages.h"
#include "sys/textutil.h"

#include <cstring>
#include <string_view>

namespace {

// What is converted and appended at once.
constexpr std::uint32_t kPartCharacters = 128;

// The longest form of a character: '&', a name and ';'.
constexpr std::size_t kMaxName = 30;
constexpr std::size_t kMaxForm = kMaxName + 2;

char* put(char* to, std::string_view text) {
  std::memcpy(to, text.data(), text.size());
  return to + text.size();
}

// At least two hexadecimal digits.
char* putNumber(char* to, std::uint32_t character) {
  to = put(to, "&#x");
  unsigned shift = 4;
  while (shift < 28 && character >> (shift + 4) != 0) shift += 4;
  for (;; shift -= 4) {
    *to++ = "0123456789ABCDEF"[character >> shift & 15];
    if (shift == 0) break;
  }
  return put(to, ";");
}

char* putNamed(char* to, std::uint32_t character) {
  const char* name;
  if (!findCharEntityByNumber(static_cast<int>(character), &name, nullptr)) {
    return putNumber(to, character);
  }
  to = put(to, "&");
  to = put(to, std::string_view(name).substr(0, kMaxName));
  return put(to, ";");
}

char* putCharacter(char* to, std::uint32_t character, bool isMarkup) {
  if (character == '&') return put(to, "&amp;");
  if (isMarkup) {
    switch (character) {
      case '<':
        return put(to, "&lt;");
      case '>':
        return put(to, "&gt;");
      case '"':
        return put(to, "&quot;");
      case '\'':
        return put(to, "&apos;");
      case 0:
        return to;
      default:
        break;
    }
  } else {
    switch (character) {
      case ';':
        return put(to, "&semi;");
      case 0:
        return put(to, "&#00;");
      case '\t':
      case '\n':
      case '\r':
        *to = static_cast<char>(character);
        return to + 1;
      default:
        break;
    }
  }
  if (character >= 32 && character <= 126) {
    *to = static_cast<char>(character);
    return to + 1;
  }
  return isMarkup ? putNumber(to, character) : putNamed(to, character);
}

// The bytes of the next characters, at most kPartCharacters: no sequence that is well formed is
// cut, since a part ends before a byte that is no continuation.
std::uint32_t partSize(const unsigned char* text, std::uint32_t byteCount) {
  std::uint32_t characters = 0;
  for (std::uint32_t i = 0; i < byteCount; ++i) {
    if ((text[i] & 0xC0) != 0x80 && characters++ == kPartCharacters) return i;
  }
  return byteCount;
}

}  // namespace

int stringUtf8AsPlainText(const StringUtf8Info& source, int options, KoraString<char>& target) {
  const bool isMarkup = (options & kPlainTextMarkup) != 0;
  const unsigned char* text = source.data;
  std::uint32_t left = text == nullptr ? 0 : source.byteLength;
  while (left != 0) {
    const std::uint32_t size = partSize(text, left);
    std::uint32_t characters[kPartCharacters], byteCount, count;
    const int status = intlConvertString(IntlFormat::Utf8, text, size, IntlFormat::Utf32,
                                         characters, sizeof characters, byteCount, count);
    if (status != kNoError) return status;
    char plain[kPartCharacters * kMaxForm];
    char* end = plain;
    for (std::uint32_t i = 0; i < count; ++i) end = putCharacter(end, characters[i], isMarkup);
    try {
      target.append(plain, static_cast<std::uint32_t>(end - plain));
    } catch (const NomException& failure) {
      return failure.number();
    }
    text += size;
    left -= size;
  }
  return kNoError;
}
