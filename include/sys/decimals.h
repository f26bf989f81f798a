// Exact fixed-point decimals: class Decimal, its stored form DskDecimal, and flat functions for
// callers that hold only stored decimals.
//
// The value of a Decimal is a signed integer of up to 21 sixteen-bit limbs, divided by 10 to the
// power of its scale factor: 12.50 has the limb 1250 and the scale factor 2. Equal values may
// differ in scale: 12.5 and 12.50 compare equal.
//
// Nothing here throws or allocates, and all of it may be called from any thread: the functions
// share no state but constants. An object belongs to one thread at a time.
#ifndef NOMUTIL_SYS_DECIMALS_H
#define NOMUTIL_SYS_DECIMALS_H

#include "nomos/highprecision.h"
#include "nomos/ulong.h"
#include "sys/build.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace nomutil::decimals {
struct Access;
}

// The stored form of a decimal, in memory and (its first 14 bytes) in the database.
// docs/formats/decimal.md describes it with a worked example.
//
//   offset size field        meaning
//   0      1    precision    value bytes in use, twice the number of limbs: 0 to 10
//   1      1    scaleFactor  decimal places, 0 to 23
//   2      10   value        limbs, most significant first, each low byte first, two's complement
//   12     2    reserved     written as 0
//   14     2    padding      not written; read only as a limb of a precision from 14 to 21, which
//                            no conversion writes
struct DskDecimal {
  std::uint8_t precision;
  std::uint8_t scaleFactor;
  std::uint8_t value[10];
  std::uint8_t reserved[2];
  std::uint8_t padding[2];
};
static_assert(sizeof(DskDecimal) == 16 && alignof(DskDecimal) == 1);
static_assert(offsetof(DskDecimal, scaleFactor) == 1 && offsetof(DskDecimal, value) == 2);
static_assert(offsetof(DskDecimal, reserved) == 12 && offsetof(DskDecimal, padding) == 14);

// The working form. Its 46 bytes are also an interchange image:
//
//   offset size field         meaning
//   0      1    _length       limbs in use, 0 to 21; 0 is the empty zero of the default constructor
//   1      1    _scaleFactor  decimal places
//   2      42   _value        limbs, most significant first, each low byte first; those in use form
//                             one two's-complement integer in base 65536, the others are 0
//   44     1    _valid        0 for a value built from invalid input
//   45     1    unused
//
// An image from elsewhere may hold anything in the limbs that are not in use and in _valid: it
// comes in through the constructor from an image, never as the bytes of an object.
//
// A computed value carries no redundant leading limb, so that 0 is the one limb 0000, 32768 the
// limbs 0000 8000 and -1 the limb FFFF. The empty zero differs from that 0: it is unequal to it
// and orders before it. Redundant limbs come from stored decimals and images alone; unary + and a
// division by 0 hand them on.
class NOMUTIL_API Decimal {
  template <class T>
  static constexpr bool _isInteger =
      std::is_integral_v<T> && !std::is_same_v<T, bool> && sizeof(T) <= 8;

 public:
  enum : int { MaxDecimalValueSize = 21 };

  static const Decimal Zero;
  static const Decimal One;
  static const Decimal MinusOne;
  static const Decimal Half;     // 0.5, scale 1
  static const Decimal Max;      // 10^100, where arithmetic saturates
  static const Decimal Min;      // -(10^96): the two bounds differ in size
  static const Decimal KoraMax;  // 10^23 - 1, the largest stored decimal
  static const Decimal KoraMin;  // -(10^23) + 1

  // The empty zero: length 0, scale 0, valid.
  constexpr Decimal() noexcept = default;

  // Integers have scale 0. The class takes 32 and 64 bits; every other integer type goes through
  // the one of them that holds its values. bool and integers of 128 bits are none of them.
  Decimal(std::int32_t value);
  Decimal(std::uint32_t value);
  Decimal(std::int64_t value);
  Decimal(std::uint64_t value);
  template <class T, std::enable_if_t<_isInteger<T>, int> = 0>
  Decimal(T value) : Decimal(widen(value)) {}

