// A field that begins with a quote ends with one; inside it delimiters and line ends are text and
// two quotes are one: "a, ""b""" is a, "b". A quote inside any other field is text.
#include "rowscanner.h"

#include <algorithm>
#include <utility>

namespace nomtool {
namespace {

constexpr char kQuote = '"';

bool needsQuotes(std::string_view field, char delimiter) {
  const char special[] = {delimiter, kQuote, '\r', '\n'};
  return field.find_first_of(std::string_view(special, sizeof special)) != std::string_view::npos;
}

}  // namespace

void appendField(std::string& text, std::string_view field, char delimiter) {
  if (!needsQuotes(field, delimiter)) {
    text += field;
    return;
  }
  text += kQuote;
  for (const char c : field) {
    if (c == kQuote) text += kQuote;
    text += c;
  }
  text += kQuote;
}

std::size_t wholeRows(std::string_view text, char delimiter) {
  std::size_t end = 0;
  bool beginsField = true;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (beginsField && c == kQuote) {
      // To the closing quote, which is one that no other follows.
      for (++i;; i += 2) {
        i = text.find(kQuote, i);
        if (i == text.npos || i + 1 == text.size()) return end;
        if (text[i + 1] != kQuote) break;
      }
      beginsField = false;
      continue;
    }
    beginsField = c == delimiter || c == '\n';
    if (c == '\n') end = i + 1;
  }
  return end;
}

bool RowScanner::next() {
  if (_at == _text.size()) return false;
  _fields.clear();
  _unescaped.clear();
  _fault = nullptr;
  _isCanonical = true;
  while (_takeField()) {
  }
  return true;
}

// Each takes a field, or what is behind one; true when a delimiter, and thus a field, follows.
bool RowScanner::_takeField() {
  return _at < _text.size() && _text[_at] == kQuote ? _takeQuoted() : _takePlain();
}

bool RowScanner::_takePlain() {
  const std::size_t begin = _at;
  bool wantsQuotes = false;
  for (; _at < _text.size() && _text[_at] != _form.delimiter && _text[_at] != '\n'; ++_at) {
    wantsQuotes |= _text[_at] == kQuote || _text[_at] == '\r';
  }
  std::size_t end = _at;
  if (wantsQuotes) {
    // CR before LF is the line's.
    if (_at < _text.size() && _text[_at] == '\n' && _text[_at - 1] == '\r') _at = --end;
    if (needsQuotes(_text.substr(begin, end - begin), _form.delimiter)) _isCanonical = false;
  }
  _fields.push_back(_text.substr(begin, end - begin));
  return _takeEnd();
}

bool RowScanner::_takeQuoted() {
  const std::size_t begin = _at + 1;
  bool isDoubled = false;
  std::size_t end = begin;
  for (;; end += 2, isDoubled = true) {
    end = _text.find(kQuote, end);
    if (end == _text.npos) {
      _fault = "a quote is not closed";
      _at = _text.size();
      return false;
    }
    if (end + 1 == _text.size() || _text[end + 1] != kQuote) break;
  }
  std::string_view field = _text.substr(begin, end - begin);
  if (isDoubled) {
    std::string text;
    for (std::size_t i = 0; i < field.size(); ++i) {
      text += field[i];
      if (field[i] == kQuote) ++i;
    }
    _unescaped.push_back(std::move(text));
    field = _unescaped.back();
  }
  if (!needsQuotes(field, _form.delimiter)) _isCanonical = false;
  _fields.push_back(field);
  _at = end + 1;
  return _takeEnd();
}

// A delimiter, an end of line or the end of the text. Anything else stands behind a closing quote;
// the rest of the line is then skipped.
bool RowScanner::_takeEnd() {
  if (_at == _text.size()) return false;
  if (_text[_at] == _form.delimiter) {
    ++_at;
    return true;
  }
  const bool isReturn = _text.compare(_at, 2, "\r\n") == 0;
  if (isReturn != _form.hasReturns) _isCanonical = false;
  if (isReturn) ++_at;
  if (_text[_at] != '\n') {
    _fault = "text follows a closing quote";
    _at = std::min(_text.find('\n', _at), _text.size() - 1);
  }
  ++_at;
  return false;
}

}  // namespace nomtool
