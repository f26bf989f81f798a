// The class constants and the table of powers of ten, all computed by the compiler: no object of
// another file can see them before they are built.

#include "access.h"

#include "sys/decimals.h"

#include <array>
#include <cstdint>

namespace nomutil::decimals {
namespace {

// value in normal form, with the table's limb order. REQUIRES: at most 21 limbs.
constexpr Decimal makeConstant(const Wide& value, std::uint8_t scaleFactor) {
  std::uint16_t all[kWideLimbs] = {};
  for (unsigned i = 0; i < kWideLimbs; ++i) {
    all[kWideLimbs - 1 - i] = static_cast<std::uint16_t>(value.word[i / 4] >> (16 * (i % 4)));
  }
  unsigned first = 0;
  while (first + 1 < kWideLimbs && ((all[first] == 0 && all[first + 1] < 0x8000u) ||
                                    (all[first] == 0xFFFF && all[first + 1] >= 0x8000u))) {
    ++first;
  }
  std::uint16_t limbs[kMaxLimbs] = {};
  for (unsigned i = first; i < kWideLimbs; ++i) limbs[i - first] = all[i];
  return Access::make(limbs, static_cast<std::uint8_t>(kWideLimbs - first), scaleFactor);
}

constexpr Wide timesTen(const Wide& value) {
  Wide product;
  UInt128 carry = 0;
  for (int i = 0; i < kWideWords; ++i) {
    carry += UInt128{value.word[i]} * 10;
    product.word[i] = lowWord(carry);
    carry >>= 64;
  }
  return product;
}

constexpr Wide power(int exponent) {
  Wide value{{1}};
  for (int i = 0; i < exponent; ++i) value = timesTen(value);
  return value;
}

constexpr Wide plus(Wide value, std::uint64_t addend) {
  for (std::uint64_t& word : value.word) {
    word += addend;
    addend = word < addend ? 1 : 0;
  }
  return value;
}

constexpr Wide negated(Wide value) {
  for (std::uint64_t& word : value.word) word = ~word;
  return plus(value, 1);
}

constexpr Wide minusOne(const Wide& value) {
  return negated(plus(negated(value), 1));
}

constinit const auto kPowers = [] {
  std::array<Decimal, kMaxPower + 1> powers{};
  Wide value{{1}};
  for (Decimal& entry : powers) {
    entry = makeConstant(value, 0);
    value = timesTen(value);
  }
  return powers;
}();

}  // namespace

void checkPower(unsigned power) {
  NOMUTIL_ASSERT_TEXT(kSource, power <= kMaxPower, "power < NUM_ELEMS(values)");
}

}  // namespace nomutil::decimals

using namespace nomutil::decimals;

constinit const Decimal Decimal::Zero = makeConstant(Wide{}, 0);
constinit const Decimal Decimal::One = makeConstant(power(0), 0);
constinit const Decimal Decimal::MinusOne = makeConstant(negated(power(0)), 0);
constinit const Decimal Decimal::Half = makeConstant(Wide{{5}}, 1);
constinit const Decimal Decimal::Max = makeConstant(power(100), 0);
constinit const Decimal Decimal::Min = makeConstant(negated(power(96)), 0);
constinit const Decimal Decimal::KoraMax = makeConstant(minusOne(power(23)), 0);
constinit const Decimal Decimal::KoraMin = makeConstant(negated(minusOne(power(23))), 0);

const Decimal& Decimal::power10(std::uint8_t power) {
  checkPower(power);
  return kPowers[power <= kMaxPower ? power : kMaxPower];
}
