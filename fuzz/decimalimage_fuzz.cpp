// Two decimals from arbitrary bytes, as images and as stored records, through every operation.
// Laws: whatever comes in, lengths stay within the limbs; a stored value loads and stores as the
// same 14 bytes; with operands in normal form and of moderate length, addition and subtraction
// undo each other, a dividend is quotient x divisor + remainder, and exactly one of <, == and >
// holds.
// Input: size of the first image, its bytes; the rest is the second image, and both are records.
#include "nomos/testhooks.h"
#include "sys/decimals.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

namespace {

void require(bool holds) {
  if (!holds) __builtin_trap();
}

void ignoreAssertion(void*, const char*, const char*, const char*, const char*, unsigned) {}
void ignoreLine(void*, NosLogLevel, const char*) {}

// The image in a block of its own size, so that a read beyond it is seen.
Decimal fromImage(const std::uint8_t* bytes, std::size_t size) {
  const std::unique_ptr<std::uint8_t[]> image(new std::uint8_t[size]);
  if (size != 0) std::memcpy(image.get(), bytes, size);
  const Decimal value(image.get(), static_cast<std::uint32_t>(size));
  require(value.getLength() <= 21);
  return value;
}

Decimal fromRecord(const std::uint8_t* bytes, std::size_t size) {
  const std::unique_ptr<DskDecimal> record(new DskDecimal{});
  if (size != 0) std::memcpy(record.get(), bytes, std::min(size, sizeof *record));
  const Decimal value(*record);
  require(value.getLength() <= 10);
  DskDecimal out = {};
  checkDskDecimal(*record, static_cast<std::uint8_t>(size), record->reserved[0], out);
  return value;
}

Decimal normal(const Decimal& value) {
  if (value.getLength() == 0) return Decimal(0);
  return Decimal(value.getValue(), value.getLength(), value.getScaleFactor());
}

void storeAndLoad(const Decimal& value, std::uint8_t scale) {
  DskDecimal first = {};
  if (!value.decimalToDskDecimal(first, scale)) return;
  require(first.precision <= 10 && first.scaleFactor <= 23);
  if (first.precision == 0) return;  // loads as the zero of one limb
  DskDecimal second = {};
  require(Decimal(first).decimalToDskDecimal(second, 255));
  require(std::memcmp(&first, &second, 14) == 0);
}

void everyOperation(const Decimal& left, const Decimal& right, int places) {
  for (const Decimal& result : {left + right, left - right, left * right, left / right,
                                left % right, left.realDivide(right), -left}) {
    require(result.getLength() <= 21);
  }
  require((left < right) + (left > right) <= 1);
  require((left != right) == !(left == right));
  Decimal scaled = left;
  scaled.scale(places);
  scaled.truncate(static_cast<std::uint8_t>(places));
  require(scaled.getLength() <= 21 && left.getMagnitude() <= 100);
  left.checkDecimalPrecision(static_cast<std::uint8_t>(places), right.getScaleFactor());

  NomULong high, middle, low;
  std::uint8_t scale, sign;
  left.decimalToOLEDecimal(&scale, &sign, &high, &middle, &low);
  std::int32_t int32;
  std::uint32_t uint32;
  std::int64_t int64;
  std::uint64_t uint64;
  left.getInt32Value(int32);
  left.getUInt32Value(uint32);
  left.getInt64Value(int64);
  left.getUInt64Value(uint64);
  left.getInt64Value();
  left.getUInt64Value();
  left.getNumericValue();
  char text[120];
  left.decimalToString(text, sizeof text, left.getScaleFactor());
  left.decimalToString(text, sizeof text, static_cast<std::uint8_t>(places));
}

void laws(const Decimal& left, const Decimal& right) {
  if (left.getLength() > 6 || right.getLength() > 6 || left.getScaleFactor() > 40 ||
      right.getScaleFactor() > 40) {
    return;
  }
  require((left < right) + (left == right) + (left > right) == 1);
  require(left + right == right + left);
  require(left + right - right == left);
  require(left - right == -(right - left));
  if (right == Decimal(0)) return;
  const Decimal quotient = left / right;
  const Decimal remainder = left % right;
  require(quotient.getScaleFactor() == 0);
  require(remainder == Decimal(0) || remainder.isneg() == left.isneg());
  require((remainder.isneg() ? -remainder : remainder) < (right.isneg() ? -right : right));
  if (quotient.getLength() + right.getLength() <= 16) {
    require(quotient * right + remainder == left);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  nosSetAssertSink(ignoreAssertion, nullptr);
  nosSetLogSink(ignoreLine, nullptr);
  const std::size_t split = std::min<std::size_t>(data[0], size - 1);
  const std::uint8_t* const first = data + 1;
  const std::uint8_t* const second = first + split;
  const std::size_t rest = size - 1 - split;

  const Decimal values[] = {fromImage(first, split), fromImage(second, rest),
                            fromRecord(first, split), fromRecord(second, rest)};
  const int places = static_cast<std::int8_t>(data[size - 1]) * 2;
  for (const Decimal& left : values) {
    storeAndLoad(left, data[size - 1]);
    storeAndLoad(left, 255);
    for (const Decimal& right : values) {
      everyOperation(left, right, places);
      laws(normal(left), normal(right));
    }
  }
  return 0;
}
