// The figures of tables, those of real data among them, and the report of what they leave out.
#include "tablefigures.h"

#include "storednumber.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

namespace nomtool {
namespace {

struct Read {
  Table table;
  std::string refusals;
};

Read readText(const std::string& text, const std::vector<std::string>& chosen = {}) {
  std::istringstream input(text);
  std::ostringstream refusals;
  Table table = readTable({input, "t", ',', chosen, refusals});
  return {table, refusals.str()};
}

std::string numericColumns(const Table& table) {
  std::string names;
  for (const Column& column : table.columns) names += column.isNumeric ? column.name + ' ' : "";
  return names;
}

// The figures are those of Python's decimal module:
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
  const struct {
    const char* file;
    const char* column;
    std::uint64_t count;
    const char* smallest;
    const char* largest;
    const char* sum;
    const char* mean;
  } cases[] = {
      {"seattle-weather.csv", "precipitation", 1461, "0.0", "55.9", "4426.0",
       "3.02943189596167008898015"},
      {"seattle-weather.csv", "temp_max", 1461, "-1.6", "35.6", "24017.5",
       "16.43908281998631074606433"},
      {"seattle-weather.csv", "temp_min", 1461, "-7.1", "18.3", "12031.0",
       "8.23477070499657768651608"},
      {"seattle-weather.csv", "wind", 1461, "0.4", "9.5", "4735.3", "3.24113620807665982203969"},
      {"airports.csv", "latitude", 3376, "7.367222", "71.2854475", "135163.30375977",
       "40.03652362552428909952606"},
      {"airports.csv", "longitude", 3376, "-176.6460306", "145.621384", "-332945.18780815",
       "-98.62120491947571090047393"},
  };
  std::string expectedColumns;
  std::string columns;
  for (const auto& c : cases) {
    std::ifstream input(std::string(NOMTOOL_DATA "/") + c.file, std::ios::binary);
    std::ostringstream refusals;
    const Table table = readTable({input, c.file, ',', {}, refusals});
    EXPECT_TRUE(table.isComplete);
    EXPECT_EQ(refusals.str(), "");
    for (const Column& column : table.columns) {
      if (column.name != c.column) continue;
      columns += column.name + ' ';
      EXPECT_EQ(column.count, c.count);
      EXPECT_EQ(decimalText(column.smallest), c.smallest) << c.column;
      EXPECT_EQ(decimalText(column.largest), c.largest) << c.column;
      EXPECT_EQ(decimalText(column.sum), c.sum) << c.column;
      EXPECT_EQ(decimalText(column.mean()), c.mean) << c.column;
    }
    expectedColumns += std::string(c.column) + ' ';
  }
  EXPECT_EQ(columns, expectedColumns);
}

TEST(TableFigures, SumGoesBeyondTheStoredForm) {
  const Read read =
      readText("v\n99999999999999999999999\n99999999999999999999999\n0.00000000000000000000001\n");
  EXPECT_EQ(decimalText(read.table.columns[0].sum),
            "199999999999999999999998.00000000000000000000001");
  EXPECT_TRUE(read.table.isComplete);
}

TEST(TableFigures, NumericColumnsAreThoseWithHalfOrMoreNumbers) {
  const struct {
    const char* text;
    const char* numeric;
  } cases[] = {
      {"a,b,c\n1,x,\n2,y,\n", "a "},
      {"a,b\nn/a,x\n2,1\n,y\n", "a "},
      {"a\n1e5\n2e5\n", "a "},
      {"a\nx\n\n1\ny\n", ""},
      {"a,a\n1,2\n", "a a "},
      {"a\n", ""},
      {"a,b\n1,2,3\n1,2,3\nx,2\n", "b "},  // rows of the wrong width do not count
  };
  for (const auto& c : cases)
    EXPECT_EQ(numericColumns(readText(c.text).table), c.numeric) << c.text;
  EXPECT_EQ(numericColumns(readText("a,b\n1,x\n", {"b"}).table), "b ");
  EXPECT_THROW(readText("a,b\n1,x\n", {"b", "c"}), std::invalid_argument);
}

TEST(TableFigures, EmptyFieldsAreMissingAndBlankLinesAreNot) {
  const struct {
    const char* text;
    std::uint64_t missing;  // in the last column
  } cases[] = {
      {"a,v\n1,\n2,\"\"\n3, \n4,5\n5,6\n6,7\n", 3}, {"a,v\n1,2\n\n\r\n", 0}, {"v\n1\n\n", 1}};
  for (const auto& c : cases) EXPECT_EQ(readText(c.text).table.columns.back().missing, c.missing);
}

TEST(TableFigures, ReportWhateverTheyLeaveOut) {
  const struct {
    const char* text;
    const char* refusals;
  } cases[] = {
      {"a,b\n1,x\n", ""},
      {"a,b\n\n1,x\n\r\n", ""},
      {"n,v\n1,\n2,3\n", ""},
      {"n,v\n1,2\n\n2,12abc\n",
       "t:4: row 2, column 2 \"v\": \"12abc\": Invalid parameter value (1002)\n"},
      {"v\n2\n1e5\n", "t:3: row 2, column 1 \"v\": \"1e5\": Invalid parameter value (1002)\n"},
      {"v\n-100000000000000000000000\n",
       "t:2: row 1, column 1 \"v\": \"-100000000000000000000000\": "
       "Result of expression overflows Decimal precision (1422)\n"},
      {"v\n0.000000000000000000000006\n",
       "t:2: row 1, column 1 \"v\": \"0.000000000000000000000006\": "
       "stored as 0.00000000000000000000001\n"},
      {"a,\"b\nb\"\n1,2\n1,2,3\n1\n",
       "t:4: row 2: width 3 below a header of width 2: Invalid parameter value (1002)\n"
       "t:5: row 3: width 1 below a header of width 2: Invalid parameter value (1002)\n"},
      {"a,b\n\"1\"2,3\n1,\"2\n",
       "t:2: row 1: text follows a closing quote: Invalid parameter value (1002)\n"
       "t:3: row 2: a quoted field is not closed: Invalid parameter value (1002)\n"},
      {"", "t:1: there is no header row: Invalid parameter value (1002)\n"},
      {"\"a\nb", "t:1: a quoted field is not closed: Invalid parameter value (1002)\n"},
  };
  for (const auto& c : cases) {
    const Read read = readText(c.text);
    EXPECT_EQ(read.refusals, c.refusals) << c.text;
    EXPECT_EQ(read.table.isComplete, read.refusals.empty()) << c.text;
    for (const Column& column : read.table.columns) {
      if (!column.isNumeric) continue;
      EXPECT_EQ(column.count + column.missing + column.refused,
                read.table.rows - read.table.refusedRows)
          << c.text;
    }
  }
}

}  // namespace
}  // namespace nomtool
