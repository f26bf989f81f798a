// The interrupt only sets a flag, which the callbacks see. A second one ends the program at once:
// the command may wait for input that does not come.
#include "runprogress.h"

#include <atomic>
#include <csignal>
#include <cstddef>
#include <iterator>

namespace nomtool {
namespace {

// In the order of RunProgress::_former.
constexpr int kSignals[] = {SIGINT, SIGTERM};

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free);

void onSignal(int signal) {
  std::signal(signal, SIG_DFL);
  RunProgress::interrupt();
}

}  // namespace

void RunProgress::interrupt() {
  interrupted.store(true, std::memory_order_relaxed);
}

RunProgress::RunProgress(std::ostream& err, bool isQuiet)
    : _err(err), _isQuiet(isQuiet), _isTerminal(showsProgress(err)) {
  for (std::size_t i = 0; i < std::size(kSignals); ++i) {
    _former[i] = std::signal(kSignals[i], onSignal);
    // A shell has its background jobs ignore interrupts.
    if (_former[i] == SIG_IGN) std::signal(kSignals[i], SIG_IGN);
  }
  setByteProgressCB(onBytes);
  setHeartbeatCB(onHeartbeat);
}

RunProgress::~RunProgress() {
  for (std::size_t i = 0; i < std::size(kSignals); ++i) std::signal(kSignals[i], _former[i]);
  interrupted.store(false, std::memory_order_relaxed);
}

void RunProgress::begin(const char* what, const std::string& file,
                        std::optional<std::uint64_t> size) {
  constexpr std::uint32_t kLineStep = 9;  // lines at 10 %, 20 % ...
  _shown = 0;
  _bar.emplace(_err, size, _isTerminal && !_isQuiet);
  percentStep = kLineStep;
  setPercentProgressCB(!_isTerminal && !_isQuiet && size ? onPercent : nullptr);
  startOperation(what, file.c_str(), size.value_or(0));
}

void RunProgress::reach(std::uint64_t bytes) {
  if (!updateProgress(bytes) || interrupted.load(std::memory_order_relaxed)) throw Interrupted();
}

bool RunProgress::onBytes(DbCallbackHandler* handler, std::uint64_t bytes) {
  auto* const self = static_cast<RunProgress*>(handler);
  if (self->_bar) self->_bar->advance(bytes - self->_shown);
  self->_shown = bytes;
  return onHeartbeat(handler);
}

bool RunProgress::onPercent(DbCallbackHandler* handler, unsigned percent) {
  auto* const self = static_cast<RunProgress*>(handler);
  self->_err << self->operation.data() << ' ' << self->fileName.data() << ": " << percent << " %\n";
  return onHeartbeat(handler);
}

bool RunProgress::onHeartbeat(DbCallbackHandler*) {
  return !interrupted.load(std::memory_order_relaxed);
}

}  // namespace nomtool
