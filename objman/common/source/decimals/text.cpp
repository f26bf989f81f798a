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
#include <new>

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

constexpr std::uint64_t kGroup = powerOfTen(8);

// The number of eight digits of 0 to 9, the first one lowest, whose pairs, 0 to 99, stand in the
// even bytes already: they are joined to fours and eights, in one multiplication of the word each.
std::uint64_t joinPairs(std::uint64_t pairs) {
  pairs &= 0x00FF00FF00FF00FFu;
  const std::uint64_t fours = pairs * (100 * 0x10000 + 1) >> 16 & 0x0000FFFF0000FFFFu;
  return fours * (10000 * 0x100000000u + 1) >> 32;
}
std::uint64_t joinDigits(std::uint64_t digits) {
  return joinPairs(10 * digits + (digits >> 8));
}

// The value of eight digits.
std::uint64_t eightDigitValue(const char* text) {
  std::uint64_t characters;
  std::memcpy(&characters, text, sizeof characters);
  return joinDigits(characters & 0x0F0F0F0F0F0F0F0Fu);
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

// Of a number below 10^8 first the upper and the lower four digits, then all eight of them in a
// byte each, the first one lowest (as it lies in memory). All lanes of a word are split at once:
// with u = v / n for a lane's value v, (v << bits) - u * ((n << bits) - 1) is u and, `bits` higher,
// v - n * u. 109951163 / 2^40, 10486 / 2^20 and 103 / 2^10 stand for 1/10000, 1/100 and 1/10.
constexpr std::uint64_t splitFours(std::uint64_t value) {
  const std::uint64_t upper = value * 109951163 >> 40;
  return (value << 32) - upper * ((std::uint64_t{10000} << 32) - 1);
}
constexpr std::uint64_t eightDigits(std::uint64_t value) {
  const std::uint64_t fours = splitFours(value);
  const std::uint64_t hundreds = fours * 10486 >> 20 & 0x0000007F0000007Fu;
  const std::uint64_t twos = (fours << 16) - hundreds * ((100 << 16) - 1);
  const std::uint64_t tens = twos * 103 >> 10 & 0x000F000F000F000Fu;
  return (twos << 8) - tens * ((10 << 8) - 1);
}
static_assert(eightDigits(12345678) == 0x0807060504030201u && eightDigits(99990009) % 16 == 9);

constexpr std::uint64_t kZeros = 0x3030303030303030u;

void putEight(char* out, std::uint64_t characters) {
  std::memcpy(out, &characters, sizeof characters);
}

// The low `count` digits, 1 to 8, at out; 8 bytes are written.
char* putGroup(char* out, std::uint64_t value, unsigned count) {
  putEight(out, (eightDigits(value) | kZeros) >> (8 * (8 - count)));
  return out + count;
}

// The end of a number: eight digits without the first `skipped` ones, a point before the last
// `places` of them, 0 to 7, and NUL. The fraction is written a second time, one to the right: to
// move it in memory would wait for the digits that were just written.
void putEnd(char* out, std::uint64_t digits, unsigned skipped, unsigned places) {
  const std::uint64_t characters = digits | kZeros;
  putEight(out, characters >> (8 * skipped));
  char* const point = out + (8 - skipped - places);
  // Above the fraction are zeros, the NUL behind it.
  putEight(point + 1, characters >> (8 * (7 - places)) >> 8);
  *point = places != 0 ? '.' : '\0';
}

// Digits of a word, 1 for 0.
unsigned wordDigits(std::uint64_t value) {
  value |= 1;  // which no power of ten from 10 on makes a difference to
  const int estimate = static_cast<int>(std::bit_width(value)) * 1233 >> 12;
  return static_cast<unsigned>(estimate) + (value >= powerOfTen(estimate));
}

// The leading zeros among eight digits; 7 - places at most, the digit before the point shows.
unsigned leadingZeros(std::uint64_t digits, unsigned places) {
  const std::uint64_t units = std::uint64_t{1} << (8 * (7 - places));
  return static_cast<unsigned>(std::countr_zero(digits | units)) / 8;
}

constexpr std::uint32_t kShortRoom = 48;   // sign, 34 digits, point, NUL and 8 bytes more
constexpr std::uint32_t kShortPlaces = 7;  // with digits of the last group before the point

// All digits of a word, without NUL.
char* putWord(char* out, std::uint64_t value) {
  unsigned count = wordDigits(value);
  if (count > 16) {
    out = putGroup(out, value / powerOfTen(16), count - 16);
    value %= powerOfTen(16);
    count = 16;
  }
  if (count > 8) {
    out = putGroup(out, value / kGroup, count - 8);
    value %= kGroup;
    count = 8;
  }
  return putGroup(out, value, count);
}

// A word's digits with its point and NUL.
void putWordEnd(char* out, std::uint64_t value, unsigned places) {
  const std::uint64_t digits = eightDigits(value % kGroup);
  if (value >= kGroup) {
    putEnd(putWord(out, value / kGroup), digits, 0, places);
  } else {
    putEnd(out, digits, leadingZeros(digits, places), places);
  }
}

// The same as putEnd for sixteen digits, in the lanes of a vector.
void putSixteenEnd(char* out, std::uint64_t value, unsigned places) {
  using DoubleVector = std::uint32_t __attribute__((vector_size(16)));
  const WordVector words = {splitFours(value / kGroup), splitFours(value % kGroup)};
  const auto fours = reinterpret_cast<LimbVector>(words);
  const LimbVector hundreds = fours / 100;
  const LimbVector rest = fours - 100 * hundreds;
  const LimbVector twos =
      hundreds | reinterpret_cast<LimbVector>(reinterpret_cast<DoubleVector>(rest) << 16);
  const LimbVector tens = twos / 10;
  const LimbVector digits = tens | (twos - 10 * tens) << 8;
  const auto characters = reinterpret_cast<WordVector>(digits) | kZeros;
  std::memcpy(out, &characters, sizeof characters);
  const WordVector fraction = characters >> (8 * (7 - places)) >> 8;
  char* const point = out + (16 - places);
  putEight(point + 1, fraction[1]);
  *point = places != 0 ? '.' : '\0';
}

// size / 10^16 and the remainder. REQUIRES: size is at most 2^111, the size of 7 limbs.
std::uint64_t splitSixteen(UInt128 size, std::uint64_t& remainder) {
  constexpr auto kReciprocal = static_cast<std::uint64_t>((UInt128{1} << 117) / powerOfTen(16));
  const auto top = static_cast<std::uint64_t>(size >> 48);
  // The bits that are cut off both factors make less than 2^48 / 10^16 + 2^-6: the quotient is
  // right or one too small.
  std::uint64_t quotient = highWord(UInt128{top} * kReciprocal) >> 5;
  const std::uint64_t rest = lowWord(size) - quotient * powerOfTen(16);
  const bool isSmall = rest >= powerOfTen(16);
  remainder = rest - (isSmall ? powerOfTen(16) : 0);
  return quotient + isSmall;
}

// A word and the sign that its size lost: all bits or none.
struct SignedSize {
  explicit SignedSize(std::int64_t word)
      : sign(static_cast<std::uint64_t>(word >> 63)),
        size((static_cast<std::uint64_t>(word) ^ sign) - sign) {}
  std::uint64_t sign;
  std::uint64_t size;
};

char* putSign(char* out, std::uint64_t sign) {
  *out = '-';
  return out + (sign & 1);
}

// The renderers return the buffer, so that what calls them last need not keep it.
[[gnu::noinline]] char* renderLongWord(const Decimal& value, char* buffer) {
  const SignedSize word(Access::word(value));
  putWordEnd(putSign(buffer, word.sign), word.size, value.getScaleFactor());
  return buffer;
}

char* renderWord(const Decimal& value, char* buffer) {
  const SignedSize word(Access::word(value));
  if (word.size >= kGroup) return renderLongWord(value, buffer);
  const unsigned places = value.getScaleFactor();
  const std::uint64_t digits = eightDigits(word.size);
  putEnd(putSign(buffer, word.sign), digits, leadingZeros(digits, places), places);
  return buffer;
}

// Writes the sign; returns the size. REQUIRES: Access::isShort(value).
UInt128 takeSign(const Decimal& value, char*& out) {
  const auto digits = static_cast<UInt128>(Access::value(value));
  const std::uint64_t sign = std::uint64_t{0} - (highWord(digits) >> 63);
  out = putSign(out, sign);
  return joinWords(highWord(digits) ^ sign, lowWord(digits) ^ sign) + (sign & 1);
}

[[gnu::noinline]] char* renderTwoWords(const Decimal& value, char* buffer) {
  char* out = buffer;
  std::uint64_t low;
  const std::uint64_t high = splitSixteen(takeSign(value, out), low);
  if (high - 1 < kGroup - 1) {
    const std::uint64_t first = eightDigits(high);
    const unsigned skipped = leadingZeros(first, 0);
    putEight(out, (first | kZeros) >> (8 * skipped));
    out += 8 - skipped;
  } else if (high != 0) {
    out = putWord(out, high);
  } else {
    // Redundant limbs make a value of 5 limbs that small.
    putWordEnd(out, low, value.getScaleFactor());
    return buffer;
  }
  putSixteenEnd(out, low, value.getScaleFactor());
  return buffer;
}

// With 8 places the last group is the fraction.
char* renderEightPlaces(const Decimal& value, char* buffer) {
  char* out = buffer;
  std::uint64_t low;
  const std::uint64_t high = splitSixteen(takeSign(value, out), low);
  if (high != 0) {
    out = putGroup(putWord(out, high), low / kGroup, 8);
  } else {
    out = putWord(out, low / kGroup);
  }
  *out = '.';
  *putGroup(out + 1, low % kGroup, 8) = '\0';
  return buffer;
}

char* fillWithStars(char* buffer, std::uint32_t size) {
  std::memset(buffer, '*', size - 1);
  buffer[size - 1] = '\0';
  return buffer;
}

// The quick reader, for texts of up to 23 digits and 7 places behind them, takes eight characters
// at once, some of which may lie behind the end of the text, but on a page of it.
constexpr std::uintptr_t kPageSize = 4096;  // the smallest
constexpr std::uintptr_t kReach = 33;       // bytes from the start of the text on that it may load

// Eight characters, as what they differ in from '0'. It loads what the language does not let it see
// behind the text's end, hidden from compilers and sanitizers. REQUIRES: no page ends in between.
std::uint64_t loadEight(const char* text) {
  std::uint64_t characters;
  __asm__ volatile("movq (%[text]), %[characters]"
                   : [characters] "=r"(characters)
                   : [text] "r"(text)
                   : "memory");
  return characters ^ 0x3030303030303030u;
}

// 0 if all are digits; or else the lowest bit is the high one of the first other character.
std::uint64_t findOther(std::uint64_t characters) {
  // 0x76 takes 10 and more, but none of 0 to 9, to 0x80; only others carry into the bytes above.
  return ((characters + 0x7676767676767676u) | characters) & 0x8080808080808080u;
}

// The digits before the first other character. REQUIRES: other is not 0.
struct Run {
  Run() = default;
  Run(std::uint64_t characters, std::uint64_t other)
      : count(static_cast<unsigned>(std::countr_zero(other)) / 8) {
    // 8 * count + 7 zeros are below the bit: the other character goes to the top byte, which the
    // pairs do not need.
    const std::uint64_t shifted = characters << (63 ^ std::countr_zero(other));
    value = joinPairs(10 * (shifted << 8) + shifted);
  }
  std::uint64_t value;
  std::uint64_t count;  // 0 to 7
};

// The digits behind the character at `at`; none unless that is a point. False for 8 digits.
bool readFraction(const char* at, Run& fraction) {
  const std::uint64_t characters = loadEight(at + 1);
  std::uint64_t other = findOther(characters);
  if (other == 0) return false;
  if (*at != '.') other = 0x80;
  fraction = Run(characters, other);
  return true;
}

std::uint64_t wordPower(std::uint64_t exponent) {
  return powerOfTen(static_cast<int>(exponent));
}

// Any text.
[[gnu::noinline]] void readText(Decimal& out, const char* text) {
  while (isBlank(*text)) ++text;
  const bool negative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  if (text[0] == '0' && text[1] == '.') ++text;

  DigitReader reader;
  text = reader.read(text);
  if (isDigit(*text)) {
    // More than 100 digits before the point saturate, and count as valid.
    new (&out) Decimal(negative ? Decimal::Min : Decimal::Max);
    return;
  }
  const int integerDigits = reader.count();
  if (*text == '.') reader.read(text + 1);
  new (&out)
      Decimal(reader.finish(negative, static_cast<std::uint8_t>(reader.count() - integerDigits)));
}

// A text with eight digits at `at`, behind the sign.
[[gnu::noinline]] void readLongText(Decimal& out, const char* text, const char* at,
                                    std::uint64_t characters) {
  std::uint64_t whole = joinDigits(characters);
  at += 8;
  characters = loadEight(at);
  std::uint64_t other = findOther(characters);
  if (other == 0) {
    whole = kGroup * whole + joinDigits(characters);
    at += 8;
    characters = loadEight(at);
    other = findOther(characters);
    if (other == 0) return readText(out, text);
  }
  const Run last(characters, other);
  Run fraction;
  if (!readFraction(at + last.count, fraction)) return readText(out, text);
  // Up to 16, 7 and 7 digits, which 7 limbs hold.
  const UInt128 size = UInt128{whole} * wordPower(last.count + fraction.count) +
                       (last.value * wordPower(fraction.count) + fraction.value);
  const unsigned negative = *text == '-';
  const std::uint64_t sign = std::uint64_t{0} - negative;
  const UInt128 value = joinWords(highWord(size) ^ sign, lowWord(size) ^ sign) + negative;
  Access::putTwoWords(out, static_cast<std::int64_t>(highWord(value)), lowWord(value),
                      static_cast<std::uint8_t>(fraction.count));
}

// REQUIRES: no page ends before kReach, unless the text ends behind it.
void readQuickly(Decimal& out, const char* text) {
  const unsigned negative = *text == '-';
  const char* const at = text + (negative | (*text == '+'));
  const std::uint64_t characters = loadEight(at);
  const std::uint64_t other = findOther(characters);
  if (other == 0) return readLongText(out, text, at, characters);
  const Run whole(characters, other);
  Run fraction;
  if (!readFraction(at + whole.count, fraction) || (whole.count | fraction.count) == 0) {
    return readText(out, text);
  }
  const std::uint64_t size = wordPower(fraction.count) * whole.value + fraction.value;
  const std::uint64_t sign = std::uint64_t{0} - negative;
  Access::putWord(out, static_cast<std::int64_t>((size ^ sign) + negative),
                  static_cast<std::uint8_t>(fraction.count));
}

std::uintptr_t roomOnPage(const char* text) {
  return kPageSize - reinterpret_cast<std::uintptr_t>(text) % kPageSize;
}

// A text near the end of a page is copied, unless it goes on: then the next page may be read too.
[[gnu::noinline]] void readAtPageEnd(Decimal& out, const char* text) {
  const auto* const end = static_cast<const char*>(std::memchr(text, '\0', roomOnPage(text)));
  if (end == nullptr) return readQuickly(out, text);
  char copy[2 * kReach] = {};
  std::memcpy(copy, text, static_cast<std::size_t>(end - text));
  readQuickly(out, copy);
}

}  // namespace

