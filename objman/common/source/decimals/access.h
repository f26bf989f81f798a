// The bridge between Decimal and the integers that the arithmetic works on, and the general path.
//
// Nearly every real value has at most 7 limbs, which is one 128-bit integer: the fast path loads
// such operands into registers, computes there, and stores the result in normal form. Everything
// else (the empty zero, values of 8 limbs and more) takes the general path on Wide integers, which
// gives the same results for short operands too.
#ifndef NOMUTIL_DECIMALS_ACCESS_H
#define NOMUTIL_DECIMALS_ACCESS_H

#include "limbs.h"

#include "sys/decimals.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace nomutil::decimals {

inline constexpr const char* kSource = "objman/common/source/decimals";
inline constexpr int kMaxPower = 100;  // of the table behind Decimal::power10
inline constexpr int kMaxFastLimbs = 7;
inline constexpr int kMaxStoredLimbs = 5;
inline constexpr int kMaxStoredPlaces = 23;
inline constexpr std::uint8_t kKeepScale = 255;  // "its own scale" where a scale is asked for

// Eight limbs, and the two words that they are; the words go in and out one by one, since a detour
// over memory would stall the load.
using LimbVector = std::uint16_t __attribute__((vector_size(16)));
using WordVector = std::uint64_t __attribute__((vector_size(16)));

// The limbs of the first word, or of each word, reversed; the words stay in their places. It is one
// instruction a word.
inline LimbVector reverseFirstWord(LimbVector limbs) {
  return __builtin_shufflevector(limbs, limbs, 3, 2, 1, 0, 4, 5, 6, 7);
}
inline LimbVector reverseWithinWords(LimbVector limbs) {
  limbs = reverseFirstWord(limbs);
  return __builtin_shufflevector(limbs, limbs, 0, 1, 2, 3, 7, 6, 5, 4);
}

// The first 16 bytes of a Decimal are its header and 7 limbs. Reversed they read as one integer:
// scale factor and length in the top 16 bits (scale << 8 | length), the limbs below, the first one
// topmost. Short values are loaded and stored whole in this form.
inline constexpr unsigned kShortBits = 16 * kMaxFastLimbs;
inline constexpr UInt128 kShortMask = (UInt128{1} << kShortBits) - 1;

struct Access {
  static constexpr Decimal make(const std::uint16_t (&limbs)[kMaxLimbs], std::uint8_t length,
                                std::uint8_t scaleFactor) {
    return Decimal(Decimal::Constant{}, limbs, length, scaleFactor);
  }

  static void setValid(Decimal& decimal, bool valid) { decimal._valid = valid; }
  static void setLength(Decimal& decimal, int length) {
    decimal._length = static_cast<std::uint8_t>(length);
  }
  static std::uint16_t* limbs(Decimal& decimal) { return decimal._value; }

  // The whole value, sign-extended.
  static Wide wide(const Decimal& decimal) { return loadLimbs(decimal._value, decimal._length); }

  // Normal form of a value. One of more than 21 limbs is reported and loses its upper limbs.
  static Decimal fromWide(const Wide& value, std::uint8_t scaleFactor);

  // Whether the operand has 1 to 7 limbs (or 1 to 4), so that a register holds it.
  static bool isShort(const Decimal& decimal) { return decimal._length - 1u < kMaxFastLimbs; }
  static bool isWord(const Decimal& decimal) { return decimal._length - 1u < 4; }

  // The first 4 limbs at the top of a word, and the first 7 at the top of 128 bits: the value times
  // a power of two, since the limbs behind the length are 0.
  static std::int64_t topWord(const Decimal& decimal) {
    std::uint64_t top;
    std::memcpy(&top, decimal._value, sizeof top);
    const WordVector words = {top, 0};
    const auto reversed =
        reinterpret_cast<WordVector>(reverseFirstWord(reinterpret_cast<LimbVector>(words)));
    return static_cast<std::int64_t>(reversed[0]);
  }

