// The names of volatilities. A database's value is the object's plus one, and 0 is transparent:
// "Frozen" is 4 of an object and 5 of a database.

#include "sys/formatters.h"

const char* decodeVolatility(ObjectVolatility volatility) {
  switch (volatility) {
    case kVolatile:
      return "Volatile";
    case kFrozen:
      return "Frozen";
    case kStable:
      return "Stable";
  }
  return "Unknown";
}

const char* decodeDbVolatility(DbObjectVolatility volatility) {
  if (volatility == kDbTransparent) return "Transparent";
  return decodeVolatility(static_cast<ObjectVolatility>(volatility - 1));
}
