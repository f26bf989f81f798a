// Decimal text: the reader of the text constructor and the renderer decimalToString.
//
// Grammar of the reader; what follows the number is not read:
//
//   number = *blank [ "+" / "-" ] *digit [ "." *digit ]
//   blank  = space / %x09-0D
//
// "  -0.50" is the digits -50 with scale 2; ".5" and "+0.5" are 5 with scale 1.

#include "access.h"

#include "sys/decimals.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

using namespace nomutil::decimals;

namespace {

constexpr int kMaxTextDigits = 100;  // that the reader takes

// The renderer's work area: 101 digits with sign and point. A fraction of 101 places has a zero
// before its point.
constexpr std::uint32_t kTextRoom = 103;
constexpr std::uint32_t kMaxTextPlaces = 101;

// "00" to "99".
constexpr auto kDigitPairs = [] {
  std::array<char, 200> pairs{};
  for (unsigned i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

bool isDigit(char character) {
  return character >= '0' && character <= '9';
}
bool isBlank(char character) {
  return character == ' ' || (character >= '\t' && character <= '\r');
}

// Reads no character behind one that is not a digit: the text may end there.
bool areEightDigits(const char* text) {
  return isDigit(text[0]) && isDigit(text[1]) && isDigit(text[2]) && isDigit(text[3]) &&
         isDigit(text[4]) && isDigit(text[5]) && isDigit(text[6]) && isDigit(text[7]);
}

// The value of eight digits: neighbours are joined to pairs, fours and eights, each step in one
// multiplication of the whole word.
std::uint64_t eightDigitValue(const char* text) {
  std::uint64_t value;
  std::memcpy(&value, text, sizeof value);
  value = (value & 0x0F0F0F0F0F0F0F0Fu) * (10 * 0x100 + 1) >> 8;
  value = (value & 0x00FF00FF00FF00FFu) * (100 * 0x10000 + 1) >> 16;
  return (value & 0x0000FFFF0000FFFFu) * (10000 * 0x100000000u + 1) >> 32;
}

// The digits read so far: the last ones in a word, those before them in a Wide.
class DigitReader {
 public:
  // Reads digits from text on, up to the limit for the whole number; returns the place of the
  // first character that it did not take.
  const char* read(const char* text) {
    while (isDigit(*text) && _count < kMaxTextDigits) {
      const int room = std::min(kWordDigits - _inWord, kMaxTextDigits - _count);
      int taken = 0;
      while (room - taken >= 8 && areEightDigits(text + taken)) {
        _word = powerOfTen(8) * _word + eightDigitValue(text + taken);
        taken += 8;
      }
      while (taken < room && isDigit(text[taken])) {
        _word = 10 * _word + static_cast<std::uint64_t>(text[taken++] - '0');
      }
      text += taken;
      _count += taken;
      _inWord += taken;
      if (_inWord == kWordDigits) flush();
    }
    return text;
  }

  int count() const { return _count; }

  Decimal finish(bool negative, std::uint8_t places) {
    if (_count == _inWord) {
      const auto word = static_cast<std::int64_t>(_word);
      return Access::fromWord(negative ? -word : word, places);
    }
    constexpr int kValueDigits = 38;  // that 127 bits hold
    if (_count < kValueDigits) {
      const UInt128 above = joinWords(_wide.word[1], _wide.word[0]);
      const auto value = static_cast<Int128>(above * powerOfTen(_inWord) + _word);
      return Access::fromValue(negative ? -value : value, places);
    }
    flush();
    return Access::fromWide(negative ? negate(_wide) : _wide, places);
  }

 private:
  void flush() {
    if (_count == _inWord) {
      _wide.word[0] = _word;
    } else {
      multiplyAdd(_wide, powerOfTen(_inWord), _word);
    }
    _word = 0;
    _inWord = 0;
  }

  Wide _wide;
  std::uint64_t _word = 0;
  int _inWord = 0;
  int _count = 0;
};

// The decimal digits of a magnitude, written from the end of a work area to its front.
class DigitWriter {
 public:
  explicit DigitWriter(const Wide& magnitude) {
    Wide rest = magnitude;
    while (bitLength(rest) > 64) {
      const std::uint32_t wanted = length() + kWordDigits;
      putNumber(divideByWord(rest, powerOfTen(kWordDigits)));
      pad(wanted);
    }
    putNumber(rest.word[0]);
  }

  // Puts zeros before the digits until there are `wanted` of them.
  void pad(std::uint32_t wanted) {
    while (length() < wanted) *--_begin = '0';
  }

  const char* digits() const { return _begin; }
  std::uint32_t length() const { return static_cast<std::uint32_t>(_area + sizeof _area - _begin); }

 private:
  // value without leading zeros; nothing for 0.
  void putNumber(std::uint64_t value) {
    while (value >= 100) {
      putPair(value % 100);
      value /= 100;
    }
    if (value >= 10) {
      putPair(value);
    } else if (value != 0) {
      *--_begin = static_cast<char>('0' + value);
    }
  }

  void putPair(std::uint64_t pair) {
    _begin -= 2;
    std::memcpy(_begin, kDigitPairs.data() + 2 * pair, 2);
  }

  char _area[kTextRoom + 1];
  char* _begin = _area + sizeof _area;
};

// The rest of this space renders values of 1 to 7 limbs with their own places, if these are few,
// into a buffer with room for whole groups of 8 digits.

// Eight digits as characters, the first one lowest (as it lies in memory). Pairs, then digits, are
// split off in all lanes of a word at once; 10486 / 2^20 and 103 / 2^10 stand for 1/100 and 1/10.
constexpr std::uint64_t eightCharacters(std::uint64_t value) {
  const std::uint64_t fours = value / 10000 | value % 10000 << 32;
  const std::uint64_t hundreds = fours * 10486 >> 20 & 0x0000007F0000007Fu;
  const std::uint64_t twos = hundreds | (fours - 100 * hundreds) << 16;
  const std::uint64_t tens = twos * 103 >> 10 & 0x000F000F000F000Fu;
  return (tens | (twos - 10 * tens) << 8) + 0x3030303030303030u;
}
static_assert(eightCharacters(12345678) == 0x3837363534333231u && eightCharacters(0) % 256 == '0');

// The low `count` digits, 1 to 8, at out; 8 bytes are written.
char* putGroup(char* out, std::uint64_t value, unsigned count) {
  const std::uint64_t characters = eightCharacters(value) >> (8 * (8 - count));
  std::memcpy(out, &characters, sizeof characters);
  return out + count;
}

// The same for the last group of a number, with a point before its last `places` digits. The
// fraction is written a second time, one to the right: to move it in memory would wait for the
// digits that were just written.
char* putLastGroup(char* out, std::uint64_t value, unsigned count, unsigned places) {
  const std::uint64_t characters = eightCharacters(value) >> (8 * (8 - count));
  std::memcpy(out, &characters, sizeof characters);
  if (places == 0) return out + count;
  const unsigned whole = count - places;
  const std::uint64_t fraction = characters >> (8 * whole);
  std::memcpy(out + whole + 1, &fraction, sizeof fraction);
  out[whole] = '.';
  return out + count + 1;
}

// `count` digits, 1 to 20, leading zeros included, and a point before the last `places` of them,
// which are no more than the last group has. Up to 8 bytes behind the digits are written too.
char* putDigits(char* out, std::uint64_t value, unsigned count, unsigned places) {
  if (count > 16) {
    out = putGroup(out, value / powerOfTen(16), count - 16);
    value %= powerOfTen(16);
    count = 16;
  }
  if (count > 8) {
    out = putGroup(out, value / powerOfTen(8), count - 8);
    value %= powerOfTen(8);
    count = 8;
  }
  return putLastGroup(out, value, count, places);
}

// Digits of a word, 1 for 0.
unsigned wordDigits(std::uint64_t value) {
  const int estimate = static_cast<int>(std::bit_width(value | 1)) * 1233 >> 12;
  return static_cast<unsigned>(estimate) + (value >= powerOfTen(estimate) || estimate == 0);
}

constexpr std::uint32_t kShortRoom = 48;   // sign, 34 digits, point, NUL and 8 bytes more
constexpr std::uint32_t kShortPlaces = 8;  // of the last group

void renderShort(const Decimal& value, char* out) {
  const Int128 digits = Access::value(value);
  const UInt128 size = digits < 0 ? 0 - static_cast<UInt128>(digits) : static_cast<UInt128>(digits);
  const unsigned places = value.getScaleFactor();
  *out = '-';
  out += digits < 0;
  if (highWord(size) == 0) {
    const std::uint64_t word = lowWord(size);
    out = putDigits(out, word, std::max(wordDigits(word), places + 1), places);
  } else {
    // 7 limbs are below 10^34, so both parts are words.
    std::uint64_t low;
    const std::uint64_t high = divideTwoByOne(highWord(size), lowWord(size), powerOfTen(16), low);
    out = putDigits(out, high, wordDigits(high), 0);
    out = putDigits(out, low, 16, places);
  }
  *out = '\0';
}

char* fillWithStars(char* buffer, std::uint32_t size) {
  std::memset(buffer, '*', size - 1);
  buffer[size - 1] = '\0';
  return buffer;
}

}  // namespace

Decimal Access::fromText(const char* text) {
  while (isBlank(*text)) ++text;
  const bool negative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  if (text[0] == '0' && text[1] == '.') ++text;

  DigitReader reader;
  text = reader.read(text);
  if (isDigit(*text)) {
    // More than 100 digits before the point saturate, and count as valid.
    return negative ? Decimal::Min : Decimal::Max;
  }
  const int integerDigits = reader.count();
  if (*text == '.') reader.read(text + 1);
  return reader.finish(negative, static_cast<std::uint8_t>(reader.count() - integerDigits));
}

Decimal::Decimal(const char* text) : Decimal(Access::fromText(text)) {}

char* Decimal::decimalToString(char* buffer, std::uint32_t size, std::uint32_t places) const {
  if (size == 0) return buffer;
  if (size >= kShortRoom && places == _scaleFactor && places <= kShortPlaces &&
      Access::isShort(*this)) {
    renderShort(*this, buffer);
    return buffer;
  }
  buffer[0] = '\0';
  // More places than the work area holds end in '*' as well, whatever the buffer's size.
  if (std::uint64_t{places} + 1 > size || places > kMaxTextPlaces) {
    return fillWithStars(buffer, size);
  }
  // A value that cannot be raised would have a text of more than 101 digits, too long for the work
  // area with its point. The absolute value of -2^335 is reported and stays negative.
  Decimal value = absolute(*this);
  if (!value.scale(static_cast<int>(places) - value._scaleFactor) || value.isneg()) {
    return fillWithStars(buffer, size);
  }
  DigitWriter writer(Access::wide(value));
  writer.pad(places + 1);
  // The sign is that of the value before rounding.
  const std::uint32_t sign = isneg() ? 1 : 0;
  const std::uint32_t point = places > 0 ? 1 : 0;
  const std::uint32_t length = sign + writer.length() + point;
  if (length > kTextRoom) return fillWithStars(buffer, size);

  // Only a fraction is cut to fit.
  const bool cut = places > 0 && length - places < size;
  if (!cut && length + 1 > size) return fillWithStars(buffer, size);
  const std::uint32_t shown = std::min(length, size - 1);
  const std::uint32_t beforePoint = writer.length() - places;
  if (sign != 0) buffer[0] = '-';
  std::memcpy(buffer + sign, writer.digits(), beforePoint);
  if (point != 0) {
    const std::uint32_t fraction = sign + beforePoint + 1;
    buffer[fraction - 1] = '.';
    std::memcpy(buffer + fraction, writer.digits() + beforePoint, shown - fraction);
  }
  buffer[shown] = '\0';
  return buffer;
}
