// Tables of tests as words, several rows in a line of text. "0{100}" stands for a hundred zeros.
#ifndef NOMUTIL_TESTS_ROWS_H
#define NOMUTIL_TESTS_ROWS_H

#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

namespace nomtest {

// Text with counts behind its characters, written out: "10{3}.9{2}" is "1000.99".
inline std::string expand(const std::string& text) {
  std::string all;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool counted = text[i] == '{';
    all.append(counted ? std::stoul(text.substr(i + 1)) - 1 : 1, text[counted ? i - 1 : i]);
    if (counted) i = text.find('}', i);
  }
  return all;
}

using Row = std::vector<std::string>;

// Expects of each row of a table, `width` words each, that check(row) gives its last word.
template <class Check>
void expectRows(std::size_t width, Check check, const std::string& table) {
  std::istringstream words(table);
  Row row;
  for (std::string word; words >> word;) {
    row.push_back(expand(word));
    if (row.size() < width) continue;
    EXPECT_EQ(check(row), row.back()) << "for " << testing::PrintToString(row);
    row.clear();
  }
  EXPECT_TRUE(row.empty()) << "the last row is not full";
}

}  // namespace nomtest

#endif  // NOMUTIL_TESTS_ROWS_H