  static Int128 topValue(const Decimal& decimal) {
    LimbVector limbs;
    std::memcpy(&limbs, &decimal, sizeof limbs);
    const auto words = reinterpret_cast<WordVector>(reverseWithinWords(limbs));
    return static_cast<Int128>(joinWords(words[0], words[1]) << 16);
  }

  // The value of at most 4 limbs. REQUIRES: isWord(decimal).
  static std::int64_t word(const Decimal& decimal) {
    // 64 - 16 * length, in the 6 bits that a shift of a word heeds.
    return topWord(decimal) >> ((0u - 16u * decimal._length) & 63u);
  }

  // The value of at most 7 limbs. REQUIRES: isShort(decimal).
  static Int128 value(const Decimal& decimal) {
    const Int128 top = topValue(decimal);
    // Both shifts stay below 64, which spares the test for a shift by a whole word.
    if (decimal._length > 4) return top >> ((0u - 16u * decimal._length) & 63u);
    return static_cast<std::int64_t>(highWord(static_cast<UInt128>(top))) >>
           ((0u - 16u * decimal._length) & 63u);
  }

  // Normal form of a 64-bit and of a 128-bit value.
  static Decimal fromWord(std::int64_t value, std::uint8_t scaleFactor) {
    const std::uint64_t bits = static_cast<std::uint64_t>(value ^ (value >> 63));
    const unsigned length = (80u - static_cast<unsigned>(std::countl_zero(bits | 1))) / 16u;
    const std::uint64_t top = static_cast<std::uint64_t>(value) << ((0u - 16u * length) & 63u);
    return fromImage(joinWords(top >> 16, top << 48), length, scaleFactor);
  }

  static Decimal fromValue(Int128 value, std::uint8_t scaleFactor) {
    const auto bits = static_cast<UInt128>(value);
    const auto low = static_cast<std::int64_t>(lowWord(bits));
    const std::uint64_t sign = static_cast<std::uint64_t>(low >> 63);
    if (highWord(bits) == sign) return fromWord(low, scaleFactor);
    const std::uint64_t high = highWord(bits) ^ static_cast<std::uint64_t>(value < 0 ? -1 : 0);
    const unsigned length =
        (144u - static_cast<unsigned>(std::countl_zero(high | 1)) - (high == 0)) / 16u;
    if (length > kMaxFastLimbs) return fromWide(widen(value), scaleFactor);
    const UInt128 top = bits << ((kShortBits - 16u * length) & 63u);
    return fromImage(top & kShortMask, length, scaleFactor);
  }

  // The constructor from a stored decimal.
  static Decimal fromStored(const DskDecimal& stored);

  // The text constructor.
  static Decimal fromText(const char* text);

  // Leading limbs of a word that only repeat the sign: 0 to 3.
  static unsigned redundantLimbs(std::uint64_t top) {
    const auto sign = static_cast<std::uint64_t>(static_cast<std::int64_t>(top) >> 63);
    return (static_cast<unsigned>(std::countl_zero((top ^ sign) | 1)) - 1) / 16;
  }

  // What fromImage takes: the leading limbs of a normal form.
  struct Top {
    UInt128 high;  // 7 limbs, in the low 112 bits
    UInt128 low;   // 8 limbs more
    unsigned length;
  };

  // The normal form of a product of operands that stood at the top of their words: `length` limbs,
  // the operands' together, from the top of high on, and 14 at most. Of normal operands that are
  // not 0 at most 2 of these limbs are redundant; false otherwise.
  static bool normaliseTop(UInt128 high, UInt128 low, unsigned length, Top& top) {
    const unsigned redundant = redundantLimbs(highWord(high));
    // 0 to 32 bits, shifted word by word: that spares the test for a shift by a whole word.
    const unsigned shift = 16 * redundant;
    const std::uint64_t word[3] = {highWord(high) << shift | lowWord(high) >> 1 >> (63 - shift),
                                   lowWord(high) << shift | highWord(low) >> 1 >> (63 - shift),
                                   highWord(low) << shift | lowWord(low) >> 1 >> (63 - shift)};
    top.high = joinWords(word[0] >> 16, word[0] << 48 | word[1] >> 16);
    top.low = joinWords(word[1] << 48 | word[2] >> 16, word[2] << 48 | lowWord(low) << shift >> 16);
    top.length = length - redundant;
    return redundant <= 2;
  }

