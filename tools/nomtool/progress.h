// How far a command is, on a line of the error stream that is written over: bytes, the part of the
// whole and a bar where the whole is known, and the rate.
//   1.50 GiB of 6.00 GiB   25% [#########                           ]  512 MiB/s
#ifndef NOMTOOL_PROGRESS_H
#define NOMTOOL_PROGRESS_H

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>

namespace nomtool {

// The line, 79 characters at most, after so many milliseconds.
std::string progressLine(std::uint64_t done, std::optional<std::uint64_t> total,
                         std::int64_t millis);

// Whether somebody sees the line: the stream is the program's error stream, and that a terminal.
bool showsProgress(const std::ostream& stream);

// Used by one thread. The line is gone when the object is.
class Progress {
 public:
  // isShown false: nothing is written.
  Progress(std::ostream& stream, std::optional<std::uint64_t> total, bool isShown);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // byteCount more are done. Writes the line at most ten times a second, and not within the first
  // half, so that a short run shows none.
  void advance(std::uint64_t byteCount);

 private:
  std::ostream& _stream;
  std::optional<std::uint64_t> _total;
  bool _isShown;
  std::uint64_t _done = 0;
  std::int64_t _begin;
  std::int64_t _due;
  std::size_t _width = 0;  // of the line that stands there
};

}  // namespace nomtool

#endif  // NOMTOOL_PROGRESS_H
