// The class constants and the table of powers of ten, all computed by the compiler: no object of
// another file can see them before they are built.

#include "access.h"

#include "sys/decimals.h"

#include <array>
#include <cstdint>

namespace nomutil::decimals {
namespace {

// value in normal form, in the limb order of Decimal. REQUIRES: at most 21 limbs.
constexpr Decimal makeConstant(const Wide& value, std::uint8_t scaleFactor) {
  std::uint16_t all[kWideLimbs] = {};
  for (unsigned i = 0; i < kWideLimbs; ++i) {
    all[kWideLimbs - 1 - i] = static_cast<std::uint16_t>(value.word[i / 4] >> (16 * (i % 4)));
  }
  unsigned first = 0;
  while (first + 1 < kWideLimbs && isRedundant(all[first], all[first + 1])) ++first;
  std::uint16_t limbs[kMaxLimbs] = {};
  for (unsigned i = first; i < kWideLimbs; ++i) limbs[i - first] = all[i];
  return Access::make(limbs, static_cast<std::uint8_t>(kWideLimbs - first), scaleFactor);
}

constexpr Wide kOne{{1}};

constinit const auto kPowers = [] {
  std::array<Decimal, kMaxPower + 1> powers{};
  for (int i = 0; i <= kMaxPower; ++i) {
    powers[static_cast<unsigned>(i)] = makeConstant(widePowerOfTen(i), 0);
  }
  return powers;
}();

}  // namespace

void assertPower(unsigned power) {
  NOMUTIL_ASSERT_TEXT(kSource, power <= kMaxPower, "power < NUM_ELEMS(values)");
}

}  // namespace nomutil::decimals

using namespace nomutil::decimals;

constinit const Decimal Decimal::Zero = makeConstant(Wide{}, 0);
constinit const Decimal Decimal::One = makeConstant(kOne, 0);
constinit const Decimal Decimal::MinusOne = makeConstant(negate(kOne), 0);
constinit const Decimal Decimal::Half = makeConstant(Wide{{5}}, 1);
constinit const Decimal Decimal::Max = makeConstant(widePowerOfTen(100), 0);
constinit const Decimal Decimal::Min = makeConstant(negate(widePowerOfTen(96)), 0);
constinit const Decimal Decimal::KoraMax = makeConstant(subtract(widePowerOfTen(23), kOne), 0);
constinit const Decimal Decimal::KoraMin = makeConstant(subtract(kOne, widePowerOfTen(23)), 0);

const Decimal& Decimal::power10(std::uint8_t power) {
  assertPower(power);
  return kPowers[power <= kMaxPower ? power : kMaxPower];
}
