// The reader of message files: its rules line by line. The fuzz program adds laws on any bytes.
#include "messages/messagefile.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace nomutil::messages {
namespace {

// The message lines of a file as "number=text;".
std::string readLines(const std::string& bytes) {
  std::string lines;
  MessageFileReader reader(bytes);
  for (MessageLine line; reader.next(line);) {
    lines += std::to_string(line.number) + '=' + std::string(line.text) + ';';
  }
  return lines;
}

TEST(MessageFile, ReadsLinesByItsGrammar) {
  const std::tuple<std::string, std::string, const char*> kRows[] = {
      {"\n\r\n \t\v\f\r\n", "", "blank lines"},
      {"// 1 \"a\"\n/* 2 \"b\" */ 3 \"c\"\n \t//\n4 \"d\"", "4=d;", "a comment ends its line"},
      {"/ 5 \"e\"\n*/ 6 \"f\"\n", "0=e;0=f;", "half a mark is no comment"},
      {"7 \"g\"\r\n8\"h\"", "7=g;8=h;", "CR LF; a last line without LF"},
      {"9 \"a \"quoted\" word\" // end\n", "9=a \"quoted\" word;", "first to last quote"},
      {"10\n11 \"\n12 \"\"\n", "10=;11=;12=;", "lines that give no text"},
      {" \t+13 \"i\"\n-14 \"j\"\n", "13=i;-14=j;", "leading blanks and signs"},
      {"- 15 \"k\"\n+-16 \"l\"\nx17 \"m\"\n", "0=k;0=l;0=m;", "no digits, no number"},
      {"2147483648 \"a\"\n-2147483649 \"b\"\n", "2147483647=a;-2147483648=b;", "clamped"},
      {"99999999999999999999999999999999 \"n\"\n", "2147483647=n;", "beyond any integer"},
      {std::string("18 \"o\0p\"\n19 \"q\"\n", 16), "18=;19=q;", "NUL ends its line"},
  };
  for (const auto& [bytes, lines, note] : kRows) EXPECT_EQ(readLines(bytes), lines) << note;
}

}  // namespace
}  // namespace nomutil::messages
