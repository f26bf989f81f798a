// The rows of a piece of delimited text that lies in memory, as CsvReader reads them; and whether
// each stands there as it would be written.
#ifndef NOMTOOL_ROWSCANNER_H
#define NOMTOOL_ROWSCANNER_H

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace nomtool {

inline constexpr std::string_view kTextMark = "\xEF\xBB\xBF";  // in UTF-8

// How a text is written but for its rows. A row is written with quotes around the fields that need
// them: those with a delimiter, a quote, CR or LF.
struct TextForm {
  char delimiter = ',';
  bool hasMark = false;        // a byte order mark at the start
  bool hasReturns = false;     // lines end with CR LF, else with LF
  bool isLastRowEnded = true;  // the last line has an end, too

  std::string_view lineEnd() const { return hasReturns ? "\r\n" : "\n"; }
};

// Whether rows can be read again whose fields stand between such characters.
constexpr bool isDelimiter(char c) {
  return c != '"' && c != '\r' && c != '\n';
}

// Appends a field as it is written, without a delimiter.
void appendField(std::string& text, std::string_view field, char delimiter);

// The bytes of the text up to the end of its last whole row; 0 when no row is whole. REQUIRES: the
// text begins with a row.
std::size_t wholeRows(std::string_view text, char delimiter);

class RowScanner {
 public:
  // The text is whole rows and must outlive the scanner.
  RowScanner(std::string_view text, const TextForm& form) : _text(text), _form(form) {}

  // Takes the next row; false when there is none.
  bool next();

  // Of the row, until next() is called.
  const std::vector<std::string_view>& fields() const { return _fields; }
  const char* fault() const { return _fault; }  // what is wrong with it, or null
  bool isCanonical() const { return _isCanonical; }
  std::size_t offset() const { return _at; }  // behind the row and its end
  // A line without any character has one field, the empty one.
  bool isBlank() const { return _fields.size() == 1 && _fields.front().empty(); }

 private:
  bool _takeField();
  bool _takePlain();
  bool _takeQuoted();
  bool _takeEnd();

  std::string_view _text;
  const TextForm& _form;
  std::size_t _at = 0;
  std::vector<std::string_view> _fields;
  std::deque<std::string> _unescaped;  // what fields view whose quotes were doubled; never moved
  const char* _fault = nullptr;
  bool _isCanonical = true;
};

}  // namespace nomtool

#endif  // NOMTOOL_ROWSCANNER_H
