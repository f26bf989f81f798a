// Decimals for tests: show() spells out everything that is observable of one, in a way that shares
// nothing with the library's own rendering. -12.50 is "-12.50"; what is not as a computed value is
// follows it: " invalid", " empty" (length 0), " redundant" (a leading limb that could go),
// " dirty" (a stored record whose unused bytes are not AA and 00).
#ifndef NOMUTIL_TESTS_DECIMALSHOW_H
#define NOMUTIL_TESTS_DECIMALSHOW_H

#include "sys/decimals.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace nomtest {

// The two's-complement integer of the limbs, most significant first, with `places` places.
inline std::string showLimbs(std::vector<std::uint16_t> limbs, unsigned places) {
  const bool negative = !limbs.empty() && limbs[0] >= 0x8000;
  const bool redundant = limbs.size() > 1 && ((limbs[0] == 0 && limbs[1] < 0x8000) ||
                                              (limbs[0] == 0xFFFF && limbs[1] >= 0x8000));
  const bool empty = limbs.empty();
  if (negative) {
    unsigned carry = 1;
    for (std::size_t i = limbs.size(); i-- > 0;) {
      const unsigned sum = (limbs[i] ^ 0xFFFFu) + carry;
      limbs[i] = static_cast<std::uint16_t>(sum);
      carry = sum >> 16;
    }
  }
  std::string text;
  for (bool more = true; more || text.size() <= places;) {
    unsigned remainder = 0;
    more = false;
    for (std::uint16_t& limb : limbs) {
      const unsigned part = remainder * 65536u + limb;
      limb = static_cast<std::uint16_t>(part / 10);
      remainder = part % 10;
      more = more || limb != 0;
    }
    text.insert(text.begin(), static_cast<char>('0' + remainder));
  }
  if (places != 0) text.insert(text.size() - places, ".");
  return (negative ? "-" : "") + text + (empty ? " empty" : "") + (redundant ? " redundant" : "");
}

inline std::string show(const Decimal& value) {
  const std::uint16_t* limbs = value.getValue();
  return showLimbs({limbs, limbs + value.getLength()}, value.getScaleFactor()) +
         (value.isvalid() ? "" : " invalid");
}

inline std::string show(const DskDecimal& stored) {
  std::vector<std::uint16_t> limbs;
  for (unsigned i = 0; i < stored.precision && i < sizeof stored.value; i += 2) {
    limbs.push_back(static_cast<std::uint16_t>(stored.value[i] | stored.value[i + 1] << 8));
  }
  bool dirty =
      stored.precision > sizeof stored.value || stored.reserved[0] != 0 || stored.reserved[1] != 0;
  for (unsigned i = stored.precision; i < sizeof stored.value; ++i) {
    dirty = dirty || stored.value[i] != 0xAA;
  }
  return showLimbs(limbs, stored.scaleFactor) + (dirty ? " dirty" : "");
}

// The record of a text that is known to fit.
inline DskDecimal stored(const char* text) {
  DskDecimal record{};
  Decimal(text).decimalToDskDecimal(record, 255);
  return record;
}

// A record that no operation writes, to see whether an output was touched.
inline DskDecimal sentinel() {
  return {0x5A,
          0x5A,
          {0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A, 0x5A},
          {0x5A, 0x5A},
          {0x5A, 0x5A}};
}
inline const char* const kUntouched = "(untouched)";

inline std::string showOrUntouched(const DskDecimal& record) {
  return record.precision == 0x5A ? kUntouched : show(record);
}

inline Decimal dec(const std::string& text) {
  return Decimal(text.c_str());
}

inline std::string zeros(std::size_t count) {
  return std::string(count, '0');
}

}  // namespace nomtest

#endif  // NOMUTIL_TESTS_DECIMALSHOW_H
