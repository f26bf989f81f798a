// Conversions of Decimal: integers, reals, high-precision numbers, images and the stored form; and
// the rescaling that they share.
//
// 12.50 is the limb 04E2 with scale 2. Stored it is 02 02 E2 04, eight bytes AA and the reserved
// word; the limb lies low byte first.

#include "access.h"

#include "nomos/intl.h"

#include "sys/decimals.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

using namespace nomutil::decimals;

namespace {

constexpr double kRealBound = 1e100;
constexpr std::uint32_t kImageSize = sizeof(Decimal);

// 10^0 to 10^100, each the one before times 10.0: from 10^23 on they differ from the literals.
constexpr auto kRealPowers = [] {
  std::array<double, kMaxPower + 1> powers{1.0};
  for (unsigned i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10.0;
  return powers;
}();

double realPower(unsigned power) {
  assertPower(power);
  return kRealPowers[power <= kMaxPower ? power : kMaxPower];
}

// The digits before the point of the absolute value.
Wide integerPart(const Decimal& value) {
  const unsigned places = value.getScaleFactor();
  assertPower(places);
  return removePlaces(magnitude(Access::wide(value)), places, false);
}

// Whether the absolute value, whose integer part is `whole`, exceeds a bound that is not 0.
bool exceeds(const Decimal& value, const Wide& whole, std::uint64_t bound) {
  if (whole != Wide{{whole.word[0]}} || whole.word[0] > bound) return true;
  if (whole.word[0] < bound) return false;
  // What a bound has before the point leaves room for less than 101 places.
  return multiply(whole, widePowerOfTen(value.getScaleFactor())) != magnitude(Access::wide(value));
}

// Digits are compared, not decimals: neither redundant limbs nor many places mislead them.
template <class T>
bool toIntegerChecked(const Decimal& value, T& out) {
  const bool negative = value.isneg();
  if (negative && !std::numeric_limits<T>::is_signed) {
    out = 0;
    return true;
  }
  const Wide whole = integerPart(value);
  const auto largest = static_cast<std::uint64_t>(std::numeric_limits<T>::max());
  if (exceeds(value, whole, negative ? largest + 1 : largest)) return false;
  out = static_cast<T>(negative ? 0 - whole.word[0] : whole.word[0]);
  return true;
}

// The header and the value bytes of a stored decimal: the first 12 bytes of a Decimal as well, but
// for the first one, which counts bytes here and limbs there.
struct StoredImage {
  std::uint64_t first;
  std::uint32_t last;
};
constexpr std::size_t kStoredImageSize = 12;

// For each limb count the value bytes in use.
constexpr auto kUsedBytes = [] {
  std::array<StoredImage, kMaxStoredLimbs + 1> masks{};
  for (unsigned limbs = 1; limbs <= kMaxStoredLimbs; ++limbs) {
    masks[limbs] = masks[limbs - 1];
    if (limbs <= 3) {
      masks[limbs].first |= std::uint64_t{0xFFFF} << (16 * limbs);
    } else {
      masks[limbs].last |= std::uint32_t{0xFFFF} << (16 * (limbs - 4));
    }
  }
  return masks;
}();

// Whether a value lies within KoraMin and KoraMax and fits the value bytes. With places, 5 limbs
// are always within: 2^79 is below 10^24.
bool isStorable(const Decimal& value) {
  if (value.getLength() != kMaxStoredLimbs || value.getScaleFactor() != 0) {
    return value.getLength() <= kMaxStoredLimbs;
  }
  return !(value < Decimal::KoraMin) && !(value > Decimal::KoraMax);
}

// Whether the limbs alone show that a value is beyond 10^23, so that no cut will help.
bool isFarTooLarge(const Decimal& value) {
  // A normal form of n limbs is at least 2^(16n - 17) in size; 1701 / 512 is just above log2(10).
  const int boundBits = (kMaxStoredPlaces + value.getScaleFactor()) * 1701 / 512 + 1;
  return 16 * value.getLength() - 17 >= boundBits && Access::isNormal(value);
}

void writeStored(const Decimal& value, DskDecimal& out) {
  const unsigned limbs = value.getLength();
  NOMUTIL_ASSERT_TEXT(kSource, value.getValueLength() <= sizeof out.value,
                      "dVal.precision <= sizeof dVal.value");
  // The limbs behind the length are 0, so that only the filling is to be added.
  constexpr std::uint64_t kFill = 0xAAAAAAAAAAAAAAAAu;
  const StoredImage& used = kUsedBytes[limbs <= kMaxStoredLimbs ? limbs : kMaxStoredLimbs];
  StoredImage image;
  std::memcpy(&image, &value, kStoredImageSize);
  image.first = (image.first & ~std::uint64_t{0xFF}) | 2 * limbs;
  image.first |= kFill & ~used.first & ~std::uint64_t{0xFFFF};
  image.last |= static_cast<std::uint32_t>(kFill) & ~used.last;
  std::memcpy(&out, &image, kStoredImageSize);
  std::memset(out.reserved, 0, sizeof out.reserved);
}

// An odd precision, or one beyond the value bytes, was never written, but is no more refused than
// redundant limbs are: whatever 21 value bytes can say is a value.
Decimal loadOddStored(const DskDecimal& stored) {
  // The limbs go on through the reserved bytes and the padding, and no further.
  constexpr std::size_t kReadable = sizeof stored - offsetof(DskDecimal, value);
  std::uint8_t image[kImageSize] = {};
  image[0] = stored.precision / 2;
  image[1] = stored.scaleFactor;
  std::memcpy(image + 2, reinterpret_cast<const std::uint8_t*>(&stored) + 2,
              std::min<std::size_t>(2u * image[0], kReadable));
  image[44] = 1;
  return Decimal(image, kImageSize);
}

}  // namespace

void Decimal::initialise() {
  *this = Decimal::Zero;
  _valid = false;
}

void Decimal::iassign(std::int32_t value) {
  *this = Access::fromWord(value, 0);
}
void Decimal::iassign(std::uint32_t value) {
  *this = Access::fromWord(value, 0);
}
void Decimal::iassign(std::int64_t value) {
  *this = Access::fromWord(value, 0);
}
void Decimal::iassign(std::uint64_t value) {
  *this = Access::fromValue(value, 0);
}

void Decimal::rassign(double value) {
  // Written so that a NaN passes on: its text has no digits and reads as 0.
  const double size = value < 0 ? -value : value;
  if (size > kRealBound || size < 1 / kRealBound) value = 0;
  // 103 characters and the NUL: a longer text is cut behind the hundredth place of "-0.".
  char text[104];
  unsigned length = intlDoubleToStringFixed(text, sizeof text, value, 0);
  if (std::memchr(text, '.', length) != nullptr) {
    while (text[length - 1] == '0') --length;
    text[length] = '\0';
  }
  *this = Decimal(text);
}

Decimal::Decimal(std::int32_t value) {
  iassign(value);
}
Decimal::Decimal(std::uint32_t value) {
  iassign(value);
}
Decimal::Decimal(std::int64_t value) {
  iassign(value);
}
Decimal::Decimal(std::uint64_t value) {
  iassign(value);
}
Decimal::Decimal(double value) {
  rassign(value);
}

Decimal::Decimal(const HighPrecisionNumber* number) {
  Wide digits;
  for (const std::uint32_t word : number->word) {
    multiplyAdd(digits, std::uint64_t{1} << 28, word);
  }
  const std::uint8_t places =
      number->exponent > 0 ? narrowChecked<std::uint8_t>(number->exponent) : std::uint8_t{0};
  *this = Access::fromWide(number->sign < 0 ? negate(digits) : digits, places);
}

Decimal Access::fromStored(const DskDecimal& stored) {
  if (stored.precision == 0) return Decimal::Zero;
  if (stored.precision > kMaxLimbs || stored.scaleFactor > kMaxStoredPlaces) {
    nomLog(
        "attempt to convert an invalid (uninitialised?) DskDecimal to a Decimal "
        "(precision=%d, scaleFactor=%d)",
        stored.precision, stored.scaleFactor);
    Decimal invalid;
    invalid.initialise();
    return invalid;
  }
  const unsigned limbs = stored.precision / 2u;
  if (stored.precision % 2 != 0 || limbs > kMaxStoredLimbs) return loadOddStored(stored);
  StoredImage image;
  std::memcpy(&image, &stored, kStoredImageSize);
  const StoredImage& used = kUsedBytes[limbs];
  image.first = (image.first & (used.first | 0xFF00)) | limbs;
  image.last &= used.last;
  // One store of both words: the arithmetic loads them together.
  const WordVector words = {image.first, image.last};
  Decimal result;
  std::memcpy(static_cast<void*>(&result), &words, sizeof words);
  return result;
}

Decimal::Decimal(const DskDecimal& stored) : Decimal(Access::fromStored(stored)) {}

Decimal::Decimal(const std::uint16_t* limbs, int count, std::uint8_t scaleFactor) {
  while (count > MaxDecimalValueSize && isRedundant(limbs[0], limbs[1])) {
    ++limbs;
    --count;
  }
  NOMUTIL_ASSERT_TEXT(kSource, count >= 0 && count <= MaxDecimalValueSize,
                      "_length <= MaxDecimalValueSize");
  if (count > MaxDecimalValueSize) {
    limbs += count - MaxDecimalValueSize;
    count = MaxDecimalValueSize;
  }
  std::uint16_t all[MaxDecimalValueSize] = {};
  if (count > 0) std::memcpy(all, limbs, static_cast<std::size_t>(count) * sizeof all[0]);
  *this = Access::fromWide(loadLimbs(all, count), scaleFactor);
}

Decimal::Decimal(const std::uint8_t* image, std::uint32_t byteCount) {
  if (byteCount == 1) {
    *this = Access::fromWord(image[0], 0);
    return;
  }
  if (byteCount < 1 || byteCount > kImageSize) {
    _valid = false;
    return;
  }
  std::uint8_t bytes[kImageSize] = {};
  std::memcpy(bytes, image, byteCount);
  const std::uint8_t length = bytes[0];
  const std::uint8_t scaleFactor = bytes[1];
  // A scale of 255 passes: it is the mark of none declared.
  if (length > MaxDecimalValueSize || (scaleFactor > kMaxPower && scaleFactor != 255)) {
    _valid = false;
    return;
  }
  _length = length;
  _scaleFactor = scaleFactor;
  const std::size_t used = 2u * length;
  std::memcpy(_value, bytes + 2, used);
  // Limbs behind the length do not count, but beside a length of 0 they show a damaged image. The
  // validity byte may hold anything, so it is never read as a bool.
  const bool isEmpty =
      std::all_of(bytes + 2, bytes + 44, [](std::uint8_t byte) { return byte == 0; });
  _valid = length != 0 || (isEmpty && bytes[44] != 0);
}

Decimal& Decimal::operator=(std::int32_t value) {
  return *this = Decimal(value);
}
Decimal& Decimal::operator=(std::uint32_t value) {
  return *this = Decimal(value);
}
Decimal& Decimal::operator=(std::int64_t value) {
  return *this = Decimal(value);
}
Decimal& Decimal::operator=(std::uint64_t value) {
  return *this = Decimal(value);
}
Decimal& Decimal::operator=(double value) {
  return *this = Decimal(value);
}
Decimal& Decimal::operator=(const HighPrecisionNumber* number) {
  return *this = Decimal(number);
}
Decimal& Decimal::operator=(const DskDecimal& stored) {
  return *this = Decimal(stored);
}

bool Decimal::decimalToDskDecimal(DskDecimal& out, std::uint8_t scale) const {
  if (!_valid) return false;
  const bool keepsScale = scale == kKeepScale || scale == _scaleFactor;
  if (keepsScale && _scaleFactor <= kMaxStoredPlaces && isStorable(*this)) {
    writeStored(*this, out);
    return true;
  }
  if (keepsScale && isFarTooLarge(*this)) return false;
  Decimal value = *this;
  if (!keepsScale) value.scale(scale - value._scaleFactor);
  if (value._scaleFactor > kMaxStoredPlaces) value.scale(kMaxStoredPlaces - value._scaleFactor);
  // The cut grows by a place a round, so that a long fraction is shortened quickly.
  for (int cut = 1; cut < kMaxStoredPlaces && value._scaleFactor != 0; ++cut) {
    if (value._length <= kMaxStoredLimbs) break;
    if (!value.scale(-cut)) return false;
  }
  if (!isStorable(value)) return false;
  writeStored(value, out);
  return true;
}

void Decimal::decimalToOLEDecimal(std::uint8_t* scale, std::uint8_t* sign, NomULong* high,
                                  NomULong* middle, NomULong* low) const {
  const Decimal tmp = absolute(*this);
  NOMUTIL_ASSERT_TEXT(kSource, sizeof tmp._value[0] * tmp._length < sizeof(std::uint32_t) * 3,
                      "sizeof tmp._value[ 0 ] * tmp._length < sizeof(UInt32) * 3");
  const Wide digits = Access::wide(tmp);
  *scale = _scaleFactor;
  *sign = isneg() ? 128 : 0;
  *high = static_cast<std::uint32_t>(digits.word[1]);
  *middle = static_cast<std::uint32_t>(digits.word[0] >> 32);
  *low = static_cast<std::uint32_t>(digits.word[0]);
}

double Decimal::getNumericValue() const {
  const Decimal size = absolute(*this);
  double real = 0;
  for (int i = 0; i < size._length; ++i) real = real * 65536.0 + size._value[i];
  return (isneg() ? -real : real) / realPower(_scaleFactor);
}

bool Decimal::getInt32Value(std::int32_t& out) const {
  return toIntegerChecked(*this, out);
}
bool Decimal::getUInt32Value(std::uint32_t& out) const {
  return toIntegerChecked(*this, out);
}
bool Decimal::getInt64Value(std::int64_t& out) const {
  return toIntegerChecked(*this, out);
}
bool Decimal::getUInt64Value(std::uint64_t& out) const {
  return toIntegerChecked(*this, out);
}

std::int64_t Decimal::getInt64Value() const {
  const std::uint64_t digits = integerPart(*this).word[0];
  return static_cast<std::int64_t>(isneg() ? 0 - digits : digits);
}

std::uint64_t Decimal::getUInt64Value() const {
  std::uint64_t gathered = 0;
  for (int i = 0; i < _length; ++i) gathered = gathered << 16 | _value[i];
  return gathered;
}

bool Decimal::scale(int places) {
  return scaleDecimal(*this, places);
}

void Decimal::truncate(std::uint8_t places) {
  if (_scaleFactor < places) return;
  assertPower(places);
  const Wide digits = removePlaces(magnitude(Access::wide(*this)), places, false);
  const bool valid = _valid;
  *this = Access::fromWide(isneg() ? negate(digits) : digits,
                           static_cast<std::uint8_t>(_scaleFactor - places));
  _valid = valid;
}

std::uint8_t Decimal::getMagnitude() const {
  const Decimal size = absolute(*this);
  if (Access::isNormal(size) && _scaleFactor <= kMaxPower) {
    // Of 101 digits or more before or behind the point, no power of ten can be aligned. The size
    // of -(2^335) has lost its sign limb.
    const int digits = digitCount(magnitude(Access::wide(size)));
    const int inFront = digits > _scaleFactor ? digits - _scaleFactor : 0;
    return static_cast<std::uint8_t>(digits > kMaxPower ? kMaxPower : inFront);
  }
  std::uint8_t magnitude = 0;
  while (magnitude < kMaxPower && !(size < power10(magnitude))) ++magnitude;
  return magnitude;
}

bool Decimal::checkDecimalPrecision(std::uint8_t precision, std::uint8_t scale) const {
  if (precision == 0) return true;
  // The exponent wraps at 8 bits: fewer digits than places accept nearly everything.
  const auto integerDigits =
      static_cast<std::uint8_t>(precision - (scale == kKeepScale ? 0 : scale));
  return absolute(*this) < power10(integerDigits);
}

std::uint32_t Decimal::getDecimalLength(std::uint8_t precision) {
  constexpr double kLog10Of2 = 0.30102999566398119521;
  const auto bits = static_cast<std::uint32_t>(precision / kLog10Of2 + 2.0);
  return (bits >> 3 | 1) + 3;
}
