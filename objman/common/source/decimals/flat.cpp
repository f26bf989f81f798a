// The flat functions: load the stored operands, call the class, store the result. No logic but the
// key form and the check against a declaration.

#include "access.h"

#include "sys/decimals.h"
#include "sys/messages.h"

#include <algorithm>
#include <compare>
#include <cstdint>
#include <cstring>

using namespace nomutil::decimals;

namespace {

constexpr std::uint32_t kStoredBytes = 14;  // of DskDecimal that carry data

// The largest value of a declared precision and scale, with the sign of `value`: 999.99 for 5 and
// 2. Without places the bound itself is taken: 100000 for 5 and 0.
Decimal clampToPrecision(const Decimal& value, std::uint8_t precision, std::uint8_t scale) {
  const std::uint8_t places = scale == kKeepScale ? std::uint8_t{0} : scale;
  Decimal bound = Decimal::power10(static_cast<std::uint8_t>(precision - places));
  if (places != 0) bound = bound - Decimal(1.0 / Decimal::power10(places).getNumericValue());
  return value.isneg() ? -bound : bound;
}

// Whether scale(places) turns a negative value into Min, which it does not report.
bool raiseSaturates(const Decimal& value, std::int32_t places) {
  const auto power = static_cast<std::uint8_t>(std::min(places, kMaxPower));
  return productSaturates(absolute(value).getLength(), Decimal::power10(power).getLength());
}

}  // namespace

bool nomDecimalAdd(const DskDecimal* left, const DskDecimal* right, DskDecimal* result) {
  return (Decimal(*left) + Decimal(*right)).decimalToDskDecimal(*result, kKeepScale);
}

bool nomDecimalSubtract(const DskDecimal* left, const DskDecimal* right, DskDecimal* result) {
  return (Decimal(*left) - Decimal(*right)).decimalToDskDecimal(*result, kKeepScale);
}

bool nomDecimalMultiply(const DskDecimal* left, const DskDecimal* right, DskDecimal* result) {
  return (Decimal(*left) * Decimal(*right)).decimalToDskDecimal(*result, kKeepScale);
}

bool nomDecimalRealDivide(const DskDecimal* dividend, const DskDecimal* divisor,
                          DskDecimal* result) {
  return Decimal(*dividend).realDivide(Decimal(*divisor)).decimalToDskDecimal(*result, kKeepScale);
}

bool nomDecimalIntegerDivide(const DskDecimal* dividend, const DskDecimal* divisor,
                             DskDecimal* quotient, DskDecimal* remainder) {
  Decimal whole;
  Decimal rest;
  if (!divideDecimals(Decimal(*dividend), Decimal(*divisor), whole, rest)) {
    whole = Decimal::KoraMax;
    rest = Decimal::KoraMax;
  }
  whole.decimalToDskDecimal(*quotient, kKeepScale);
  rest.decimalToDskDecimal(*remainder, kKeepScale);
  return true;
}

bool nomDecimalToInt64(const DskDecimal* value, std::int64_t* out) {
  return Decimal(*value).getInt64Value(*out);
}

bool nomDecimalToUInt64(const DskDecimal* value, std::uint64_t* out) {
  return Decimal(*value).getUInt64Value(*out);
}

bool nomDecimalFromInt64(std::int64_t value, DskDecimal* result) {
  return Decimal(value).decimalToDskDecimal(*result, kKeepScale);
}

bool nomDecimalFromUInt64(std::uint64_t value, DskDecimal* result) {
  return Decimal(value).decimalToDskDecimal(*result, kKeepScale);
}

bool nomDecimalFromInteger(std::int32_t value, DskDecimal* result) {
  return Decimal(value).decimalToDskDecimal(*result, kKeepScale);
}

bool nomDecimalFromReal(double value, DskDecimal* result) {
  return Decimal(value).decimalToDskDecimal(*result, kKeepScale);
}

bool nomDecimalFromString(const char* text, DskDecimal* result) {
  return Decimal(text).decimalToDskDecimal(*result, kKeepScale);
}

bool nomDecimalFromInt64Scale(std::int64_t value, std::int32_t places, DskDecimal* result) {
  Decimal decimal(value);
  if (places > 0) {
    if (value < 0 && raiseSaturates(decimal, places)) return false;
    if (!decimal.scale(places)) return false;
  }
  return decimal.decimalToDskDecimal(*result, kKeepScale);
}

bool nomDecimalToString(const DskDecimal* value, char* buffer, std::uint32_t size,
                        std::uint32_t places) {
  Decimal(*value).decimalToString(buffer, size, places);
  return true;
}

bool nomDecimalToStringKeyCompatible(const std::uint8_t* key, std::uint8_t precision, char* buffer,
                                     std::uint32_t size) {
  DskDecimal stored{};
  const auto keyLength = std::min<std::size_t>(Decimal::getDecimalLength(precision), sizeof stored);
  std::memcpy(&stored, key, keyLength);
  const Decimal value(stored);
  value.decimalToString(buffer, size, value.getScaleFactor());
  return true;
}

bool nomDecimalToReal(const DskDecimal* value, double* out) {
  *out = Decimal(*value).getNumericValue();
  return true;
}

int nomDecimalFromStringMakeKeyCompatible(const char* text, std::uint8_t precision,
                                          std::uint8_t scale, void* key, std::uint32_t* keyLength) {
  Decimal value(text);
  if (!value.checkDecimalPrecision(precision, scale)) {
    value = clampToPrecision(value, precision, scale);
  }
  DskDecimal stored{};
  if (!value.decimalToDskDecimal(stored, scale)) return kDecimalOverflow;
  *keyLength = Decimal::getDecimalLength(precision);
  // As many bytes as the precision says, not as the key has.
  const std::uint32_t data = std::min<std::uint32_t>(precision, kStoredBytes);
  std::memset(key, 0, precision);
  std::memcpy(key, &stored, data);
  return 0;
}

int nomDecimalCompare(const DskDecimal* left, const DskDecimal* right) {
  const std::partial_ordering order = compareDecimals(Decimal(*left), Decimal(*right));
  return std::is_lt(order) ? -1 : std::is_gt(order) ? 1 : 0;
}

int checkDskDecimal(const DskDecimal& in, std::uint8_t precision, std::uint8_t scale,
                    DskDecimal& out) {
  Decimal value(in);
  if (!value.checkDecimalPrecision(precision, scale)) return kDecimalPrecisionOverflow;
  if (scale == kKeepScale && value.getScaleFactor() != 0) {
    const int magnitude = value.getMagnitude();
    // Removes precision - magnitude places, not those in excess: 12.3456 for 5 becomes 12.3.
    if (precision - magnitude < value.getScaleFactor()) value.scale(magnitude - precision);
  }
  if (!value.isvalid() || !value.decimalToDskDecimal(out, scale)) return kDecimalPrecisionOverflow;
  return 0;
}
