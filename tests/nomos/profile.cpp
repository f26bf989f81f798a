// Configuration files: one table of cases that every backend's reader answers alike.

#include "nomos/profile.h"

#include "temppath.h"

#include <gtest/gtest.h>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

namespace {

// The file is named without its folder: the system's own calls would look in a folder of theirs.
class Profile : public testing::Test {
 protected:
  Profile() { std::filesystem::current_path(std::filesystem::temp_directory_path()); }
  ~Profile() override { std::filesystem::remove(_path); }

  void write(const std::string& content) { std::ofstream(_path) << content; }

  std::string read(unsigned size = 1200) {
    char buffer[1201];
    buffer[size] = '#';
    const unsigned stored =
        getIniFileStringParam("First", "key", "none", buffer, size, _path.c_str());
    EXPECT_EQ(buffer[size], '#') << "beyond the room";
    return size == 0 || stored == std::strlen(buffer) ? std::string(buffer, stored) : "(length)";
  }

  bool readBoolean(bool otherwise) {
    return getIniFileBooleanParam("First", "key", otherwise, _path.c_str());
  }

  const std::string _path = nomtest::tempPath(".ini").filename().string();
};

TEST_F(Profile, ReadsEveryFormOfAValue) {
  // Words, so that blanks stand wherever a reader might cut the line.
  std::string words;
  for (unsigned i = 0; i < 400; ++i) words += "vv ";
  const std::string some = words.substr(0, 299);
  const std::pair<std::string, std::string> rows[] = {
      // behind "[First]\n"
      {"key=value\n", "value"},
      {"\n; a comment\nKEY=no end", "no end"},
      {"  Key  =  both sides  \n", "both sides"},
      {"k=1\n  key=no continuation\n", "no continuation"},
      {"key=\"  kept blanks \"\n", "  kept blanks "},
      {"key='one pair'\n", "one pair"},
      {"key=\"open\n", "\"open"},
      {"key=\"a'\n", "\"a'"},
      {"key=\"\"x\"\"\n", "\"x\""},
      {"key=\"\"\n", ""},
      {"key=\n", ""},
      {"key=a=b\n", "a=b"},
      {"key=C:\\Data\\x;y\n", "C:\\Data\\x;y"},
      {"key=text ; not this\n", "text"},
      {"key=; comment\n", ""},
      {"key= ;comment\n", ""},
      {"key=\" a ; b\"\n", " a"},
      {"key=' a' ; b\n", " a"},
      {";key=1\n", "none"},
      {"#key=1\n", "none"},
      {"# k=no comment: [x]\nkey=1", "1"},
      {"key:ends=1\n", "none"},
      {"key=first\nkey=second\n", "first"},
      {"key=" + some + " ; " + some + "\n;" + some, some},
      {"key=" + words, words.substr(0, 1023)},
      {"k=1\n[Second part]\nkey=1\n[FIRST]\nkey=2\n", "none"},
      {"[Second part]\nkey=1\n", "none"}};
  for (const auto& [content, value] : rows) {
    write("[First]\n" + content);
    EXPECT_EQ(read(), value) << content;
  }
  write("[second]\n[FIRST]\nkey=later\n");
  EXPECT_EQ(read(), "later");
}

TEST_F(Profile, CutsAtTheRoomAndGivesTheDefaultWithoutAFile) {
  EXPECT_EQ(read(), "none");
  EXPECT_EQ(read(4), "non");
  EXPECT_TRUE(readBoolean(true));
  write("[First]\nkey=\" value\"");
  for (unsigned size = 0; size < 9; ++size) {
    EXPECT_EQ(read(size), std::string(" value").substr(0, size - (size > 0))) << size;
  }
}

TEST_F(Profile, ReadsBooleans) {
  const std::pair<const char*, int> rows[] = {
      // 1 true, 0 false, 2 the default
      {"1", 1},  {"On", 1},    {"YES", 1},     {"\"true\"", 1}, {"0", 0}, {"oFF", 0},
      {"no", 0}, {"FALSE", 0}, {"perhaps", 2}, {"", 2},         {"2", 2}};
  for (const auto& [value, expected] : rows) {
    write(std::string("[First]\nkey=") + value);
    EXPECT_EQ(readBoolean(true), expected != 0) << value;
    EXPECT_EQ(readBoolean(false), expected == 1) << value;
  }
}

}  // namespace
