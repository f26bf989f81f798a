// The callbacks through which a long-running database utility tells what it does: the operation and
// its file, progress, output, errors. The utility calls the handler's operations; the handler calls
// what its caller has set, and returns false when that one asks the utility to stop.
//
// Progress is passed on when it has grown by more than a step, so that a display is not flooded:
// with percentStep 5, 0 % to 5 % are silent, 6 % is reported, then 12 %; 100 % always is, once.
// The heartbeat comes with every 51st progress that nobody stops, also where there is none.
//
// Nothing throws by itself; a text for which the heap is exhausted is empty. What a callback throws
// passes through. A handler belongs to one thread at a time.
#ifndef NOMUTIL_SYS_DBCALLBACK_H
#define NOMUTIL_SYS_DBCALLBACK_H

#include "nomos/korastring.h"
#include "sys/build.h"

#include <cstdint>

class DbCallbackHandler;

// What a status text is about. The handler passes on any number; these are those of the library's
// own utilities.
enum DbStatusField : std::uint32_t {
  kDbStatusOperation = 0,
  kDbStatusFileName = 1,
  kDbStatusPhase = 2,
  kDbStatusResult = 3,
};

// ---- Callbacks ----
// What a caller sets, by what it is told. handler is the one that the callback was set in; texts
// live as long as the call. A false asks the utility to stop.

// A message number (sys/messages.h).
using DbErrorCallback = bool (*)(DbCallbackHandler* handler, unsigned number);
// A line of output for people.
using DbOutputCallback = bool (*)(DbCallbackHandler* handler, const char* text);
// The operation that begins, and the file it works on; either may be null.
using DbOperationCallback = void (*)(DbCallbackHandler* handler, const char* operation,
                                     const char* fileName);
// The bytes that are done by now.
using DbByteProgressCallback = bool (*)(DbCallbackHandler* handler, std::uint64_t bytes);
// The per cent that are done by now, 0 to 100.
using DbPercentProgressCallback = bool (*)(DbCallbackHandler* handler, unsigned percent);
// That the utility is alive, and nothing else.
using DbHeartbeatCallback = bool (*)(DbCallbackHandler* handler);
// What recoveryCB, replayCB or reorgCB was called with; the utility says what it points to.
using DbDataCallback = bool (*)(DbCallbackHandler* handler, void* data);
// A status text, and what it is about.
using DbStatusCallback = bool (*)(DbCallbackHandler* handler, DbStatusField field,
                                  const char* text);

// The callbacks of one utility that runs, and how far it is.
class NOMUTIL_API DbCallbackHandler {
 public:
  DbCallbackHandler() noexcept;
  // Every field, the texts and the callbacks among them. A move is a copy.
  DbCallbackHandler(const DbCallbackHandler& other) noexcept;
  DbCallbackHandler& operator=(const DbCallbackHandler& other) noexcept;
  ~DbCallbackHandler();

  // A null callback ends the calls.
  void setErrorCB(DbErrorCallback callback) { _callbacks.error = callback; }
  void setOutputCB(DbOutputCallback callback) { _callbacks.output = callback; }
  void setOperationCB(DbOperationCallback callback) { _callbacks.operation = callback; }
  void setByteProgressCB(DbByteProgressCallback callback) { _callbacks.byteProgress = callback; }
  void setPercentProgressCB(DbPercentProgressCallback callback) {
    _callbacks.percentProgress = callback;
  }
  void setHeartbeatCB(DbHeartbeatCallback callback) { _callbacks.heartbeat = callback; }
  void setRecoveryCB(DbDataCallback callback) { _callbacks.recovery = callback; }
  void setReorgCB(DbDataCallback callback) { _callbacks.reorg = callback; }
  void setReplayCB(DbDataCallback callback) { _callbacks.replay = callback; }
  void setStatusCB(DbStatusCallback callback) { _callbacks.status = callback; }

  // Begins an operation at 0 bytes; the heartbeat count goes on. The operation callback gets the
  // two pointers as they are, null too, which is an empty text in the fields; then the heartbeat
  // is called.
  // REQUIRES: the texts do not lie in this handler, but that each may be the whole of its own
  // field.
  void startOperation(const char* operation, const char* fileName, std::uint64_t bytesToDo);

  // Takes the bytes that are done by now. Of 0 bytes to do, none is 0 % and any other 100 %. False
  // is the answer of the last callback that was called: after a false for percent neither bytes nor
  // heartbeat follow, after a false for bytes no heartbeat.
  bool updateProgress(std::uint64_t bytesDone);

  // Pass a text or a message number on, and call the heartbeat, whose answer does not count. True
  // without a callback.
  bool output(const char* text);
  bool error(unsigned number);

  // Pass on what the utility hands over. True without a callback.
  bool recoveryCB(void* data);
  bool replayCB(void* data);

  // The same; with a true flag the callback is called, and the answer is false whatever it says.
  bool reorgCB(bool flag, void* data);
  bool statusCB(bool flag, DbStatusField field, const char* text);

  // "operation=backup;fileName=f.dat"; a null text is an empty one.
  static KoraString<char> operationString(const char* operation, const char* fileName);
  // The prefix and ";bytesDone=5;bytesToDo=10".
  static KoraString<char> byteProgressString(const char* prefix, std::uint64_t bytesDone,
                                             std::uint64_t bytesToDo);

  KoraInlineString operation;
  KoraInlineString fileName;
  std::uint64_t bytesToDo = 0;
  std::uint64_t bytesDone = 0;
  std::uint64_t lastBytesReported = 0;
  std::uint32_t byteStep = 0;  // what an advance must exceed to be reported
  std::uint32_t percentDone = 0;
  std::uint32_t lastPercentReported = 0;
  std::uint32_t percentStep = 0;  // as byteStep
  std::uint32_t heartbeatCount = 0;
  std::uint32_t reserved[3] = {};  // the callbacks follow without a gap

 private:
  struct Callbacks {
    DbErrorCallback error = nullptr;
    DbOutputCallback output = nullptr;
    DbOperationCallback operation = nullptr;
    DbByteProgressCallback byteProgress = nullptr;
    DbPercentProgressCallback percentProgress = nullptr;
    DbHeartbeatCallback heartbeat = nullptr;
    DbDataCallback recovery = nullptr;
    DbDataCallback reorg = nullptr;
    DbDataCallback replay = nullptr;
    DbStatusCallback status = nullptr;
  };

  bool _reportPercent(std::uint64_t bytes);
  bool _reportBytes(std::uint64_t bytes);
  void _beat();

  Callbacks _callbacks;
};

#endif  // NOMUTIL_SYS_DBCALLBACK_H
