// The input is closed before the output takes its name, which may be that of the input.
#include "transfer.h"

#include "runcommand.h"
#include "storednumber.h"

namespace nomtool {

RefusedInput::RefusedInput(const std::string& name, std::uint64_t offset, const char* what,
                           int status)
    : std::runtime_error(name + ": offset " + std::to_string(offset) + ": " + what + ": " +
                         messageText(status)) {}

Transfer::Transfer(const StreamOptions& options, std::ostream& err)
    : _reader(options.input),
      _writer(options.output),
      _progress(err, _reader.size(), showsProgress(err) && !_writer.isTerminal()) {}

std::size_t Transfer::read(void* buffer, std::size_t byteCount) {
  const std::size_t count = _reader.read(buffer, byteCount);
  _progress.advance(count);
  _offset += count;
  return count;
}

void Transfer::check(int status, std::uint64_t offset, const char* what) const {
  if (status != 0) throw RefusedInput(_reader.name(), offset, what, status);
}

void Transfer::commit() {
  _reader.close();
  _writer.commit();
}

int runTransfer(const StreamOptions& options, std::ostream& out, std::ostream& err,
                const std::function<void(Transfer&)>& work) {
  // What the command wrote to the same place before comes first.
  out.flush();
  return runCommand(err, [&] {
    Transfer transfer(options, err);
    work(transfer);
    transfer.commit();
  });
}

}  // namespace nomtool
