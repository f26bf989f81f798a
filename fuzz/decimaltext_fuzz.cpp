// Any text as a decimal, rendered into buffers of any size with any number of places.
// Laws: parsing gives a valid value; rendering with its own places and parsing gives the same
// value; rendering with other places gives the value that scale() rounds to.
// Input: size of the buffer, places, then the text.
#include "nomos/testhooks.h"
#include "sys/decimals.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

namespace {

void require(bool holds) {
  if (!holds) __builtin_trap();
}

void ignoreAssertion(void*, const char*, const char*, const char*, const char*, unsigned) {}

// The text in a block of exactly `size` bytes, so that a write beyond it is seen.
std::string render(const Decimal& value, std::uint32_t size, std::uint32_t places) {
  const std::unique_ptr<char[]> buffer(new char[size]);
  require(value.decimalToString(buffer.get(), size, places) == buffer.get());
  if (size == 0) return "";
  const void* end = std::memchr(buffer.get(), 0, size);
  require(end != nullptr);
  return buffer.get();
}

bool same(const Decimal& left, const Decimal& right) {
  return left == right && left.getScaleFactor() == right.getScaleFactor();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  nosSetAssertSink(ignoreAssertion, nullptr);
  const std::uint32_t room = data[0];
  const std::uint32_t places = data[1] == 255 ? 0xFFFFFFFFu : data[1];
  const std::string text(reinterpret_cast<const char*>(data + 2), size - 2);

  const Decimal value(text.c_str());
  require(value.isvalid());
  render(value, room, places);

  // At most 103 characters: a sign, 100 digits, a point, a zero before it.
  const std::string own = render(value, 110, value.getScaleFactor());
  require(own.find('*') == std::string::npos || value.getScaleFactor() == 100);
  if (own.find('*') == std::string::npos) require(same(Decimal(own.c_str()), value));

  Decimal scaled = value.isneg() ? -value : value;
  const std::string other = render(value, 260, places);
  const bool stars = other.find('*') != std::string::npos;
  if (places > 100 || !scaled.scale(static_cast<int>(places) - value.getScaleFactor())) {
    require(stars || places > 100);
  } else if (!stars && scaled.getMagnitude() + places <= 100) {  // what parsing reads
    require(same(Decimal(other.c_str()), value.isneg() ? -scaled : scaled));
  }

  DskDecimal stored;
  if (nomDecimalFromString(text.c_str(), &stored)) {
    char whole[40];
    nomDecimalToString(&stored, whole, sizeof whole, stored.scaleFactor);
    require(same(Decimal(whole), Decimal(stored)));
  }
  return 0;
}
