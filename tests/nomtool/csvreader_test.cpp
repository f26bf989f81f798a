// Rows and fields of delimited text, by the rules of RFC 4180.
#include "csvreader.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

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
      {"a,b\r\nc,d\r\n", "1:a|b|;2:c|d|;"},
      {"\"a,b\",c", "1:a,b|c|;"},
      {"\"a\r\nb\",c\r\nd,e", "1:a\r\nb|c|;3:d|e|;"},
      {"\"a\"\"b\",\"\"\"\"", "1:a\"b|\"|;"},
      {" a , b ", "1: a | b |;"},
      {",\n\n,,", "1:||;2:|;3:|||;"},
      {"\"\"\n\"\",\"\"", "1:|;2:||;"},
      {"a\rb,c\r", "1:a\rb|c\r|;"},
      {"5'6\",x", "1:5'6\"|x|;"},
      {"a;b,c\n", "1:a|b,c|;", ';'},
      {"a\t\"b\tc\"", "1:a|b\tc|;", '\t'},
      {"\xEF\xBB\xBF\"a\",b\n", "1:a|b|;"},
      {"\xEF\xBB", "1:\xEF\xBB|;"},
      // What the grammar has no room for; the row after it is read as usual.
      {"\"a\"b,c\nd", "1:ab|c|!;2:d|;"},
      {"\"a\" ,c\nd", "1:a |c|!;2:d|;"},
      {"a\n\"b,\nc", "1:a|;2:b,\nc|!;"},
  };
  for (const auto& row : kRows) EXPECT_EQ(rowsOf(row.text, row.delimiter), row.rows) << row.text;
}

TEST(CsvReader, KeepsNoMoreThan16MiBOfARow) {
  // Compared without EXPECT_EQ, which would print the 16 MiB.
  const std::string kept(16u << 20, 'x');
  EXPECT_TRUE(rowsOf('"' + kept + "y\"\nb") == "1:" + kept + "|!;2:b|;");
}

}  // namespace
}  // namespace nomtool
