// Streams over KoraFile. The name of a file that is being written has a number by chance, so that
// two programs may write the same one: the last to end wins, whole.
#include "bytestream.h"

#include "nomos/lasterror.h"

#include <filesystem>
#include <random>
#include <system_error>

namespace nomtool {

StreamFault::StreamFault(const std::string& name)
    : std::runtime_error(name + ": " +
                         std::system_category().message(static_cast<int>(nosGetLastError()))) {}

bool isStandard(const std::string& path) {
  return path == "-";
}
std::string inputName(const std::string& path) {
  return isStandard(path) ? "standard input" : path;
}
std::string outputName(const std::string& path) {
  return isStandard(path) ? "standard output" : path;
}

bool isTerminal(const std::string& path) {
  return isStandard(path) && nosIsTerminal(NosStream::Output);
}

ByteReader::ByteReader(const std::string& path) : _name(inputName(path)) {
  const bool isOpen =
      isStandard(path) ? _file.openStandard(NosStream::Input) : _file.openReadOnly(path.c_str());
  if (!isOpen) throw StreamFault(_name);
}

std::size_t ByteReader::read(void* buffer, std::size_t byteCount) {
  const std::int64_t count = _file.read(buffer, static_cast<std::uint32_t>(byteCount));
  if (count < 0) throw StreamFault(_name);
  return static_cast<std::size_t>(count);
}

std::optional<std::uint64_t> ByteReader::size() const {
  const std::int64_t size = _file.size();
  return size < 0 ? std::nullopt : std::optional(static_cast<std::uint64_t>(size));
}

ByteWriter::ByteWriter(const std::string& path) : _path(outputName(path)) {
  if (isStandard(path)) {
    if (!_file.openStandard(NosStream::Output)) throw StreamFault(_path);
  } else if (!_file.openDevice(path.c_str())) {
    // What a link names is replaced, not the link.
    std::error_code ignored;
    if (std::filesystem::is_symlink(path, ignored)) {
      const std::filesystem::path target = std::filesystem::weakly_canonical(path, ignored);
      if (!ignored) _path = target.string();
    }
    const std::string part = _path + ".part" + std::to_string(std::random_device()());
    if (!_file.createNew(part.c_str())) throw StreamFault(_path);
    _part = part;
  }
}

ByteWriter::~ByteWriter() {
  _file.close();
  if (!_part.empty()) nosDeleteFile(_part.c_str());
}

void ByteWriter::write(std::string_view bytes) {
  if (!_file.write(bytes.data(), static_cast<std::uint32_t>(bytes.size()))) {
    throw StreamFault(_path);
  }
}

void ByteWriter::commit() {
  if (_part.empty()) return;
  if (!_file.flush()) throw StreamFault(_path);
  _file.close();
  if (!nosReplaceFile(_part.c_str(), _path.c_str())) throw StreamFault(_path);
  _part.clear();
}

}  // namespace nomtool