  // The text of the real in its shortest fixed notation, read as text is: 0.1 becomes 0.1, scale 1;
  // 101 digits before the point saturate (-1e100 gives Min) and digits behind the hundredth place
  // are cut. A real beyond 10^100 in size (infinities too), below 10^-100, or not a number becomes
  // 0.
  Decimal(double value);

  // The 112-bit number with the exponent as scale, when that is positive; one above 255 is reported
  // and taken modulo 256. REQUIRES: number is not null.
  Decimal(const HighPrecisionNumber* number);

  // A stored decimal. One with precision above 21 or scale factor above 23 logs one line and
  // gives a zero that is not valid. The limbs are taken as they stand, redundant ones too.
  Decimal(const DskDecimal& stored);

  // count limbs (0 to 21), most significant first, two's complement; redundant leading limbs are
  // dropped. More than 21 limbs that are not redundant are reported, and the low 21 taken; a
  // negative count is reported and gives 0. REQUIRES: limbs holds count limbs.
  Decimal(const std::uint16_t* limbs, int count, std::uint8_t scaleFactor);

  // The 46-byte image above, or its first byteCount bytes; a single byte is an integer from 0 to
  // 255. Anything that is no image gives a zero that is not valid. REQUIRES: image holds byteCount
  // bytes.
  Decimal(const std::uint8_t* image, std::uint32_t byteCount);

  // Text: blanks, a sign, digits with at most one '.'; what follows the number is not read, so
  // "12abc" is 12 and "abc" 0. Digits behind the '.' are counted as places, trailing zeros too. At
  // most 100 digits are read; a fraction is cut there, more integer digits give Max or Min.
  // REQUIRES: text is not null and ends with NUL.
  Decimal(const char* text);
  Decimal(std::nullptr_t) = delete;
  Decimal(bool) = delete;

  Decimal(const Decimal&) noexcept = default;
  Decimal& operator=(const Decimal&) noexcept = default;
  // An assignment gives what the constructor from the same value gives.
  Decimal& operator=(std::int32_t value);
  Decimal& operator=(std::uint32_t value);
  Decimal& operator=(std::int64_t value);
  Decimal& operator=(std::uint64_t value);
  template <class T, std::enable_if_t<_isInteger<T>, int> = 0>
  Decimal& operator=(T value) {
    return *this = widen(value);
  }
  Decimal& operator=(double value);
  Decimal& operator=(const HighPrecisionNumber* number);
  Decimal& operator=(const DskDecimal& stored);
  Decimal& operator=(std::nullptr_t) = delete;
  Decimal& operator=(bool) = delete;

  std::uint8_t getLength() const { return _length; }            // limbs in use
  std::uint8_t getScaleFactor() const { return _scaleFactor; }  // places
  // Sets the places and leaves the digits: 125 with 2 becomes 1.25.
  void setScaleFactor(std::uint8_t places) { _scaleFactor = places; }
  bool isneg() const { return _length != 0 && (_value[0] & 0x8000u) != 0; }
  bool iseven() const { return _length == 0 || (_value[_length - 1] & 1u) == 0; }
  bool isvalid() const { return _valid; }
  const std::uint16_t* getValue() const { return _value; }  // the first limb
  // Bytes of the header and the limbs in use.
  std::uint32_t getValueSize() const { return 2u * _length + 2u; }
  // Bytes of the limbs in use.
  std::uint8_t getValueLength() const { return static_cast<std::uint8_t>(2u * _length); }

  // Stores the value with `scale` places, or with its own for 255; places that the stored form
  // cannot hold are rounded away, half away from zero, in cuts that grow from 1 place on (see
  // docs/formats/decimal.md). False, and out untouched, for a value that is not valid, does not
  // then lie between KoraMin and KoraMax, or has fewer places than the next cut removes, as
  // 70000000000000000000000.55 has. A negative value that scale(...) saturates on the way to
  // `scale` places is stored as what it becomes: -1 with 100 places as -0.0001.
  bool decimalToDskDecimal(DskDecimal& out, std::uint8_t scale) const;

