// What is read ends within a row; that row waits for the next piece.
#include "rowpieces.h"

#include "storednumber.h"

#include "sys/messages.h"

#include <algorithm>
#include <stdexcept>

namespace nomtool {
namespace {

constexpr std::size_t kMostRowBytes = 64u << 20;

}  // namespace

RefusedRow::RefusedRow(const std::string& name, std::uint64_t row, const std::string& what)
    : RefusedRow(name + ": row " + std::to_string(row), what) {}

RefusedRow::RefusedRow(const std::string& name, const std::string& what)
    : std::runtime_error(name + ": " + what + ": " + messageText(kInvalidParameterValue)) {}

RowPieces::RowPieces(const std::string& path, char delimiter, std::size_t pieceBytes)
    : _reader(path), _pieceBytes(pieceBytes) {
  _form.delimiter = delimiter;
  try {
    _takeHeader();
  } catch (const std::length_error& tooLong) {
    throw RefusedRow(_reader.name(), 0, tooLong.what());
  }
}

void RowPieces::_takeHeader() {
  while (_rest.find('\n') == _rest.npos && _fill()) {
  }
  if (std::string_view(_rest).substr(0, kTextMark.size()) == kTextMark) {
    _form.hasMark = true;
    _offset = kTextMark.size();
    _rest.erase(0, kTextMark.size());
  }
  const std::size_t lineEnd = _rest.find('\n');
  _form.hasReturns = lineEnd != _rest.npos && lineEnd > 0 && _rest[lineEnd - 1] == '\r';
  // The header row may itself hold line ends between quotes.
  std::size_t whole = 0;
  while ((whole = wholeRows(_rest, _form.delimiter)) == 0 && _fill()) {
  }
  if (whole == 0) {
    std::string lines = _rest;
    std::replace(lines.begin(), lines.end(), '\r', '\n');
    if (wholeRows(lines, _form.delimiter) != 0) {
      throw RefusedRow(_reader.name(), "the lines end with CR alone");
    }
  }
  RowScanner scanner(_rest, _form);
  if (!scanner.next()) throw RefusedRow(_reader.name(), "there is no header row");
  if (scanner.fault() != nullptr) throw RefusedRow(_reader.name(), 0, scanner.fault());
  _names.assign(scanner.fields().begin(), scanner.fields().end());
  _isHeaderCanonical = scanner.isCanonical();
  _form.isLastRowEnded = _rest[scanner.offset() - 1] == '\n';
  _offset += scanner.offset();
  _rest.erase(0, scanner.offset());
}

// Reads more; false at the end of the file.
bool RowPieces::_fill() {
  if (_isAtEnd) return false;
  if (_rest.size() > kMostRowBytes) throw std::length_error("the row has more than 64 MiB");
  const std::size_t length = _rest.size();
  _rest.resize(length + _pieceBytes);
  const std::size_t count = _reader.read(_rest.data() + length, _pieceBytes);
  _rest.resize(length + count);
  _isAtEnd = count < _pieceBytes;
  return count != 0;
}

bool RowPieces::next(std::string& piece) {
  std::size_t length = 0;
  do {
    _fill();
    length = _isAtEnd ? _rest.size() : wholeRows(_rest, _form.delimiter);
  } while (length == 0 && !_isAtEnd);
  if (length == 0) return false;
  piece.assign(_rest, 0, length);
  _offset += length;
  _rest.erase(0, length);
  _form.isLastRowEnded = piece.back() == '\n';
  return true;
}

}  // namespace nomtool
