// Process dumps: the sink, the name of the file, and how many there may be.

#include "nomos/processdump.h"

#include "nomos/directory.h"
#include "nomos/intl.h"
#include "nomos/log.h"
#include "nomos/mutex.h"
#include "nomos/profile.h"
#include "nomos/testhooks.h"
#include "platform.h"

namespace platform = nomos::platform;

namespace {

constexpr unsigned kPathRoom = 520;
constexpr unsigned kNameRoom = 64;
constexpr unsigned kMostDumps = 4;

constinit ThreadMutex sinkMutex("NosDumpSink");
NosProcessDumpSink sink NOMOS_GUARDED_BY(sinkMutex) = nullptr;
void* sinkContext NOMOS_GUARDED_BY(sinkMutex) = nullptr;

// Dumps are written one after another: not every system's writer bears two at once.
constinit ThreadMutex dumpMutex("NosDump");
unsigned dumpCount NOMOS_GUARDED_BY(dumpMutex) = 0;
unsigned lastNumber NOMOS_GUARDED_BY(dumpMutex) = 0;

bool gaveToSink(int kind) {
  NosProcessDumpSink function;
  void* context;
  {
    ThreadMutexHold hold(sinkMutex);
    function = sink;
    context = sinkContext;
  }
  if (function != nullptr) function(context, kind);
  return function != nullptr;
}

void findDumpDirectory(char (&directory)[kPathRoom]) {
  getIniFileStringParam("NomLog", "DumpDirectory", "", directory, kPathRoom, getGlbIniFileName());
  if (directory[0] == '\0') platform::findTemporaryDirectory(directory, kPathRoom);
  nosNormaliseDirectory(directory, kPathRoom);
}

// Writes the next dump. path gets its name, error the system's number or 0; false when there were
// enough dumps.
bool writeNext(int kind, char (&path)[kPathRoom + kNameRoom], unsigned& error) {
  ThreadMutexHold hold(dumpMutex);
  if (dumpCount == kMostDumps) return false;
  char directory[kPathRoom];
  findDumpDirectory(directory);
  // Files of an earlier process with the same number stay.
  const unsigned end = lastNumber + 1000;
  do {
    ++lastNumber;
    intlSnprintf(path, sizeof path, "%snomutil-%u-%u.dump", directory, platform::processNumber(),
                 lastNumber);
    error = platform::writeProcessDump(path, kind);
  } while (error == platform::kFileExists && lastNumber != end);
  if (error == 0) ++dumpCount;
  return true;
}

}  // namespace

void nosProcessDump(int kind) noexcept {
  if (gaveToSink(kind)) return;
  char path[kPathRoom + kNameRoom];
  unsigned error = 0;
  if (!writeNext(kind, path, error)) {
    nomLog("nosProcessDump(%d): not written, the process has written %u dumps.", kind, kMostDumps);
  } else if (error != 0) {
    nomLog("nosProcessDump(%d): unable to write '%s', O/S Error %u.", kind, path, error);
  } else {
    nomLog("nosProcessDump(%d): written to '%s'.", kind, path);
  }
}

void nosSetProcessDumpSink(NosProcessDumpSink newSink, void* context) {
  ThreadMutexHold hold(sinkMutex);
  sink = newSink;
  sinkContext = context;
}
