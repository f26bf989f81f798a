// An integer whose name on Windows means 8 bytes elsewhere.
#ifndef NOMOS_ULONG_H
#define NOMOS_ULONG_H

#include <cstdint>

// The 4-byte integer that interfaces on Windows call unsigned long.
#if defined(_WIN32)
typedef unsigned long NomULong;
#else
typedef std::uint32_t NomULong;
#endif
static_assert(sizeof(NomULong) == 4);

#endif  // NOMOS_ULONG_H
