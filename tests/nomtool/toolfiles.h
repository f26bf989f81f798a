// Runs of nomtool over files that a test writes and reads: a folder of the test's own, which goes
// away with it.
#ifndef NOMUTIL_TESTS_NOMTOOL_TOOLFILES_H
#define NOMUTIL_TESTS_NOMTOOL_TOOLFILES_H

#include "commandline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace nomtest {

class ToolFiles : public testing::Test {
 protected:
  using Outcome = std::tuple<int, std::string, std::string>;  // exit status, results, refusals

  ToolFiles() {
    std::filesystem::remove_all(_folder);
    std::filesystem::create_directories(_folder);
  }
  ~ToolFiles() override { std::filesystem::remove_all(_folder); }

  // The path of a file of that name.
  std::string path(const std::string& name) const { return (_folder / name).generic_string(); }

  void write(const std::string& name, const std::string& bytes) const {
    std::ofstream(path(name), std::ios::binary).write(bytes.data(), std::streamsize(bytes.size()));
  }
  std::string read(const std::string& name) const {
    std::ifstream file(path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  // The words of a line; "@name" is the path of a file, and in the texts that come back the path is
  // "@name" again.
  Outcome runTool(const std::string& line) const {
    std::istringstream words(line);
    std::vector<std::string> arguments;
    for (std::string word; words >> word;) {
      arguments.push_back(word[0] == '@' ? path(word.substr(1)) : word);
    }
    std::ostringstream out, err;
    const int status = nomtool::run(arguments, out, err);
    return {status, named(out.str()), named(err.str())};
  }

  // The bytes that a command makes of some bytes; "refused" when it does not end with 0.
  std::string made(const std::string& command, const std::string& bytes) const {
    write("in", bytes);
    const Outcome outcome = runTool(command + " @in -o @out");
    EXPECT_EQ(outcome, Outcome(0, "", ""));
    return std::get<0>(outcome) == 0 ? read("out") : "refused";
  }

  // What a command says of bytes that it has to refuse, behind their name. Neither the output that
  // was there before may change nor may anything be left beside it.
  std::string refusal(const std::string& command, const std::string& bytes) const {
    write("in", bytes);
    write("out", "before");
    const auto [status, results, refusals] = runTool(command + " @in -o @out");
    EXPECT_EQ(status, 1);
    EXPECT_EQ(read("out"), "before");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(_folder), {}), 2);
    return refusals.substr(std::min(refusals.size(), std::string("@in: offset ").size()));
  }

  // The program itself, between two files as its standard streams.
  std::string piped(const std::string& command, const std::string& bytes) const {
    write("in", bytes);
    const auto native = [](std::filesystem::path path) { return path.make_preferred().string(); };
    const std::string line = native(NOMTOOL_PATH) + " " + command + " < " + native(path("in")) +
                             " > " + native(path("piped"));
    EXPECT_EQ(std::system(line.c_str()), 0) << line;
    return read("piped");
  }

 private:
  std::string named(std::string text) const {
    const std::string folder = path("");
    for (std::size_t at; (at = text.find(folder)) != text.npos;) {
      text.replace(at, folder.size(), "@");
    }
    return text;
  }

  const std::filesystem::path _folder = [] {
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    return std::filesystem::path(NOMUTIL_BINARY_DIR) /
           (std::string("toolfiles_") + test.test_suite_name() + test.name());
  }();
};

}  // namespace nomtest

#endif  // NOMUTIL_TESTS_NOMTOOL_TOOLFILES_H
