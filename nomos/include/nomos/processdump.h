// A record of the process as it stands, for whoever looks into a fault of the program afterwards.
#ifndef NOMOS_PROCESSDUMP_H
#define NOMOS_PROCESSDUMP_H

#include "nomos/export.h"

// Writes a dump of the running process, which goes on, and one line to the log that tells where it
// is. On Windows it is a minidump, on Linux a text: the calls in progress on this thread and the
// memory map. kind is the caller's reason, which stands in the dump: 2 is a call of an operation
// that a class declares and does not have.
//
// The file is a new one (on Linux for its owner alone), "nomutil-<process>-<n>.dump" with n from 1,
// in the folder that the key "DumpDirectory" of section "NomLog" in the global configuration file
// names, else in the one for temporary files. A process writes at most 4; what comes after is a
// log line alone. Any thread may call it, though not from a signal handler. The sink of
// nosSetProcessDumpSink (nomos/testhooks.h) takes its place. A C name, so that callers can look it
// up.
extern "C" NOMOS_API void nosProcessDump(int kind) noexcept;

#endif  // NOMOS_PROCESSDUMP_H
