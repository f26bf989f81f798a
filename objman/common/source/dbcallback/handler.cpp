// The handler of database utility callbacks: what is passed on, and when. Progress goes first to
// the callback for percent, then to that for bytes, then to the heartbeat, until one says stop.

#include "nomos/digits.h"
#include "nomos/exception.h"
#include "nomos/status.h"
#include "sys/dbcallback.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string_view>

namespace {

constexpr std::uint32_t kSilentBeats = 50;

std::string_view viewOf(const char* text) {
  return text == nullptr ? std::string_view() : text;
}

std::uint32_t lengthOf(std::string_view text) {
  if (text.size() > std::numeric_limits<std::uint32_t>::max()) {
    throw NomException(kNosStringTooLong);
  }
  return static_cast<std::uint32_t>(text.size());
}

void append(KoraString<char>& to, std::string_view text) {
  to.append(text.data(), lengthOf(text));
}

void append(KoraString<char>& to, std::uint64_t number) {
  char digits[20];
  to.append(digits, static_cast<std::uint32_t>(nomos::putNumber(digits, number) - digits));
}

template <class... Parts>
KoraString<char> joined(Parts... parts) {
  try {
    KoraInlineString text;
    (append(text, parts), ...);
    return text;
  } catch (const NomException&) {
    return {};
  }
}

// The text may be that of the string itself.
void assign(KoraString<char>& to, std::string_view text) {
  try {
    to.set(text.data(), lengthOf(text));
  } catch (const NomException&) {
    to.clear();
  }
}

unsigned percentOf(std::uint64_t bytesDone, std::uint64_t bytesToDo) {
  if (bytesToDo == 0) return bytesDone == 0 ? 0 : 100;
  const double percent = static_cast<double>(bytesDone) * 100.0 / static_cast<double>(bytesToDo);
  return percent < 100.0 ? static_cast<unsigned>(percent) : 100;
}

}  // namespace

DbCallbackHandler::DbCallbackHandler() noexcept = default;

DbCallbackHandler::DbCallbackHandler(const DbCallbackHandler& other) noexcept {
  *this = other;
}

DbCallbackHandler& DbCallbackHandler::operator=(const DbCallbackHandler& other) noexcept {
  if (this == &other) return *this;
  assign(operation, {other.operation.data(), other.operation.length()});
  assign(fileName, {other.fileName.data(), other.fileName.length()});
  bytesToDo = other.bytesToDo;
  bytesDone = other.bytesDone;
  lastBytesReported = other.lastBytesReported;
  byteStep = other.byteStep;
  percentDone = other.percentDone;
  lastPercentReported = other.lastPercentReported;
  percentStep = other.percentStep;
  heartbeatCount = other.heartbeatCount;
  std::copy(std::begin(other.reserved), std::end(other.reserved), reserved);
  _callbacks = other._callbacks;
  return *this;
}

DbCallbackHandler::~DbCallbackHandler() = default;

void DbCallbackHandler::startOperation(const char* newOperation, const char* newFileName,
                                       std::uint64_t newBytesToDo) {
  assign(operation, viewOf(newOperation));
  assign(fileName, viewOf(newFileName));
  bytesToDo = newBytesToDo;
  bytesDone = 0;
  lastBytesReported = 0;
  percentDone = 0;
  lastPercentReported = 0;
  if (_callbacks.operation != nullptr) _callbacks.operation(this, newOperation, newFileName);
  _beat();
}

bool DbCallbackHandler::updateProgress(std::uint64_t newBytesDone) {
  bytesDone = newBytesDone;
  if (_callbacks.percentProgress != nullptr && !_reportPercent(newBytesDone)) return false;
  if (_callbacks.byteProgress != nullptr && !_reportBytes(newBytesDone)) return false;
  if (_callbacks.heartbeat == nullptr || ++heartbeatCount <= kSilentBeats) return true;
  heartbeatCount = 0;
  return _callbacks.heartbeat(this);
}

// Progress that goes backwards is an advance modulo 2^32 here and 2^64 below, and so is reported.
bool DbCallbackHandler::_reportPercent(std::uint64_t bytes) {
  const unsigned percent = percentOf(bytes, bytesToDo);
  percentDone = percent;
  if (percent == 0 || percent == lastPercentReported) return true;
  if (percent != 100 && percent - lastPercentReported <= percentStep) return true;
  const bool result = _callbacks.percentProgress(this, percent);
  lastPercentReported = percent;
  return result;
}

bool DbCallbackHandler::_reportBytes(std::uint64_t bytes) {
  if (bytes == 0 || bytes == lastBytesReported) return true;
  if (bytes != bytesToDo && bytes - lastBytesReported <= byteStep) return true;
  const bool result = _callbacks.byteProgress(this, bytes);
  lastBytesReported = bytes;
  return result;
}

void DbCallbackHandler::_beat() {
  if (_callbacks.heartbeat != nullptr) _callbacks.heartbeat(this);
}

bool DbCallbackHandler::output(const char* text) {
  const bool result = _callbacks.output == nullptr || _callbacks.output(this, text);
  _beat();
  return result;
}

bool DbCallbackHandler::error(unsigned number) {
  const bool result = _callbacks.error == nullptr || _callbacks.error(this, number);
  _beat();
  return result;
}

bool DbCallbackHandler::recoveryCB(void* data) {
  return _callbacks.recovery == nullptr || _callbacks.recovery(this, data);
}

bool DbCallbackHandler::replayCB(void* data) {
  return _callbacks.replay == nullptr || _callbacks.replay(this, data);
}

bool DbCallbackHandler::reorgCB(bool flag, void* data) {
  const bool result = _callbacks.reorg == nullptr || _callbacks.reorg(this, data);
  return result && !flag;
}

bool DbCallbackHandler::statusCB(bool flag, DbStatusField field, const char* text) {
  const bool result = _callbacks.status == nullptr || _callbacks.status(this, field, text);
  return result && !flag;
}

KoraString<char> DbCallbackHandler::operationString(const char* operation, const char* fileName) {
  return joined("operation=", viewOf(operation), ";fileName=", viewOf(fileName));
}

KoraString<char> DbCallbackHandler::byteProgressString(const char* prefix, std::uint64_t bytesDone,
                                                       std::uint64_t bytesToDo) {
  return joined(viewOf(prefix), ";bytesDone=", bytesDone, ";bytesToDo=", bytesToDo);
}
