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
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace nomutil::decimals {

inline constexpr const char* kSource = "objman/common/source/decimals";
inline constexpr int kMaxPower = 100;  // of the table behind Decimal::power10
inline constexpr int kMaxFastLimbs = 7;
inline constexpr int kMaxStoredLimbs = 5;
inline constexpr int kMaxStoredPlaces = 23;
inline constexpr std::uint8_t kKeepScale = 255;  // "its own scale" where a scale is asked for

// Eight limbs, the two words that they are, and the whole.
using LimbVector = std::uint16_t __attribute__((vector_size(16)));
using WordVector = std::uint64_t __attribute__((vector_size(16)));
using WholeVector = UInt128 __attribute__((vector_size(16)));

// The limbs of the first word, or of each word, reversed; the words stay in their places. It is one
// instruction a word.
inline LimbVector reverseFirstWord(LimbVector limbs) {
  return __builtin_shufflevector(limbs, limbs, 3, 2, 1, 0, 4, 5, 6, 7);
}
inline LimbVector reverseWithinWords(LimbVector limbs) {
  limbs = reverseFirstWord(limbs);
  return __builtin_shufflevector(limbs, limbs, 0, 1, 2, 3, 7, 6, 5, 4);
}

// The high word of high:low shifted left by 0 to 63 bits: without the test for a shift by a whole
// word, and without the slow shift of two registers.
inline std::uint64_t shiftedHigh(std::uint64_t high, std::uint64_t low, unsigned left) {
  return high << left | low >> 1 >> (63 - left);
}

struct Access {
  static constexpr Decimal make(const std::uint16_t (&limbs)[kMaxLimbs], std::uint8_t length,
                                std::uint8_t scaleFactor) {
    return Decimal(Decimal::Constant{}, limbs, length, scaleFactor);
  }

  static void setValid(Decimal& decimal, bool valid) { decimal._valid = valid; }

  // The whole value, sign-extended.
  static Wide wide(const Decimal& decimal) { return loadLimbs(decimal._value, decimal._length); }

  // Normal form of a value. One of more than 21 limbs is reported and loses its upper limbs.
  static Decimal fromWide(const Wide& value, std::uint8_t scaleFactor);

  // Whether operands have 1 to 7 limbs, or 1 to 4, so that a register holds each.
  static bool isShort(const Decimal& decimal) { return decimal._length - 1u < kMaxFastLimbs; }
  static bool areShort(const Decimal& left, const Decimal& right) {
    return isShort(left) && isShort(right);
  }
  static bool areWords(const Decimal& left, const Decimal& right) {
    return ((left._length - 1u) | (right._length - 1u)) < 4;
  }

  // The first 4 limbs at the top of a word, and the first 7 at the top of 128 bits: the value times
  // a power of two, since the limbs behind the length are 0.
  static std::int64_t topWord(const Decimal& decimal) {
    return static_cast<std::int64_t>(fourLimbs(decimal._value));
  }
  static std::uint64_t nextWord(const Decimal& decimal) {
    return fourLimbs(decimal._value + 3) << 16;
  }
  static Int128 topValue(const Decimal& decimal) {
    return static_cast<Int128>(joinWords(fourLimbs(decimal._value), nextWord(decimal)));
  }

  // The value of a word. REQUIRES: the length is 1 to 4.
  static std::int64_t word(const Decimal& decimal) {
    // 64 - 16 * length, in the 6 bits that a shift of a word heeds.
    return topWord(decimal) >> ((0u - 16u * decimal._length) & 63u);
  }

  // The value of at most 7 limbs. REQUIRES: isShort(decimal).
  static Int128 value(const Decimal& decimal) {
    const std::int64_t high = topWord(decimal) >> ((0u - 16u * decimal._length) & 63u);
    if (decimal._length <= 4) return high;
    const std::uint64_t low = fourLimbs(decimal._value + decimal._length - 4);
    return static_cast<Int128>(joinWords(static_cast<std::uint64_t>(high), low));
  }

  // Whether no leading limb is redundant. The empty zero is not in normal form.
  static bool isNormal(const Decimal& decimal) {
    return decimal._length == 1 ||
           (decimal._length > 1 && !isRedundant(decimal._value[0], decimal._value[1]));
  }

  // Normal form of a 64-bit and of a 128-bit value.
  static Decimal fromWord(std::int64_t value, std::uint8_t scaleFactor) {
    return fromImage(wordImage(value, scaleFactor));
  }

  static Decimal fromValue(Int128 value, std::uint8_t scaleFactor) {
    const auto low = static_cast<std::int64_t>(lowWord(static_cast<UInt128>(value)));
    const auto high = static_cast<std::int64_t>(highWord(static_cast<UInt128>(value)));
    if (high == low >> 63) return fromWord(low, scaleFactor);
    if (4 + limbsOf(high) > kMaxFastLimbs) return fromWide(widen(value), scaleFactor);
    return fromImage(twoWordImage(high, static_cast<std::uint64_t>(low), scaleFactor));
  }

  // The same in a Decimal that is still the empty zero. REQUIRES: 7 limbs hold the value.
  static void putWord(Decimal& out, std::int64_t value, std::uint8_t scaleFactor) {
    putImage(out, wordImage(value, scaleFactor));
  }
  static void putTwoWords(Decimal& out, std::int64_t high, std::uint64_t low,
                          std::uint8_t scaleFactor) {
    if (high == static_cast<std::int64_t>(low) >> 63) {
      putWord(out, static_cast<std::int64_t>(low), scaleFactor);
    } else {
      putImage(out, twoWordImage(high, low, scaleFactor));
    }
  }

  // The constructor from a stored decimal.
  static Decimal fromStored(const DskDecimal& stored);

  // The text constructor. REQUIRES: out is the empty zero.
  static void read(Decimal& out, const char* text);

  // Decimal::decimalToString, for any value and buffer.
  static char* render(const Decimal& rendered, char* buffer, std::uint32_t size,
                      std::uint32_t places);

  // Length and scale factor as they stand, scale << 8 | length: a sum of headers adds up both.
  static unsigned header(const Decimal& decimal) {
    std::uint16_t header;
    std::memcpy(&header, &decimal, sizeof header);
    return header;
  }

  // Normal form of a product of up to 14 limbs, which stand at the top of the words; the first of
  // them is dropped when it only repeats the sign. The limbs are moved in registers: a store whose
  // place is known late makes the loads behind it wait.
  static Decimal fromProduct(const std::uint64_t (&word)[4], bool isRedundant, unsigned headers) {
    const WordVector high = {word[0], word[1]};
    const WordVector low = {word[2], word[3]};
    const auto first =
        reinterpret_cast<WholeVector>(reverseWithinWords(reinterpret_cast<LimbVector>(high)));
    const auto second =
        reinterpret_cast<WholeVector>(reverseWithinWords(reinterpret_cast<LimbVector>(low)));
    const std::uint64_t stays = 0 - std::uint64_t{isRedundant};
    const WordVector mask = {stays, stays};
    auto image = reinterpret_cast<LimbVector>(
        chosen(first, first << 16, reinterpret_cast<WholeVector>(mask)));
    image[0] = static_cast<std::uint16_t>(headers - isRedundant);
    const WholeVector next =
        chosen(second, second << 16 | first >> 112, reinterpret_cast<WholeVector>(mask));
    Decimal result;
    putImage(result, image);
    std::memcpy(reinterpret_cast<char*>(&result) + sizeof image, &next, sizeof next);
    return result;
  }

 private:
  static_assert(offsetof(Decimal, _length) == 0 && offsetof(Decimal, _scaleFactor) == 1);
  static_assert(offsetof(Decimal, _value) == 2 && offsetof(Decimal, _valid) == 44);
  static_assert(std::endian::native == std::endian::little);

  // The bits of `a` where the mask is 1, of `b` elsewhere.
  static WholeVector chosen(WholeVector a, WholeVector b, WholeVector mask) {
    return b ^ ((a ^ b) & mask);
  }

  // The first 16 bytes of a Decimal are its header and 7 limbs: those of a value of 1 to 4 limbs,
  // which stand at the top of a word.
  static LimbVector topWordImage(std::uint64_t top, unsigned length, std::uint8_t scaleFactor) {
    const WordVector words = {top, 0};
    const LimbVector reversed = reverseFirstWord(reinterpret_cast<LimbVector>(words));
    auto image = reinterpret_cast<LimbVector>(reinterpret_cast<WholeVector>(reversed) << 16);
    image[0] = static_cast<std::uint16_t>(static_cast<unsigned>(scaleFactor) << 8 | length);
    return image;
  }
  static LimbVector wordImage(std::int64_t value, std::uint8_t scaleFactor) {
    const unsigned length = limbsOf(value);
    return topWordImage(static_cast<std::uint64_t>(value) << ((0u - 16u * length) & 63u), length,
                        scaleFactor);
  }

  // Four limbs as a word, the first one topmost.
  static std::uint64_t fourLimbs(const std::uint16_t* limbs) {
    std::uint64_t word;
    std::memcpy(&word, limbs, sizeof word);
    const WordVector words = {word, 0};
    return reinterpret_cast<WordVector>(reverseFirstWord(reinterpret_cast<LimbVector>(words)))[0];
  }

  // The limbs, 1 to 4, that a word needs.
  static unsigned limbsOf(std::int64_t word) {
    const auto bits = static_cast<std::uint64_t>(word ^ (word >> 63));
    return (static_cast<unsigned>(std::bit_width(bits | 1)) + 16) / 16;
  }

  static Wide widen(Int128 value) {
    const std::uint64_t sign = value < 0 ? ~std::uint64_t{0} : 0;
    const UInt128 bits = static_cast<UInt128>(value);
    return Wide{{lowWord(bits), highWord(bits), sign, sign, sign, sign}};
  }

  // With the limbs of both words reversed the image reads as scale factor and length (scale << 8 |
  // length) on the top of the first word, and the limbs below, the first one topmost. `high` has
  // the first 3 limbs in its low 48 bits.
  static LimbVector imageOf(std::uint64_t high, std::uint64_t low, unsigned length,
                            std::uint8_t scaleFactor) {
    const std::uint64_t header = static_cast<unsigned>(scaleFactor) << 8 | length;
    const WordVector words = {(high << 16 >> 16) | header << 48, low};
    return reverseWithinWords(reinterpret_cast<LimbVector>(words));
  }

  // REQUIRES: the value has 5 to 7 limbs.
  static LimbVector twoWordImage(std::int64_t high, std::uint64_t low, std::uint8_t scaleFactor) {
    const unsigned length = 4 + limbsOf(high);
    const unsigned shift = 16 * (kMaxFastLimbs - length);
    return imageOf(shiftedHigh(static_cast<std::uint64_t>(high), low, shift), low << shift, length,
                   scaleFactor);
  }

  // One store of both words: what loads them soon after takes them from it without waiting.
  static void putImage(Decimal& out, const LimbVector& image) {
    std::memcpy(static_cast<void*>(&out), &image, sizeof image);
  }
  static Decimal fromImage(const LimbVector& image) {
    Decimal result;
    putImage(result, image);
    return result;
  }
};

// The absolute value. Its limb count, which some rules ask for, is that of the operand when it is
// not negative, redundant limbs included.
Decimal absolute(const Decimal& value);

inline std::uint8_t commonScale(const Decimal& left, const Decimal& right) {
  return left.getScaleFactor() > right.getScaleFactor() ? left.getScaleFactor()
                                                        : right.getScaleFactor();
}

inline std::uint8_t productScale(const Decimal& left, const Decimal& right) {
  return static_cast<std::uint8_t>(left.getScaleFactor() + right.getScaleFactor());
}

// Whether a product of operands whose absolute values have so many limbs is not tried. The count of
// limbs decides, not the product, so that the check is cheap: some products that would fit saturate
// as well.
inline bool productSaturates(int leftLimbs, int rightLimbs) {
  return leftLimbs + rightLimbs + 1 > kMaxLimbs;
}

// digits / 10^places for any number of places, rounded half up or cut. digits is not negative.
Wide removePlaces(const Wide& digits, unsigned places, bool round);

// Reports a power that the table lacks.
void assertPower(unsigned power);

// Strips trailing zero digits off a value that is not negative, at most `places` of them; returns
// the places that are left.
int stripZeros(Wide& digits, int places);

// Decimal::scale.
bool scaleDecimal(Decimal& value, int places);

// Integer division with remainder: the quotient has scale 0, the remainder the common scale and
// the dividend's sign. A divisor of zero is reported and gives the aligned dividend twice. False,
// and nothing written, when the scales cannot be aligned.
bool divideDecimals(const Decimal& dividend, const Decimal& divisor, Decimal& quotient,
                    Decimal& remainder);

// The order of two values; unordered when they have one sign and cannot be aligned.
std::partial_ordering compareDecimals(const Decimal& left, const Decimal& right);

// The general path of each operation, for operands of any form.
Decimal generalAdd(const Decimal& left, const Decimal& right);
Decimal generalSubtract(const Decimal& left, const Decimal& right);
Decimal generalMultiply(const Decimal& left, const Decimal& right);
bool generalDivide(const Decimal& dividend, const Decimal& divisor, Decimal& quotient,
                   Decimal& remainder);
Decimal generalRealDivide(const Decimal& dividend, const Decimal& divisor);
std::partial_ordering generalCompare(const Decimal& left, const Decimal& right);
bool generalScale(Decimal& value, int places);

}  // namespace nomutil::decimals

#endif  // NOMUTIL_DECIMALS_ACCESS_H
