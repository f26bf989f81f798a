// A stream as a file of compressed blocks, and back.
#include "blockfile.h"
#include "commands.h"
#include "runcommand.h"

namespace nomtool {

int compressCommand(const CompressOptions& options, std::ostream& out, std::ostream& err) {
  return runTransfer("compress", options.streams, out, err, [&](Transfer& transfer) {
    requireZlib(options.streams.input);
    compressStream(transfer, options.level);
  });
}

int uncompressCommand(const UncompressOptions& options, std::ostream& out, std::ostream& err) {
  return runTransfer("uncompress", options.streams, out, err, [&](Transfer& transfer) {
    requireZlib(options.streams.input);
    uncompressStream(transfer);
  });
}

}  // namespace nomtool
