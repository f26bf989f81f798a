// Two passes over the text. The first counts the numbers in every column; the second carries the
// fields through parameters, those of the numeric columns in the stored form. Both take the same
// rows: those that are well formed and as wide as the header. Only the second one reports.
#include "tablefigures.h"

#include "csvreader.h"
#include "parametercarrier.h"
#include "storednumber.h"

#include "sys/messages.h"

#include <algorithm>
#include <stdexcept>

namespace nomtool {
namespace {

class TableReader {
 public:
  explicit TableReader(const TableSource& source) : _source(source) {}

  Table read() {
    CsvReader reader = _open();
    if (!_readHeader(reader)) {
      _refuse(_row.line, _row.fault != nullptr ? _row.fault : "there is no header row");
      return _table;
    }
    _findNumericColumns(reader);
    CsvReader again = _open();
    _nextRow(again);  // the header
    while (_nextRow(again)) _carryRow();
    _table.carried = _carrier.arrived();
    return _table;
  }

 private:
  CsvReader _open() {
    CsvReader reader(_source.input, _source.delimiter);
    if (!_source.input) throw std::ios_base::failure("it cannot be read from its beginning twice");
    return reader;
  }

  // Blank lines are no rows, unless an empty field is all that a row has.
  bool _nextRow(CsvReader& reader) {
    while (reader.next(_row)) {
      if (!_row.isBlank() || _row.fault != nullptr || _table.columns.size() == 1) return true;
    }
    return false;
  }

  bool _isTaken() const {
    return _row.fault == nullptr && _row.fields.size() == _table.columns.size();
  }

  bool _readHeader(CsvReader& reader) {
    if (!_nextRow(reader) || _row.fault != nullptr) return false;
    for (const std::string& name : _row.fields) {
      Column column;
      column.name = name;
      _table.columns.push_back(column);
    }
    return true;
  }

  void _findNumericColumns(CsvReader& reader) {
    while (_nextRow(reader)) {
      if (!_isTaken()) continue;
      for (std::size_t i = 0; i < _row.fields.size(); ++i) {
        const std::string& field = _row.fields[i];
        if (trimmed(field).empty()) continue;
        ++_table.columns[i].filled;
        if (numberSyntax(field) != NumberSyntax::kNone) ++_table.columns[i].numbers;
      }
    }
    for (Column& column : _table.columns) {
      column.isNumeric = _source.chosen.empty() && column.numbers > 0 &&
                         column.numbers >= column.filled - column.numbers;
    }
    for (const std::string& name : _source.chosen) {
      bool isFound = false;
      for (Column& column : _table.columns) {
        if (column.name == name) isFound = column.isNumeric = true;
      }
      if (!isFound) throw std::invalid_argument("there is no column " + inQuotes(name));
    }
  }

  void _carryRow() {
    ++_table.rows;
    if (!_isTaken()) {
      ++_table.refusedRows;
      const std::string width = "width " + std::to_string(_row.fields.size()) +
                                " below a header of width " + std::to_string(_table.columns.size());
      _refuse(_row.line, _place() + (_row.fault != nullptr ? _row.fault : width));
      return;
    }
    for (std::size_t i = 0; i < _row.fields.size(); ++i) {
      _table.columns[i].isNumeric ? _carryNumber(i) : _carryText(i);
    }
  }

  void _carryText(std::size_t index) {
    const int status = _carrier.carry(_row.fields[index]);
    if (status == kNoError) return;
    ++_table.columns[index].refused;
    _report(_row.line, _place(index) + messageText(status));
  }

  void _carryNumber(std::size_t index) {
    Column& column = _table.columns[index];
    const std::string& field = _row.fields[index];
    if (trimmed(field).empty()) {
      ++column.missing;
      return;
    }
    const StoredNumber number = storeNumber(field);
    const int status = number.status != kNoError ? number.status : _carrier.carry(number.stored);
    if (status != kNoError) {
      ++column.refused;
      _report(_row.line, _place(index) + messageText(status));
      return;
    }
    if (!number.exact) {
      ++column.rounded;
      _report(_row.line, _place(index) + "stored as " + decimalText(number.stored));
    }
    _count(column, number.stored);
  }

  static void _count(Column& column, const DskDecimal& value) {
    if (column.count == 0 || nomDecimalCompare(&value, &column.smallest) < 0) {
      column.smallest = value;
    }
    if (column.count == 0 || nomDecimalCompare(&value, &column.largest) > 0) {
      column.largest = value;
    }
    // The stored form holds 23 digits; the sum has room for the 46 that these may grow to, and
    // more.
    column.sum = column.sum + Decimal(value);
    ++column.count;
  }

  std::string _place() const { return "row " + std::to_string(_table.rows) + ": "; }

  std::string _place(std::size_t index) const {
    return "row " + std::to_string(_table.rows) + ", column " + std::to_string(index + 1) + ' ' +
           inQuotes(_table.columns[index].name) + ": " + inQuotes(_row.fields[index]) + ": ";
  }

  void _refuse(std::uint64_t line, const std::string& what) {
    _report(line, what + ": " + messageText(kInvalidParameterValue));
  }

  void _report(std::uint64_t line, const std::string& what) {
    _table.isComplete = false;
    _source.refusals << _source.name << ':' << line << ": " << what << '\n';
  }

  const TableSource& _source;
  Table _table;
  CsvRow _row;
  ParameterCarrier _carrier;
};

}  // namespace

Table readTable(const TableSource& source) {
  return TableReader(source).read();
}

}  // namespace nomtool