  // The parts of an OLE DECIMAL: places, 128 for a negative value, and the absolute value in 96
  // bits. Of an absolute value of more than 5 limbs, which is reported, the low six limbs are
  // taken. REQUIRES: no pointer is null.
  void decimalToOLEDecimal(std::uint8_t* scale, std::uint8_t* sign, NomULong* high,
                           NomULong* middle, NomULong* low) const;

  // The limbs gathered in a real, each step rounded, and divided once by the real 10^scale: not
  // always the real nearest to the value. A scale above 100 is reported and counts as 100.
  double getNumericValue() const;

  // The integer part, cut toward zero. False, and out untouched, for a value (with its fraction)
  // beyond the type. The unsigned ones give 0 and true for a negative value.
  bool getInt32Value(std::int32_t& out) const;
  bool getUInt32Value(std::uint32_t& out) const;
  bool getInt64Value(std::int64_t& out) const;
  bool getUInt64Value(std::uint64_t& out) const;

  // Without range test: the low 64 bits of the integer part, with its sign.
  std::int64_t getInt64Value() const;
  // The low 64 bits of the limbs as they stand, whatever sign and scale: -1 gives 65535.
  std::uint64_t getUInt64Value() const;

  // Gives the value `places` more decimal places (fewer when negative, rounding half away from
  // zero). False when there are fewer places than to be removed: the digits stay and the scale
  // factor is 0. False when a non-negative value outgrows 21 limbs: it becomes Max (or Min) with
  // scale 0. A negative value is multiplied by 10^places as * multiplies, by the count of limbs:
  // where that saturates, as for -(10^92) and 1 place, it becomes Min, takes the places on, and the
  // result is true. Scale factors count modulo 256.
  bool scale(int places);

  // Removes places by cutting; nothing happens when the value has fewer.
  void truncate(std::uint8_t places);

  // Digits of the integer part: 0 for values below 1, 3 for 123.45; 100 for more than 99, and for a
  // value of more than 100 digits in all, as 10^50 with 50 places is.
  std::uint8_t getMagnitude() const;

  // Whether the integer part fits a declaration of `precision` digits, `scale` of them places
  // (255: none declared). Precision 0 accepts anything. Fewer digits than places count modulo 256:
  // 10^100 is then the bound, and the power is reported.
  bool checkDecimalPrecision(std::uint8_t precision, std::uint8_t scale) const;

  // 10^power, scale 0, for powers 0 to 100; a larger one is reported and gives 10^100.
  static const Decimal& power10(std::uint8_t power);

  // Bytes of the key form for a declared precision: 4 for 1, 8 for 10, 12 for 23.
  static std::uint32_t getDecimalLength(std::uint8_t precision);

  // this / divisor with up to 23 places, cut, without trailing zeros; a quotient that is 0 keeps
  // all 23 places. A dividend of 15 limbs or more gives the integer quotient. Max when the scales
  // cannot be aligned. Division by 0 is reported and gives the dividend.
  Decimal realDivide(const Decimal& divisor) const;

  // Renders the value with `places` places, rounded half away from zero, into a buffer of `size`
  // bytes. A fraction that is too long for the buffer is cut; an integer part that is, fills it
  // with '*'. Returns buffer. The sign is that of the value before rounding: -0.004 with 2 places
  // is "-0.00". A size of 0 writes nothing. Bytes behind the NUL, within the size, may be written.
  // A text of more than 103 characters, more than 101 places, and a value that 21 limbs do not hold
  // with so many places (7 with 100), give '*' in any buffer.
  char* decimalToString(char* buffer, std::uint32_t size, std::uint32_t places) const;

 private:
  friend struct nomutil::decimals::Access;

