// Log lines, assertions and message boxes, and the sinks that replace where they go. Without a sink
// an assertion is a log line, and so is a message box where nobody sees a window.

#include "nomos/log.h"

#include "nomos/intl.h"
#include "nomos/mutex.h"
#include "nomos/profile.h"
#include "nomos/testhooks.h"
#include "platform.h"

#include <cstdarg>

namespace {

constexpr unsigned kLineRoom = 1024;
constexpr unsigned kPathRoom = 520;

template <class Function>
struct Sink {
  Function function = nullptr;
  void* context = nullptr;
};

struct Sinks {
  Sink<NosLogSink> log;
  Sink<NosAssertSink> assertion;
  Sink<NosMessageBoxSink> messageBox;
};

constinit ThreadMutex sinkMutex("NosSinks");
Sinks sinks NOMOS_GUARDED_BY(sinkMutex);

// A copy, so that a sink is called without the lock and may log itself.
Sinks currentSinks() {
  ThreadMutexHold hold(sinkMutex);
  return sinks;
}

// The configured log file, asked for once; empty when there is none.
const char* logFile() {
  static const struct Path {
    Path() {
      getIniFileStringParam("NomLog", "LogFile", "", text, sizeof text, getGlbIniFileName());
    }
    char text[kPathRoom];
  } path;
  return path.text;
}

void writeLine(NosLogLevel level, const char* line) {
  const Sink<NosLogSink> sink = currentSinks().log;
  if (sink.function != nullptr) {
    sink.function(sink.context, level, line);
    return;
  }
  const char* const file = logFile();
  if (file[0] != '\0' && nomos::platform::appendLine(file, line)) return;
  nomos::platform::writeErrorLine(line);
}

void logFormatted(NosLogLevel level, const char* format, std::va_list arguments) {
  char line[kLineRoom];
  intlVsnprintf(line, sizeof line, format, arguments);
  writeLine(level, line);
}

}  // namespace

void nomLog(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  logFormatted(NosLogLevel::Error, format, arguments);
  va_end(arguments);
}

void nomInfo(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  logFormatted(NosLogLevel::Information, format, arguments);
  va_end(arguments);
}

void NomLog(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  logFormatted(NosLogLevel::Error, format, arguments);
  va_end(arguments);
}

void nosAssertFail(const char* file, const char* module, const char* expression, const char* kind,
                   unsigned line) {
  const Sink<NosAssertSink> sink = currentSinks().assertion;
  if (sink.function != nullptr) {
    sink.function(sink.context, file, module, expression, kind, line);
  } else {
    nomLog("%s(%u): %s: %s: %s", file, line, module, kind, expression);
  }
}

void nosMessageBox(const char* text, const char* title) {
  const Sink<NosMessageBoxSink> sink = currentSinks().messageBox;
  if (sink.function != nullptr) {
    sink.function(sink.context, text, title);
  } else if (!nomos::platform::showMessageBox(text, title)) {
    nomLog("%s: %s", title, text);
  }
}

void nosSetLogSink(NosLogSink sink, void* context) {
  ThreadMutexHold hold(sinkMutex);
  sinks.log = {sink, context};
}

void nosSetAssertSink(NosAssertSink sink, void* context) {
  ThreadMutexHold hold(sinkMutex);
  sinks.assertion = {sink, context};
}

void nosSetMessageBoxSink(NosMessageBoxSink sink, void* context) {
  ThreadMutexHold hold(sinkMutex);
  sinks.messageBox = {sink, context};
}
