// Delimited text as RFC 4180 describes it, row by row, whatever the size of the text.
#ifndef NOMTOOL_CSVREADER_H
#define NOMTOOL_CSVREADER_H

#include <cstddef>
#include <cstdint>
#include <istream>
#include <streambuf>
#include <string>
#include <vector>

namespace nomtool {

struct CsvRow {
  std::vector<std::string> fields;
  std::uint64_t line = 0;       // the line of the text on which the row begins, from 1
  const char* fault = nullptr;  // what is wrong with the row; its fields are then incomplete

  // A line without any character has one field, the empty one.
  bool isBlank() const { return fields.size() == 1 && fields.front().empty(); }
};

// Fields lie between delimiters and rows between line ends, LF or CR LF; the last one may be
// absent. A field that begins with a double quote ends with one; inside it delimiters and line ends
// are text and two quotes are one. A quote inside any other field is text. A UTF-8 byte order mark
// at the start is skipped.
class CsvReader {
 public:
  // Reads from the beginning of input, a seekable stream; input fails when it is not.
  CsvReader(std::istream& input, char delimiter);

  // False at the end of the text. Throws std::ios_base::failure when reading fails.
  bool next(CsvRow& row);

 private:
  using Traits = std::char_traits<char>;

  Traits::int_type _take();
  bool _readField(CsvRow& row, std::string& field);
  void _readQuoted(CsvRow& row, std::string& field);
  void _append(CsvRow& row, std::string& field, Traits::int_type c);

  std::streambuf& _source;
  Traits::int_type _delimiter;
  std::uint64_t _line = 1;
  std::size_t _rowBytes = 0;
};

}  // namespace nomtool

#endif  // NOMTOOL_CSVREADER_H
