// The figures of tables, those of real data among them, and the report of what they leave out.
#include "tablefigures.h"

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
      {"a,b,c\n1,x,\n2,y,\n", "a:2/0/0/0=3;"},
      {"a,b\nn/a,x\n2,1\n,y\n", "a:1/1/1/0=2;"},
      {"a\n1e5\n2e5\n", "a:0/0/2/0=0;"},
      {"a\nx\n\n1\ny\n", ""},
      {"a,a\n1,2\n", "a:1/0/0/0=1;a:1/0/0/0=2;"},
      {"a,b\n1,2,3\n1,2,3\nx,2\n", "b:1/0/0/0=2;"},  // rows of the wrong width do not count
      {"a,v\nx,\ny,\"\"\nz, \nx,5\n", "v:1/3/0/0=5;"},
      {"a,v\nx,2\n\n\r\n", "v:1/0/0/0=2;"},  // blank lines are no rows
      {"v\n1\n\n", "v:1/1/0/0=1;"},          // but where a row is one field
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
      {"a,b\n\n1,x\n\r\n", ""},
      {"n,v\n1,\n2,3\n", ""},
      {"n,v\n1,2\n\n2,12abc\n", "t:4: row 2, column 2 \"v\": \"12abc\"" + refused},
      {"v\n2\n1e5\n", "t:3: row 2, column 1 \"v\": \"1e5\"" + refused},
      {"v\n-100000000000000000000000\n",
       "t:2: row 1, column 1 \"v\": \"-100000000000000000000000\": "
       "Result of expression overflows Decimal precision (1422)\n"},
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