  // A constant: limbs in normal form, most significant first, those behind zero. The tag keeps a
  // caller's array of 21 limbs from meaning this constructor.
  struct Constant {};
  constexpr Decimal(Constant, const std::uint16_t (&limbs)[MaxDecimalValueSize],
                    std::uint8_t length, std::uint8_t scaleFactor) noexcept
      : _length(length), _scaleFactor(scaleFactor) {
    for (int i = 0; i < MaxDecimalValueSize; ++i) _value[i] = limbs[i];
  }

  template <class T>
  static constexpr auto widen(T value) {
    if constexpr (std::is_signed_v<T>) {
      return static_cast<std::conditional_t<sizeof(T) <= 4, std::int32_t, std::int64_t>>(value);
    } else {
      return static_cast<std::conditional_t<sizeof(T) <= 4, std::uint32_t, std::uint64_t>>(value);
    }
  }
  void initialise();
  void iassign(std::int32_t value);
  void iassign(std::uint32_t value);
  void iassign(std::int64_t value);
  void iassign(std::uint64_t value);
  void rassign(double value);

  std::uint8_t _length = 0;
  std::uint8_t _scaleFactor = 0;
  std::uint16_t _value[MaxDecimalValueSize] = {};
  bool _valid = true;
  std::uint8_t _unused = 0;
};
static_assert(sizeof(Decimal) == 46 && alignof(Decimal) == 2);

// + - / % align their operands to the larger scale; where that fails, they give Max. + - % keep the
// common scale; / cuts toward zero and gives scale 0; % takes the sign of the dividend. Division by
// 0 is reported and gives the aligned dividend as it stands.
//
// * adds the scales, modulo 256. It saturates, Max or Min by sign, when the limbs of the absolute
// operands and one more exceed 21, whatever the product is.
//
// Negating -(2^335) and sums beyond 21 limbs are reported and keep the low 21 limbs.
NOMUTIL_API Decimal operator+(const Decimal& left, const Decimal& right);
NOMUTIL_API Decimal operator-(const Decimal& left, const Decimal& right);
NOMUTIL_API Decimal operator*(const Decimal& left, const Decimal& right);
NOMUTIL_API Decimal operator/(const Decimal& dividend, const Decimal& divisor);
NOMUTIL_API Decimal operator%(const Decimal& dividend, const Decimal& divisor);
NOMUTIL_API Decimal operator+(const Decimal& value);
NOMUTIL_API Decimal operator-(const Decimal& value);

// Values compare whatever their scales: 1.5 == 1.50. Unlike signs decide first. A pair of one sign
// that cannot be aligned is neither equal nor less nor greater, so that <= and >= both hold. Of the
// aligned operands the count of limbs decides before the limbs: one with redundant limbs is larger
// in size than any with fewer limbs, and equal to none of them.
NOMUTIL_API bool operator==(const Decimal& left, const Decimal& right);
NOMUTIL_API bool operator!=(const Decimal& left, const Decimal& right);
NOMUTIL_API bool operator<(const Decimal& left, const Decimal& right);
NOMUTIL_API bool operator<=(const Decimal& left, const Decimal& right);
NOMUTIL_API bool operator>(const Decimal& left, const Decimal& right);
NOMUTIL_API bool operator>=(const Decimal& left, const Decimal& right);

// The flat functions take and give stored decimals; result and operands may be the same record. A
// stored operand that is not valid logs one line and counts as zero.
// REQUIRES, of all of them: no pointer is null.
//
// Where a bool is not said to be always true, it is true when the result was stored, with its own
// places as far as the stored form holds them (see decimalToDskDecimal), and false with the result
// untouched otherwise.

NOMUTIL_API bool nomDecimalAdd(const DskDecimal* left, const DskDecimal* right, DskDecimal* result);
NOMUTIL_API bool nomDecimalSubtract(const DskDecimal* left, const DskDecimal* right,
                                    DskDecimal* result);
NOMUTIL_API bool nomDecimalMultiply(const DskDecimal* left, const DskDecimal* right,
                                    DskDecimal* result);
