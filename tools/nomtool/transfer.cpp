// The input is closed before the output takes its name, which may be that of the input.
#include "transfer.h"

#include "runcommand.h"
#include "storednumber.h"

namespace nomtool {

RefusedInput::RefusedInput(const std::string& name, std::uint64_t offset, const char* what,
                           int status)
    : std::runtime_error(name + ": offset " + std::to_string(offset) + ": " + what + ": " +
                         messageText(status)) {}

Transfer::Transfer(const char* operation, const StreamOptions& options, std::ostream& err)
    : _progress(err, !showsProgress(err) || isTerminal(options.output)),
      _reader(options.input),
      _writer(options.output) {
  _progress.begin(operation, options.input, _reader.size());
}

std::size_t Transfer::read(void* buffer, std::size_t byteCount) {
  const std::size_t count = _reader.read(buffer, byteCount);
  _offset += count;
  _progress.reach(_offset);
  return count;
}

void Transfer::check(int status, std::uint64_t offset, const char* what) const {
  if (status != 0) throw RefusedInput(_reader.name(), offset, what, status);
}

void Transfer::commit() {
  _progress.reach(_offset);
  _reader.close();
  _writer.commit();
}

int runTransfer(const char* operation, const StreamOptions& options, std::ostream& out,
                std::ostream& err, const std::function<void(Transfer&)>& work) {
  // What the command wrote to the same place before comes first.
  out.flush();
  return runCommand(err, [&] {
    Transfer transfer(operation, options, err);
    work(transfer);
    transfer.commit();
  });
}

}  // namespace nomtool
