// Hooks by which tests, and host programs with a log of their own, replace what nomos does.
// Each returns to the default when given null (or the value named).
#ifndef NOMOS_TESTHOOKS_H
#define NOMOS_TESTHOOKS_H

#include "nomos/export.h"

#include <cstdint>

enum class NosLogLevel : std::uint32_t { Error = 0, Information = 1 };

using NosLogSink = void (*)(void* context, NosLogLevel level, const char* line);
using NosAssertSink = void (*)(void* context, const char* file, const char* module,
                               const char* expression, const char* kind, unsigned line);
using NosMessageBoxSink = void (*)(void* context, const char* text, const char* title);

// A sink may be called by any thread, by several at once, and must not call the setters.
NOMOS_API void nosSetLogSink(NosLogSink sink, void* context);
NOMOS_API void nosSetAssertSink(NosAssertSink sink, void* context);
NOMOS_API void nosSetMessageBoxSink(NosMessageBoxSink sink, void* context);

// Makes the n-th allocation of XHeap from now on fail, n from 1; it fails once. 0 ends it.
NOMOS_API void nosFailAllocation(std::uint64_t n);

// The number of XHeap blocks that are allocated and not yet released.
NOMOS_API std::uint64_t nosAllocatedBlocks();

// Replaces the path that getGlbIniFileName returns; path is copied, at most 519 characters.
NOMOS_API void nosSetGlbIniFileName(const char* path);

// Replaces the installation directory; path is copied, at most 519 characters.
NOMOS_API void nosSetInstallDirectory(const char* path);

// Sets the single-byte code page of the process by its Windows number (1252, 1250, 28605 ...);
// 0 returns to the configured one. False, and no change, for one that the platform lacks or that
// is no single-byte extension of ASCII.
NOMOS_API bool nosSetCodePage(unsigned codePage);

// Stops the clock that nosGetCurrentDateTime reads at a date and a time of day; both 0 let it go.
NOMOS_API void nosSetCurrentDateTime(std::uint32_t date, std::uint32_t time);

#endif  // NOMOS_TESTHOOKS_H