NOMUTIL_API bool nomDecimalRealDivide(const DskDecimal* dividend, const DskDecimal* divisor,
                                      DskDecimal* result);

// Always true; a part that does not fit the stored form leaves its record untouched.
NOMUTIL_API bool nomDecimalIntegerDivide(const DskDecimal* dividend, const DskDecimal* divisor,
                                         DskDecimal* quotient, DskDecimal* remainder);

// The integer part, cut toward zero; false, and out untouched, for a value (with its fraction)
// beyond the type. A negative value gives 0 and true as unsigned.
NOMUTIL_API bool nomDecimalToInt64(const DskDecimal* value, std::int64_t* out);
NOMUTIL_API bool nomDecimalToUInt64(const DskDecimal* value, std::uint64_t* out);

// The integer, with scale 0.
NOMUTIL_API bool nomDecimalFromInt64(std::int64_t value, DskDecimal* result);
NOMUTIL_API bool nomDecimalFromUInt64(std::uint64_t value, DskDecimal* result);
NOMUTIL_API bool nomDecimalFromInteger(std::int32_t value, DskDecimal* result);

// Validates a stored decimal against a declaration and writes it with `scale` places. A scale of
// 255 declares none: the value keeps its places, but when they are more than precision - m for its
// m integer digits, that many of them are removed, not those in excess (12.3456 for precision 5
// becomes 12.3). Returns 0, or 4033 and out untouched when the value is not valid, has too many
// integer digits, or does not fit the stored form.
NOMUTIL_API int checkDskDecimal(const DskDecimal& in, std::uint8_t precision, std::uint8_t scale,
                                DskDecimal& out);

extern "C" {

// As Decimal::decimalToString. Always true.
NOMUTIL_API bool nomDecimalToString(const DskDecimal* value, char* buffer, std::uint32_t size,
                                    std::uint32_t places);

// Renders a key (docs/formats/decimalkey.md) of Decimal::getDecimalLength(precision) bytes, of
// which 16 at most count, with its own places. Always true.
NOMUTIL_API bool nomDecimalToStringKeyCompatible(const std::uint8_t* key, std::uint8_t precision,
                                                 char* buffer, std::uint32_t size);

// As Decimal::getNumericValue. Always true.
NOMUTIL_API bool nomDecimalToReal(const DskDecimal* value, double* out);

// value with `places` decimal places: 5 with 2 is stored as 5.00. Negative places remove nothing.
// It fails where Decimal::scale saturates: for 1 with 101 places, and for any negative value
// with 92.
NOMUTIL_API bool nomDecimalFromInt64Scale(std::int64_t value, std::int32_t places,
                                          DskDecimal* result);

// The real, and the text, as Decimal's constructors read them.
NOMUTIL_API bool nomDecimalFromReal(double value, DskDecimal* result);
NOMUTIL_API bool nomDecimalFromString(const char* text, DskDecimal* result);

// Makes the key of a text for a declared precision and scale. A value with more integer digits than
// declared is clamped to the largest of its sign, 999.99 for precision 5 and scale 2; without
// places (scale 0 or 255) to the power of ten itself, 100000 for 5 and 0. Returns 0, or 1422 with
// nothing written when the value does not fit the stored form. Writes `precision` bytes to key, 0
// beyond a record's 14, and the length of the key, which is Decimal::getDecimalLength(precision),
// to *keyLength. That is more than precision for 1, 2, 3 and 5: the last bytes of the key are then
// what the buffer held before.
NOMUTIL_API int nomDecimalFromStringMakeKeyCompatible(const char* text, std::uint8_t precision,
                                                      std::uint8_t scale, void* key,
                                                      std::uint32_t* keyLength);

// -1, 0 or 1, as < and > say: 0 for a pair of one sign whose scales cannot be aligned.
NOMUTIL_API int nomDecimalCompare(const DskDecimal* left, const DskDecimal* right);

}  // extern "C"

#endif  // NOMUTIL_SYS_DECIMALS_H
