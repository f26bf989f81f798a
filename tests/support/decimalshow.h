// Decimals for tests: show() spells out everything that is observable of one, in a way that shares
// nothing with the library's own rendering. -12.50 is "-12.50"; what is not as in a computed
// value follows it: "(invalid)", "(empty)" (length 0), "(redundant)" (a leading limb that could
// go),
// "(dirty)" (a stored record whose unused bytes are not AA and 00). In the tables of the tests
// "10{100}" stands for 1 and a hundred zeros. The tests of decimals get the decimals themselves,
// the Recorder and googletest from here too.
#ifndef NOMUTIL_TESTS_DECIMALSHOW_H
#define NOMUTIL_TESTS_DECIMALSHOW_H

#include "recorder.h"
#include "rows.h"
#include "sys/decimals.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

namespace nomtest {

// The two's-complement integer of the limbs, most significant first, with `places` places.
inline std::string showLimbs(std::vector<std::uint16_t> limbs, unsigned places) {
  const bool negative = !limbs.empty() && limbs[0] >= 0x8000;
  const bool redundant = limbs.size() > 1 && limbs[0] == (limbs[1] >= 0x8000 ? 0xFFFF : 0);
  const bool empty = limbs.empty();
  unsigned carry = 1;
  for (std::size_t i = limbs.size(); negative && i-- > 0; carry >>= 16) {
    carry += limbs[i] ^ 0xFFFFu;
    limbs[i] = static_cast<std::uint16_t>(carry);
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
  return (negative ? "-" : "") + text + (empty ? "(empty)" : "") + (redundant ? "(redundant)" : "");
}

inline std::string show(const Decimal& value) {
  const std::uint16_t* limbs = value.getValue();
  return showLimbs({limbs, limbs + value.getLength()}, value.getScaleFactor()) +
         (value.isvalid() ? "" : "(invalid)");
}

inline Decimal dec(const std::string& text) {
  return text == "empty" ? Decimal() : Decimal(expand(text).c_str());
}

inline std::string zeros(std::size_t count) {
  return std::string(count, '0');
}

inline std::string showAll(const std::vector<Decimal>& values) {
  std::string all;
  for (const Decimal& value : values) all += (all.empty() ? "" : " ") + show(value);
  return all;
}

inline std::uint8_t byteOf(const std::string& number, int base = 10) {
  return static_cast<std::uint8_t>(std::stoul(number, nullptr, base));
}

// "0102FE" is the bytes 01 02 FE.
inline std::vector<std::uint8_t> bytesOf(const std::string& hex) {
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i + 2 <= hex.size(); i += 2)
    bytes.push_back(byteOf(hex.substr(i, 2), 16));
  return bytes;
}

// The record of a text that is known to fit.
inline DskDecimal stored(const std::string& text) {
  DskDecimal record{};
  dec(text).decimalToDskDecimal(record, 255);
  return record;
}

// The record that begins with these bytes and goes on with others.
inline DskDecimal recordOf(const std::string& hex, std::uint8_t others = 0x77) {
  std::vector<std::uint8_t> bytes = bytesOf(hex);
  bytes.resize(sizeof(DskDecimal), others);
  DskDecimal record;
  std::memcpy(&record, bytes.data(), sizeof record);
  return record;
}

// A record that no operation writes. As long as it is one, it shows as "untouched".
inline DskDecimal sentinel() {
  return recordOf("", 0x5A);
}

inline std::string show(const DskDecimal& stored) {
  const DskDecimal untouched = sentinel();
  if (std::memcmp(&stored, &untouched, sizeof stored) == 0) return "untouched";
  std::vector<std::uint16_t> limbs;
  bool dirty = stored.precision > 10 || (stored.reserved[0] | stored.reserved[1]) != 0;
  for (unsigned i = 0; i < 10; ++i) {
    const int limb = stored.value[i] | stored.value[i | 1] << 8;
    if (i >= stored.precision) dirty |= stored.value[i] != 0xAA;
    if (i < stored.precision && i % 2 == 0) limbs.push_back(static_cast<std::uint16_t>(limb));
  }
  return showLimbs(limbs, stored.scaleFactor) + (dirty ? "(dirty)" : "");
}

// What a function of an output record wrote; "untouched" when it returned false and did not write.
template <class Store>
std::string outcome(Store store) {
  DskDecimal out = sentinel();
  const bool result = store(out);
  return result == (show(out) != "untouched") ? show(out) : "(result and record disagree)";
}

}  // namespace nomtest

#endif  // NOMUTIL_TESTS_DECIMALSHOW_H
