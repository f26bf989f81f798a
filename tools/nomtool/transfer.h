// The way of a command from its input to its output, piece by piece, with its progress, and with
// the user's wish to stop it. What is wrong on the way is thrown, and becomes a line on the error
// stream and an exit status in one place.
#ifndef NOMTOOL_TRANSFER_H
#define NOMTOOL_TRANSFER_H

#include "bytestream.h"
#include "commands.h"
#include "runprogress.h"

#include <cstdint>
#include <functional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace nomtool {

// Input that is refused: "NAME: offset 12: malformed UTF-8: Invalid parameter value (1002)".
class RefusedInput : public std::runtime_error {
 public:
  RefusedInput(const std::string& name, std::uint64_t offset, const char* what, int status);
};

class Transfer {
 public:
  // The operation is what the command does with the input: "base64". Throws StreamFault.
  Transfer(const char* operation, const StreamOptions& options, std::ostream& err);

  // Reads byteCount bytes, fewer only at the end. Throws StreamFault, and Interrupted when the user
  // has stopped the command.
  std::size_t read(void* buffer, std::size_t byteCount);
  void write(std::string_view bytes) { _writer.write(bytes); }

  // The number of bytes that were read.
  std::uint64_t offset() const { return _offset; }

  // Throws RefusedInput, with what is wrong at an offset of the input, unless the status is 0.
  void check(int status, std::uint64_t offset, const char* what) const;

  // The output is whole. Throws StreamFault and Interrupted.
  void commit();

 private:
  RunProgress _progress;  // outlives the writer, whose file an interrupt must not leave behind
  ByteReader _reader;
  ByteWriter _writer;
  std::uint64_t _offset = 0;
};

// Runs a work, and commits its output. Returns the exit status.
int runTransfer(const char* operation, const StreamOptions& options, std::ostream& out,
                std::ostream& err, const std::function<void(Transfer&)>& work);

}  // namespace nomtool

#endif  // NOMTOOL_TRANSFER_H
