// The reader of message files: its rules line by line, the bytes of the worked example, and
// agreement with a second reader on random bytes.
#include "messages/messagefile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace nomutil::messages {
namespace {

using Lines = std::vector<std::pair<int, std::string>>;

Lines readLines(std::string_view bytes) {
  Lines lines;
  MessageFileReader reader(bytes);
  for (MessageLine line; reader.next(line);) {
    lines.emplace_back(line.number, std::string(line.text));
  }
  return lines;
}

TEST(MessageFile, ReadsLinesByItsGrammar) {
  const struct {
    std::string bytes;
    Lines lines;
    const char* note;
  } kRows[] = {
      {"", {}, "no bytes"},
      {"\n\r\n \t\v\f\r\n", {}, "blank lines"},
      {"// 1 \"a\"\n/* 2 \"b\" */ 3 \"c\"\n \t//\n4 \"d\"", {{4, "d"}}, "a comment ends its line"},
      {"/ 5 \"e\"\n*/ 6 \"f\"\n", {{0, "e"}, {0, "f"}}, "half a mark is no comment"},
      {"7 \"g\"\r\n8\"h\"", {{7, "g"}, {8, "h"}}, "CR LF; a last line without LF"},
      {"9 \"a \"quoted\" word\" // end\n", {{9, "a \"quoted\" word"}}, "first to last quote"},
      {"10\n11 \"\n12 \"\"\n", {{10, ""}, {11, ""}, {12, ""}}, "lines that give no text"},
      {" \t+13 \"i\"\n-14 \"j\"\n", {{13, "i"}, {-14, "j"}}, "leading blanks and signs"},
      {"- 15 \"k\"\n+-16 \"l\"\nx17 \"m\"\n",
       {{0, "k"}, {0, "l"}, {0, "m"}},
       "no digits, no number"},
      {"2147483647 \"a\"\n2147483648 \"b\"\n-2147483648 \"c\"\n-2147483649 \"d\"\n",
       {{2147483647, "a"}, {2147483647, "b"}, {-2147483647 - 1, "c"}, {-2147483647 - 1, "d"}},
       "clamped to 32 bits"},
      {"99999999999999999999999999999999 \"n\"\n", {{2147483647, "n"}}, "beyond any integer"},
      {std::string("18 \"o\0p\"\n19 \"q\"\n", 16), {{18, ""}, {19, "q"}}, "NUL ends its line"},
      {"20 \"\xE9\xFF\"\n", {{20, "\xE9\xFF"}}, "bytes above 7F stand as they are"},
  };
  for (const auto& row : kRows) EXPECT_EQ(readLines(row.bytes), row.lines) << row.note;
}

// The same grammar by way of the C library: strtoll skips the blanks and clamps more widely.
Lines readWithCLibrary(const std::string& bytes) {
  Lines lines;
  std::istringstream stream(bytes);
  for (std::string line; std::getline(stream, line);) {
    line = line.c_str();
    const std::size_t start = line.find_first_not_of(" \t\v\f\r");
    if (start == line.npos || line.compare(start, 2, "//") == 0) continue;
    if (line.compare(start, 2, "/*") == 0) continue;
    const long long number = std::strtoll(line.c_str(), nullptr, 10);
    const auto first = line.find('"');
    const auto last = line.rfind('"');
    const std::string text = first == last ? "" : line.substr(first + 1, last - first - 1);
    lines.emplace_back(static_cast<int>(std::clamp(number, -0x80000000ll, 0x7FFFFFFFll)), text);
  }
  return lines;
}

TEST(MessageFile, AgreesWithASecondReaderOnRandomBytes) {
  constexpr unsigned kSeed = 20240229;
  std::mt19937 random(kSeed);
  const std::string alphabet = std::string("0179+-\"\"\n\n\r\t\v //**ax\xE9") + '\0';
  for (int file = 0; file < 20000; ++file) {
    std::string bytes(random() % 40, '\0');
    for (char& byte : bytes) byte = alphabet[random() % alphabet.size()];
    ASSERT_EQ(readLines(bytes), readWithCLibrary(bytes))
        << "seed " << kSeed << ", file " << file << ": " << testing::PrintToString(bytes);
  }
}

}  // namespace
}  // namespace nomutil::messages
