// NomULong is the 4-byte integer that interfaces on Windows call unsigned long.
#ifndef NOMOS_ULONG_H
#define NOMOS_ULONG_H

#include <cstdint>

#if defined(_WIN32)
typedef unsigned long NomULong;
#else
typedef std::uint32_t NomULong;
#endif
static_assert(sizeof(NomULong) == 4);

#endif  // NOMOS_ULONG_H
