// Names of identifiers and states for people to read.
#ifndef NOMUTIL_SYS_FORMATTERS_H
#define NOMUTIL_SYS_FORMATTERS_H

#include "sys/build.h"

#include <cstdint>

// How often an object changes. The database's values are these plus one, with 0 for transparent.
enum ObjectVolatility : std::uint32_t { kVolatile = 0, kFrozen = 4, kStable = 8 };
enum DbObjectVolatility : std::uint32_t {
  kDbTransparent = 0,
  kDbVolatile = 1,
  kDbFrozen = 5,
  kDbStable = 9
};

// "Transparent", "Volatile", "Frozen", "Stable"; "Unknown" for any other value. Constant texts.
NOMUTIL_API const char* decodeVolatility(ObjectVolatility volatility);
NOMUTIL_API const char* decodeDbVolatility(DbObjectVolatility volatility);

#endif  // NOMUTIL_SYS_FORMATTERS_H
