// From delimited text to figures: rows and fields by the rules of RFC 4180; which of them are
// numbers, and what storing makes of these; the figures of tables, those of real data among them,
// and the report of what they leave out.
#include "tablefigures.h"

#include "csvreader.h"
#include "storednumber.h"

#include "nomos/testhooks.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace nomtool {
namespace {

// The rows of a text as "line:field|field|...;", with a '!' behind a faulty one.
std::string rowsOf(const std::string& text, char delimiter = ',') {
  std::istringstream input(text);
  CsvReader reader(input, delimiter);
  CsvRow row;
  std::string rows;
  while (reader.next(row)) {
    rows += std::to_string(row.line) + ':';
    for (const std::string& field : row.fields) rows += field + '|';
    rows += row.fault != nullptr ? "!;" : ";";
  }
  return rows;
}

TEST(CsvReader, SplitsAsRfc4180Has) {
  const struct {
    const char *text, *rows;
    char delimiter = ',';
  } kRows[] = {
      {"", ""},
      {"a,b\r\n\"a,b\",c\r\n\"a\r\nb\",c\r\nd,e\r\n", "1:a|b|;2:a,b|c|;3:a\r\nb|c|;5:d|e|;"},
      {"\"a\"\"b\",\"\"\"\"\n a , b \n5'6\",x", "1:a\"b|\"|;2: a | b |;3:5'6\"|x|;"},
      {",\n\n,,\n\"\"\n\"\",\"\"", "1:||;2:|;3:|||;4:|;5:||;"},
      {"a\rb,c\r", "1:a\rb|c\r|;"},
      {"a;b,c\n", "1:a|b,c|;", ';'},
      {"\xEF\xBB\xBF\"a\"\t\"b\tc\"", "1:a|b\tc|;", '\t'},
      {"\xEF\xBB", "1:\xEF\xBB|;"},
      // What the grammar has no room for; the row after it is read as usual.
      {"\"a\"b,c\n\"a\" ,c\nd\n\"b,\nc", "1:ab|c|!;2:a |c|!;3:d|;4:b,\nc|!;"},
  };
  for (const auto& row : kRows) EXPECT_EQ(rowsOf(row.text, row.delimiter), row.rows) << row.text;
}

TEST(CsvReader, KeepsNoMoreThan16MiBOfARow) {
  constexpr std::size_t kMost = 16u << 20;
  std::istringstream input('"' + std::string(kMost, 'x') + "y\"\nb");
  CsvReader reader(input, ',');
  CsvRow row;
  EXPECT_TRUE(reader.next(row) && row.fault != nullptr && row.fields[0].size() == kMost);
  EXPECT_TRUE(reader.next(row) && row.fault == nullptr && row.fields[0] == "b");
}

// What a text is stored as, with "rounded " before it when that is less than the text says; or the
// status that refuses it.
std::string outcomeOf(const std::string& text) {
  const StoredNumber number = storeNumber(text);
  if (number.status != 0) return "status " + std::to_string(number.status);
  return (number.exact ? "" : "rounded ") + decimalText(number.stored);
}

TEST(StoreNumber, RefusesWhatIsNoNumberAndTellsWhatIsRounded) {
  const std::string zeros75(75, '0');
  const std::pair<std::string, std::string> kRows[] = {
      {" \t+12.50 ", "12.50"},
      {".5", "0.5"},
      {"5.", "5"},
      {"99999999999999999999999", "99999999999999999999999"},
      // One place too many, rounded half away from zero.
      {"-1.123456789012345678901235", "rounded -1.12345678901234567890124"},
      {"9876543210987654321098.76", "rounded 9876543210987654321098.8"},
      // Places that are zeros may go. Aligning the two sides takes all 100 digits.
      {"5.000000000000000000000000" + zeros75, "5.00000000000000000000000"},
      {"-5.000000000000000000000000" + zeros75, "-5.00000000000000000000000"},
      {"5.0000000000000000000000000" + zeros75, "status 1422"},
      {"100000000000000000000000", "status 1422"},
      {std::string("1\0", 2), "status 1002"},
  };
  for (const auto& [text, outcome] : kRows) EXPECT_EQ(outcomeOf(text), outcome) << text;
  for (const std::string text : {"", " ", ".", "-", "+-1", "1 2", "1.2.3", "12abc", "0x10", "1,5",
                                 "1e5", "2012-01-01", "NaN", "1\n"}) {
    EXPECT_EQ(outcomeOf(text), "status 1002") << text;
  }
}

TEST(OneLine, KeepsUtf8CharactersWhole) {
  std::string text = "\xC3\xA9\n\t", shown = "\xC3\xA9??";
  for (int i = 3; i < 200; ++i) text += "\xC3\xA9";
  for (int i = 3; i < 60; ++i) shown += "\xC3\xA9";
  EXPECT_EQ(oneLine(text), shown + "...");
}

// The figures are what Python's decimal module prints:
//   python3 -c '
//   import csv, sys
//   from decimal import *
//   getcontext().prec = 90
//   for path in sys.argv[1:]:
//     rows = list(csv.reader(open(path, newline="", encoding="utf-8")))
//     for name, *fields in zip(*rows):
//       try: values = [Decimal(f) for f in fields]
//       except InvalidOperation: continue
//       mean = (sum(values) / len(values)).quantize(Decimal("1e-23"), ROUND_DOWN)
//       print(name, len(values), min(values), max(values), sum(values), mean)
//   ' examples/data/seattle-weather.csv examples/data/airports.csv
TEST(TableFigures, AgreeWithAnotherProgramOnRealData) {
  std::ostringstream figures, refusals;
  for (const char* path : {NOMTOOL_DATA "/seattle-weather.csv", NOMTOOL_DATA "/airports.csv"}) {
    std::ifstream input(path, std::ios::binary);
    for (const Column& column : readTable({input, path, ',', {}, refusals}).columns) {
      if (!column.isNumeric) continue;
      figures << column.name << ' ' << column.count << ' ' << decimalText(column.smallest) << ' '
              << decimalText(column.largest) << ' ' << decimalText(column.sum) << ' '
              << decimalText(column.mean()) << '\n';
    }
  }
  EXPECT_EQ(refusals.str(), "");
  EXPECT_EQ(
      figures.str(),
      "precipitation 1461 0.0 55.9 4426.0 3.02943189596167008898015\n"
      "temp_max 1461 -1.6 35.6 24017.5 16.43908281998631074606433\n"
      "temp_min 1461 -7.1 18.3 12031.0 8.23477070499657768651608\n"
      "wind 1461 0.4 9.5 4735.3 3.24113620807665982203969\n"
      "latitude 3376 7.367222 71.2854475 135163.30375977 40.03652362552428909952606\n"
      "longitude 3376 -176.6460306 145.621384 -332945.18780815 -98.62120491947571090047393\n");
}

// The numeric columns as "name:count/missing/refused/rounded=sum;", and what is refused.
std::pair<std::string, std::string> figuresOf(const std::string& text,
                                              const std::vector<std::string>& chosen = {}) {
  std::istringstream input(text);
  std::ostringstream columns, refusals;
  const Table table = readTable({input, "t", ',', chosen, refusals});
  for (const Column& column : table.columns) {
    if (!column.isNumeric) continue;
    columns << column.name << ':' << column.count << '/' << column.missing << '/' << column.refused
            << '/' << column.rounded << '=' << decimalText(column.sum) << ';';
  }
  EXPECT_EQ(table.isComplete, refusals.str().empty()) << text;
  return {columns.str(), refusals.str()};
}

TEST(TableFigures, AreThoseOfColumnsWithHalfOrMoreNumbers) {
  const std::pair<const char*, const char*> kRows[] = {
      {"a,b,c\nn/a,x,\n2,1,\n,y,\n", "a:1/1/1/0=2;"},
      {"a\n1e5\n2e5\n", "a:0/0/2/0=0;"},
      {"a\nx\n\n1\ny\n", ""},
      {"a,a\n1,2\n", "a:1/0/0/0=1;a:1/0/0/0=2;"},
      {"a,b\n1,2,3\n1,2,3\nx,2\n", "b:1/0/0/0=2;"},  // rows of the wrong width do not count
      {"a,v\nx,\n\n\r\ny,\"\"\nz, \nx,5\n", "v:1/3/0/0=5;"},  // blank lines are no rows
      {"v\n1\n\n", "v:1/1/0/0=1;"},                           // but where a row is one field
      {"v\n99999999999999999999999\n99999999999999999999999\n0.00000000000000000000001\n",
       "v:3/0/0/0=199999999999999999999998.00000000000000000000001;"},
  };
  for (const auto& [text, columns] : kRows) EXPECT_EQ(figuresOf(text).first, columns) << text;
  EXPECT_EQ(figuresOf("a,b\n1,x\n", {"b"}).first, "b:0/0/1/0=0;");
  EXPECT_THROW(figuresOf("a,b\n1,x\n", {"b", "c"}), std::invalid_argument);
}

TEST(TableFigures, ReportWhateverTheyLeaveOut) {
  const std::string refused = ": Invalid parameter value (1002)\n";
  const std::pair<const char*, std::string> kRows[] = {
      {"n,v\n1,2\n\n2,12abc\n", "t:4: row 2, column 2 \"v\": \"12abc\"" + refused},
      {"v\n2\n1e5\n", "t:3: row 2, column 1 \"v\": \"1e5\"" + refused},
      {"v\n0.000000000000000000000006\n",
       "t:2: row 1, column 1 \"v\": \"0.000000000000000000000006\": "
       "stored as 0.00000000000000000000001\n"},
      {"a,\"b\nb\"\n1,2\n1,2,3\n1\n", "t:4: row 2: width 3 below a header of width 2" + refused +
                                          "t:5: row 3: width 1 below a header of width 2" +
                                          refused},
      {"a,b\n\"1\"2,3\n1,\"2\n", "t:2: row 1: text follows a closing quote" + refused +
                                     "t:3: row 2: a quoted field is not closed" + refused},
      {"", "t:1: there is no header row" + refused},
      {"\"a\nb", "t:1: a quoted field is not closed" + refused},
  };
  for (const auto& [text, refusals] : kRows) EXPECT_EQ(figuresOf(text).second, refusals) << text;
}

TEST(TableFigures, ReportATextThatDoesNotArrive) {
  // The first allocation is the text's object, without which an empty text arrives.
  const std::pair<std::uint64_t, std::string> kRows[] = {
      {1, "Invalid parameter value (1002)\n"}, {2, "A memory allocation request failed (1448)\n"}};
  for (const auto& [allocation, text] : kRows) {
    nosFailAllocation(allocation);
    EXPECT_EQ(figuresOf("v,t\n1,abc\n").second, "t:2: row 1, column 2 \"t\": \"abc\": " + text);
    nosFailAllocation(0);
  }
}

}  // namespace
}  // namespace nomtool
