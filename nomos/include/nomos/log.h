// Log lines, assertions and message boxes: each ends in a sink that tests and host programs may
// replace (nomos/testhooks.h). All of it is safe from any thread.
#ifndef NOMOS_LOG_H
#define NOMOS_LOG_H

#include "nomos/export.h"

// Log one line; the text is formatted as by intlSnprintf and cut at 1,023 characters. Without a
// replaced sink the line goes to the file that the key "LogFile" of section "NomLog" in the
// global configuration file names, else to the standard error stream.
// nomLog reports failures, nomInfo information; NomLog is the older name of nomLog.
NOMOS_API void nomLog(const char* format, ...);
NOMOS_API void nomInfo(const char* format, ...);
NOMOS_API void NomLog(const char* format, ...);

// Reports a broken invariant or precondition as one log line and returns: the caller goes on and
// must be safe all the same. file is the source without its suffix
// ("objman/common/source/decimals"), module the library ("nomutil"), kind one of the two below.
// line 0 means that none is known.
NOMOS_API void nosAssertFail(const char* file, const char* module, const char* expression,
                             const char* kind, unsigned line = 0);

inline constexpr const char* kNosAssertion = "Assertion failed";
inline constexpr const char* kNosPrecondition = "Precondition contract violated";

// Shows a text to the person at the machine. Without a replaced sink: one line to the log; on
// Windows a window, but only in an interactive window station of a graphical program.
NOMOS_API void nosMessageBox(const char* text, const char* title);

#endif  // NOMOS_LOG_H
