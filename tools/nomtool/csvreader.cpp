// A row is read character by character from the stream's buffer. A row may have 16 MiB: the rest of
// a longer one, as behind a quote that is never closed, is read but not kept.
#include "csvreader.h"

#include <string_view>

namespace nomtool {
namespace {

constexpr std::size_t kMostRowBytes = 16u << 20;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr auto kEnd = std::char_traits<char>::eof();

}  // namespace

CsvReader::CsvReader(std::istream& input, char delimiter)
    : _source(*input.rdbuf()), _delimiter(Traits::to_int_type(delimiter)) {
  input.clear();
  input.seekg(0);
  char start[kByteOrderMark.size()] = {};
  if (!input || (input.read(start, sizeof start) &&
                 std::string_view(start, sizeof start) == kByteOrderMark)) {
    return;
  }
  input.clear();
  input.seekg(0);
}

bool CsvReader::next(CsvRow& row) {
  row.line = _line;
  row.fault = nullptr;
  _rowBytes = 0;
  if (Traits::eq_int_type(_source.sgetc(), kEnd)) return false;
  std::size_t count = 0;
  bool more = true;
  while (more) {
    // The strings of the row before are used again, with their memory.
    if (count == row.fields.size()) row.fields.emplace_back();
    row.fields[count].clear();
    more = _readField(row, row.fields[count]);
    ++count;
  }
  row.fields.resize(count);
  return true;
}

CsvReader::Traits::int_type CsvReader::_take() {
  const Traits::int_type c = _source.sbumpc();
  if (c == '\n') ++_line;
  return c;
}

// True when the field ended with a delimiter, so that another one follows.
bool CsvReader::_readField(CsvRow& row, std::string& field) {
  const bool isQuoted = _source.sgetc() == '"';
  if (isQuoted) {
    _take();
    _readQuoted(row, field);
  }
  for (;;) {
    const Traits::int_type c = _take();
    if (c == _delimiter) return true;
    if (c == '\n' || Traits::eq_int_type(c, kEnd)) return false;
    if (c == '\r' && _source.sgetc() == '\n') continue;
    if (isQuoted) row.fault = "text follows a closing quote";
    _append(row, field, c);
  }
}

void CsvReader::_readQuoted(CsvRow& row, std::string& field) {
  for (;;) {
    const Traits::int_type c = _take();
    if (Traits::eq_int_type(c, kEnd)) {
      row.fault = "a quoted field is not closed";
      return;
    }
    if (c == '"') {
      if (_source.sgetc() != '"') return;
      _take();
    }
    _append(row, field, c);
  }
}

void CsvReader::_append(CsvRow& row, std::string& field, Traits::int_type c) {
  if (++_rowBytes > kMostRowBytes) {
    row.fault = "the row is longer than 16 MiB";
    return;
  }
  field.push_back(Traits::to_char_type(c));
}

}  // namespace nomtool
