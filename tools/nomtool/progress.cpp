// The line is built as a text, and a shorter one is filled up with blanks. Times are those of the
// relative clock.
#include "progress.h"

#include "nomos/file.h"
#include "nomos/intl.h"
#include "nomos/relativetime.h"

#include <algorithm>
#include <iostream>

namespace nomtool {
namespace {

constexpr std::int64_t kFirstMillis = 500;
constexpr std::int64_t kNextMillis = 100;
constexpr unsigned kBarWidth = 36;

// Three digits and a unit: 999 B, 1.00 KiB, 10.5 GiB.
std::string sizeText(double byteCount) {
  constexpr const char* kUnits[] = {"B", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
  const char* const* unit = kUnits;
  // What rounds to 1000 with no place left goes to the next unit as well.
  while (byteCount >= 999.5 && unit != std::end(kUnits) - 1) {
    byteCount /= 1024;
    ++unit;
  }
  const int places = unit == kUnits || byteCount >= 99.95 ? 0 : byteCount >= 9.995 ? 1 : 2;
  char text[32];
  intlSnprintf(text, sizeof text, "%.*f %s", places, byteCount, *unit);
  return text;
}

}  // namespace

std::string progressLine(std::uint64_t done, std::optional<std::uint64_t> total,
                         std::int64_t millis) {
  const auto bytes = static_cast<double>(done);
  const std::string rate =
      sizeText(bytes * 1000 / static_cast<double>(std::max<std::int64_t>(millis, 1))) + "/s";
  if (!total) return sizeText(bytes) + "  " + rate;
  const auto whole = static_cast<double>(*total);
  // A file may have grown since it was opened.
  const double part = done >= *total ? 1 : bytes / whole;
  const auto filled = static_cast<unsigned>(part * kBarWidth);
  char percent[16];
  intlSnprintf(percent, sizeof percent, "%5u%% [", static_cast<unsigned>(part * 100));
  return sizeText(bytes) + " of " + sizeText(whole) + percent + std::string(filled, '#') +
         std::string(kBarWidth - filled, ' ') + "]  " + rate;
}

bool showsProgress(const std::ostream& stream) {
  return stream.rdbuf() == std::cerr.rdbuf() && nosIsTerminal(NosStream::Error);
}

Progress::Progress(std::ostream& stream, std::optional<std::uint64_t> total, bool isShown)
    : _stream(stream),
      _total(total),
      _isShown(isShown),
      _begin(nosGetRelativeTime()),
      _due(_begin + kFirstMillis) {}

Progress::~Progress() {
  if (_width > 0) _stream << '\r' << std::string(_width, ' ') << '\r' << std::flush;
}

void Progress::advance(std::uint64_t byteCount) {
  _done += byteCount;
  if (!_isShown) return;
  const std::int64_t now = nosGetRelativeTime();
  if (now < _due) return;
  _due = now + kNextMillis;
  const std::string line = progressLine(_done, _total, now - _begin);
  _stream << '\r' << line << std::string(_width - std::min(_width, line.size()), ' ') << std::flush;
  _width = line.size();
}

}  // namespace nomtool