  // A value of at most 7 limbs, and of at most 15.
  static Decimal fromTop(const Top& top, std::uint8_t scaleFactor) {
    return fromImage(top.high, top.length, scaleFactor);
  }
  static Decimal fromLongTop(const Top& top, std::uint8_t scaleFactor) {
    Decimal result = fromImage(top.high, top.length, scaleFactor);
    const WordVector words = {highWord(top.low), lowWord(top.low)};
    const LimbVector image = reverseWithinWords(reinterpret_cast<LimbVector>(words));
    std::memcpy(result._value + kMaxFastLimbs, &image, sizeof image);
    return result;
  }

 private:
  static Wide widen(Int128 value) {
    const std::uint64_t sign = value < 0 ? ~std::uint64_t{0} : 0;
    const UInt128 bits = static_cast<UInt128>(value);
    return Wide{{lowWord(bits), highWord(bits), sign, sign, sign, sign}};
  }

  // The header and 7 limbs, which stand in the low 112 bits.
  static Decimal fromImage(UInt128 limbs, unsigned length, std::uint8_t scaleFactor) {
    const std::uint64_t header = static_cast<unsigned>(scaleFactor) << 8 | length;
    const WordVector words = {highWord(limbs) | header << 48, lowWord(limbs)};
    const LimbVector image = reverseWithinWords(reinterpret_cast<LimbVector>(words));
    Decimal result;
    std::memcpy(static_cast<void*>(&result), &image, sizeof image);
    return result;
  }
};
static_assert(std::endian::native == std::endian::little);
static_assert(sizeof(Decimal) > sizeof(UInt128));

// Whether no leading limb is redundant. The empty zero is not in normal form.
inline bool isNormal(const Decimal& decimal) {
  const std::uint16_t* limbs = decimal.getValue();
  if (decimal.getLength() < 2) return decimal.getLength() == 1;
  const unsigned next = limbs[1] & 0x8000u;
  return !(limbs[0] == 0 && next == 0) && !(limbs[0] == 0xFFFF && next != 0);
}

// The absolute value. Its limb count, which some rules ask for, is that of the operand when it is
// not negative, redundant limbs included.
Decimal absolute(const Decimal& value);

// Gives copies of two operands the larger of their scales. False when that fails.
bool alignScales(Decimal& left, Decimal& right);

// digits / 10^places for any number of places, rounded half up or cut. digits is not negative.
Wide removePlaces(const Wide& digits, unsigned places, bool round);

// Reports a power that the table lacks.
void checkPower(unsigned power);

// Decimal::scale.
bool scaleDecimal(Decimal& value, int places);

// Integer division with remainder: the quotient has scale 0, the remainder the common scale and
// the dividend's sign. A divisor of zero is reported and gives the aligned dividend twice. False,
// and nothing written, when the scales cannot be aligned.
bool divideDecimals(const Decimal& dividend, const Decimal& divisor, Decimal& quotient,
                    Decimal& remainder);

// The general path of each operation, for operands of any form.
Decimal generalAdd(const Decimal& left, const Decimal& right);
Decimal generalSubtract(const Decimal& left, const Decimal& right);
Decimal generalMultiply(const Decimal& left, const Decimal& right);
bool generalDivide(const Decimal& dividend, const Decimal& divisor, Decimal& quotient,
                   Decimal& remainder);
Decimal generalRealDivide(const Decimal& dividend, const Decimal& divisor);
bool generalEqual(const Decimal& left, const Decimal& right);
bool generalLess(const Decimal& left, const Decimal& right);
bool generalScale(Decimal& value, int places);

}  // namespace nomutil::decimals

#endif  // NOMUTIL_DECIMALS_ACCESS_H