Decimal::Decimal(const char* text) {
  Access::read(*this, text);
}

void Access::read(Decimal& out, const char* text) {
  return roomOnPage(text) < kReach ? readAtPageEnd(out, text) : readQuickly(out, text);
}

char* Decimal::decimalToString(char* buffer, std::uint32_t size, std::uint32_t places) const {
  if (size >= kShortRoom && places == _scaleFactor && places <= kShortPlaces) {
    if (Access::areWords(*this, *this)) return renderWord(*this, buffer);
    if (Access::isShort(*this)) return renderTwoWords(*this, buffer);
  }
  return Access::render(*this, buffer, size, places);
}

[[gnu::noinline]] char* Access::render(const Decimal& rendered, char* buffer, std::uint32_t size,
                                       std::uint32_t places) {
  if (size == 0) return buffer;
  if (size >= kShortRoom && places == 8 && rendered._scaleFactor == 8 && isShort(rendered)) {
    return renderEightPlaces(rendered, buffer);
  }
  buffer[0] = '\0';
  // More places than the work area holds end in '*' as well, whatever the buffer's size.
  if (std::uint64_t{places} + 1 > size || places > kMaxTextPlaces) {
    return fillWithStars(buffer, size);
  }
  // Nor is there a text for a value that 21 limbs do not hold with so many places, though the work
  // area would: 7 with 100. The absolute value of -2^335 is reported and stays negative.
  Decimal value = absolute(rendered);
  if (!value.scale(static_cast<int>(places) - value._scaleFactor) || value.isneg()) {
    return fillWithStars(buffer, size);
  }
  DigitWriter writer(Access::wide(value));
  writer.pad(places + 1);
  // The sign is that of the value before rounding.
  const std::uint32_t sign = rendered.isneg() ? 1 : 0;
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
