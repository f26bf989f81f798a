// Bytes of files, devices and pipes, forward and in pieces, so that any size takes the same memory.
// "-" is the standard input or output. A file that is written takes its name when it is whole.
#ifndef NOMTOOL_BYTESTREAM_H
#define NOMTOOL_BYTESTREAM_H

#include "nomos/file.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace nomtool {

// A stream that cannot be opened, read or written: its name and the system's reason.
class StreamFault : public std::runtime_error {
 public:
  // The reason is that of nosGetLastError.
  explicit StreamFault(const std::string& name);
};

// A path, or "-", by the name that a person knows it by: "standard input", "standard output".
bool isStandard(const std::string& path);
std::string inputName(const std::string& path);
std::string outputName(const std::string& path);

// Whether what is written to the path is seen by a person.
bool isTerminal(const std::string& path);

class ByteReader {
 public:
  explicit ByteReader(const std::string& path);

  // Reads byteCount bytes, fewer only at the end. REQUIRES: byteCount is below 4 GiB.
  std::size_t read(void* buffer, std::size_t byteCount);
  void close() { _file.close(); }

  const std::string& name() const { return _name; }
  // Nothing for a pipe.
  std::optional<std::uint64_t> size() const;

 private:
  std::string _name;
  KoraFile _file;
};

// What is written goes to a file beside the one that is named, "NAME.part" and a number, which
// replaces that one on commit and is deleted without it. Devices and pipes are written at once.
// Its user lives within a RunProgress, so that an interrupt does not end the program before that.
class ByteWriter {
 public:
  explicit ByteWriter(const std::string& path);
  ~ByteWriter();
  ByteWriter(const ByteWriter&) = delete;
  ByteWriter& operator=(const ByteWriter&) = delete;

  // REQUIRES: there are fewer than 4 GiB.
  void write(std::string_view bytes);
  // Nothing is written behind it.
  void commit();

 private:
  std::string _path;
  std::string _part;  // empty when there is no such file, or no longer
  KoraFile _file;
};

}  // namespace nomtool

#endif  // NOMTOOL_BYTESTREAM_H
