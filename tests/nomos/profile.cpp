// Configuration files: one table of cases that every backend's reader answers alike.

#include "nomos/profile.h"

#include "rows.h"
#include "temppath.h"

#include <gtest/gtest.h>
#include <algorithm>
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

// What stands behind "[First]", and the value: '_' for a blank, '/' for an end of line, "-" for
// nothing.
TEST_F(Profile, ReadsEveryFormOfAValue) {
  const auto text = [](std::string word) {
    std::replace(word.begin(), word.end(), '_', ' ');
    std::replace(word.begin(), word.end(), '/', '\n');
    return word == "-" ? "" : word;
  };
  const auto check = [&](const nomtest::Row& row) {
    write("[First]\n" + text(row[0]));
    EXPECT_EQ(read(), text(row[1])) << row[0];
    return row[1];
  };
  nomtest::expectRows(2, check, R"(
      key=value/ value     /;_a_comment/KEY=no_end no_end   __Key__=__both_sides__/ both_sides
      k=1/__key=no_continuation/ no_continuation   key="__kept_blanks_"/ __kept_blanks_
      key='one_pair'/ one_pair    key="open/ "open                 key="a'/ "a'
      key=""x""/ "x"              key=""/ -      key=/ -           key=a=b/ a=b
      key=C:\Data\x;y/ C:\Data\x;y               key=text_;_not_this/ text
      key=;_comment/ -            key=_;comment/ -                 key="_a_;_b"/ _a
      key='_a'_;_b/ _a            ;key=1/ none   #key=1/ none      #_k=no_comment:_[x]/key=1 1
      key:ends=1/ none            key=first/key=second/ first      [Second_part]/key=1/[FIRST]/key=2/ none
      k=1/[Second_part]/key=1/[FIRST]/key=2/ none)");
  // Words, so that blanks stand wherever a reader might cut the line.
  std::string words;
  for (unsigned i = 0; i < 400; ++i) words += "vv ";
  const std::string some = words.substr(0, 299);
  write("[First]\nkey=" + some + " ; " + some + "\n;" + some);
  EXPECT_EQ(read(), some);
  write("[First]\nkey=" + words);
  EXPECT_EQ(read(), words.substr(0, 1023));
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
  // 1 true, 0 false, 2 the default.
  const std::pair<const char*, int> rows[] = {
      {"1", 1},  {"On", 1},    {"YES", 1},     {"\"true\"", 1}, {"0", 0}, {"oFF", 0},
      {"no", 0}, {"FALSE", 0}, {"perhaps", 2}, {"", 2},         {"2", 2}};
  for (const auto& [value, expected] : rows) {
    write(std::string("[First]\nkey=") + value);
    EXPECT_EQ(readBoolean(true), expected != 0) << value;
    EXPECT_EQ(readBoolean(false), expected == 1) << value;
  }
}

}  // namespace
