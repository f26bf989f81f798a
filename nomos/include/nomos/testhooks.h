// Hooks by which tests, and host programs with a log of their own, replace what nomos does.
// Each returns to the default when given null (or the value named).
#ifndef NOMOS_TESTHOOKS_H
#define NOMOS_TESTHOOKS_H

#include "nomos/export.h"

#include <cstdint>

// What a line of the log tells.
enum class NosLogLevel : std::uint32_t { Error = 0, Information = 1 };

// What stands in for the log, the report of an assertion and the message box. context is as it was
// given with the sink; texts live as long as the call.
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

// The number of XHeap blocks that were allocated and not released since the first call of one of
// these two, modulo 2^64: what tells is the difference of two calls.
NOMOS_API std::uint64_t nosAllocatedBlocks();

// A page of 4,096 bytes, all 0 at first, before one that may not be read, for what shall not look
// behind its input. It is the same page for all and stays; null without memory.
NOMOS_API char* nosGuardedPage() noexcept;

// Replaces the path that getGlbIniFileName returns; path is copied, at most 519 characters.
NOMOS_API void nosSetGlbIniFileName(const char* path);

// Replaces the installation directory; path is copied, at most 519 characters.
NOMOS_API void nosSetInstallDirectory(const char* path);

// Sets the single-byte code page of the process by its Windows number (1252, 1250, 28605 ...);
// 0 returns to the configured one. False, and no change, for one that the platform lacks or that
// is no single-byte extension of ASCII.
NOMOS_API bool nosSetCodePage(unsigned codePage);

// What nosIsDTNMode answers: 1 that the designators of the locale are in force, 0 that they are
// not; -1 returns to the configured answer.
NOMOS_API void nosSetDTNMode(int mode) noexcept;

// Stops the clock that nosGetCurrentDateTime reads at a date and a time of day; both 0 let it go.
NOMOS_API void nosSetCurrentDateTime(std::uint32_t date, std::uint32_t time);

// Replaces the clock that nosGetRelativeTime reads; null gives the system's back. Any thread may
// call clock. Set it before threads wait for a time: a wait that has begun keeps its clock.
using NosRelativeClock = std::int64_t (*)() noexcept;
NOMOS_API void nosSetRelativeClock(NosRelativeClock clock) noexcept;

// Is called with the whole name of each thread that ThreadManager::createThread is asked for, by
// the asking thread. False makes that call fail as a limit of the system does.
using NosThreadHook = bool (*)(void* context, const char* name);
NOMOS_API void nosSetThreadHook(NosThreadHook hook, void* context);

// While a library is denied, each DllDesc of that name behaves as if there were no file, even one
// that has loaded it; while an entry is denied, no library has it. Addresses that were found before
// stay good. The name is copied, at most 49 characters; null ends the denial.
NOMOS_API void nosDenyLibrary(const char* name) noexcept;
NOMOS_API void nosDenyEntry(const char* name) noexcept;

// Is called in place of writing a process dump.
using NosProcessDumpSink = void (*)(void* context, int kind);
NOMOS_API void nosSetProcessDumpSink(NosProcessDumpSink sink, void* context);

#endif  // NOMOS_TESTHOOKS_H
