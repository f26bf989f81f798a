// The place in a text that is being read, and what a reader of dates takes there. Characters are
// single bytes; what those above 7F are, the code page says. A text ends with NUL, which is neither
// skipped nor taken by anything.
//
// A number is what the conversions of the C library take: white space, a sign, digits. In " -5/"
// that is 3 characters; in "/5" none, which is no number.
#ifndef NOMUTIL_DATETIME_TEXTCURSOR_H
#define NOMUTIL_DATETIME_TEXTCURSOR_H

#include "nomos/intl.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace nomutil::datetime {

enum CharacterClass : std::uint8_t {
  kLetter = 1,
  kDigit = 2,
  kWhiteSpace = 4,
  kEnd = 8,
  kHigh = 16,  // a matter of the code page
};
inline constexpr std::array<std::uint8_t, 256> kClasses = [] {
  std::array<std::uint8_t, 256> classes{};
  for (unsigned c = 'A'; c <= 'Z'; ++c) classes[c] = classes[c + 0x20] = kLetter;
  for (unsigned c = '0'; c <= '9'; ++c) classes[c] = kDigit;
  for (unsigned c = '\t'; c <= '\r'; ++c) classes[c] = kWhiteSpace;
  for (unsigned c = 0x80; c <= 0xFF; ++c) classes[c] = kHigh;
  classes[' '] = kWhiteSpace;
  classes['\0'] = kEnd;
  return classes;
}();
inline bool isOf(char c, unsigned classes) {
  return (kClasses[static_cast<std::uint8_t>(c)] & classes) != 0;
}

inline bool isLetter(char c) {
  return isOf(c, kLetter) || (isOf(c, kHigh) && nosIsCharAlpha(static_cast<std::uint8_t>(c)));
}

// The letter in lower case, if it is one of ASCII.
constexpr std::uint32_t lowered(char c) {
  return static_cast<std::uint8_t>(c) | 0x20u;
}

struct Number {
  std::int64_t value = 0;
  std::size_t length = 0;  // the characters that it takes; 0 when there is none
};

class TextCursor {
 public:
  explicit TextCursor(const char* text) : _at(text) {}

  const char* text() const { return _at; }
  char next() const { return *_at; }
  bool isAtEnd() const { return *_at == '\0'; }

  // REQUIRES: the text goes on for that long.
  void step(std::size_t count) { _at += count; }

  void skipBlanks() {
    while (*_at == ' ') ++_at;
  }
  void skipWhiteSpace() {
    while (isOf(*_at, kWhiteSpace)) ++_at;
  }
  // Everything up to a letter, a digit or the end.
  void skipSeparators() {
    for (; !isOf(*_at, kLetter | kDigit | kEnd); ++_at) {
      if (isOf(*_at, kHigh) && nosIsCharAlphaNumeric(static_cast<std::uint8_t>(*_at))) return;
    }
  }

  // A number from 0 to 0xFFFFFFFF, which stands for all above it. A negative one wraps at 2^64, as
  // strtoull does: "-5" is 0xFFFFFFFF.
  Number takeUnsigned() { return take<takeLongUnsigned>(); }

  // A number within 32 bits, at whose limits those beyond them stand.
  Number takeSigned() { return take<takeLongSigned>(); }

  // The same, but 0 for a negative one: the day, month or year of a date.
  Number takeItem() {
    Number item = takeSigned();
    if (item.value < 0) item.value = 0;
    return item;
  }

  // A run of letters, which may be empty.
  std::string_view takeWord() {
    const char* const word = _at;
    while (isLetter(*_at)) ++_at;
    return {word, static_cast<std::size_t>(_at - word)};
  }

 private:
  using Conversion = Number (*)(const char* text);
  static Number takeLongUnsigned(const char* text);
  static Number takeLongSigned(const char* text);

  // Up to nine digits are within every range, and nearly all numbers are no longer.
  template <Conversion kConvert>
  Number take() {
    const char* const start = _at;
    constexpr std::uint32_t kZero = '0';
    std::uint32_t value = 0;
    std::size_t digits = 0;
    for (std::uint32_t digit; (digit = static_cast<std::uint8_t>(start[digits]) - kZero) <= 9;) {
      value = value * 10 + digit;
      ++digits;
    }
    _at = start + digits;
    if (digits - 1 < 9) [[likely]]
      return {value, digits};
    if (digits == 0 && !isOf(*_at, kWhiteSpace) && *_at != '+' && *_at != '-') return {};
    const Number number = kConvert(start);
    _at = start + number.length;
    return number;
  }

  const char* _at;
};

}  // namespace nomutil::datetime

#endif  // NOMUTIL_DATETIME_TEXTCURSOR_H
