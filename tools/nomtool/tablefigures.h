// The figures of the numeric columns of a delimited text, computed while it streams by.
#ifndef NOMTOOL_TABLEFIGURES_H
#define NOMTOOL_TABLEFIGURES_H

#include "sys/decimals.h"

#include <cstddef>
#include <cstdint>
#include <istream>
#include <ostream>
#include <string>
#include <vector>

namespace nomtool {

struct Column {
  std::string name;
  bool isNumeric = false;
  // Of all columns:
  std::uint64_t filled = 0;   // fields that are not empty
  std::uint64_t numbers = 0;  // fields that are numbers, with an exponent or without
  // Of the numeric columns: every field of a row that was taken is in count, missing or refused.
  std::uint64_t count = 0;    // stored
  std::uint64_t missing = 0;  // empty or blank
  std::uint64_t refused = 0;  // no number, outside the stored form, or, also of a text, lost on
                              // its way through parameters
  std::uint64_t rounded = 0;  // of count: stored with fewer places than the text has
  DskDecimal smallest{};      // with count > 0
  DskDecimal largest{};
  Decimal sum = Decimal::Zero;

  Decimal mean() const { return sum.realDivide(Decimal(count)); }
};

struct Table {
  std::vector<Column> columns;
  std::uint64_t rows = 0;         // below the header
  std::uint64_t refusedRows = 0;  // of rows: of the wrong width or not well formed
  std::uint64_t carried = 0;      // numbers and texts that arrived through parameters
  bool isComplete = true;         // nothing was refused or rounded
};

// What to read, and how its name and what is refused in it are shown.
struct TableSource {
  std::istream& input;  // seekable: the text is read twice, first to find the numeric columns
  std::string name;
  char delimiter = ',';
  std::vector<std::string> chosen;  // names of the numeric columns; empty: found by their fields
  std::ostream& refusals;
};

// Throws std::ios_base::failure when reading fails, std::invalid_argument when there is no column
// of a chosen name.
Table readTable(const TableSource& source);

}  // namespace nomtool

#endif  // NOMTOOL_TABLEFIGURES_H
