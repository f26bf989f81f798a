// Configuration files: one table of cases that every backend's reader answers alike.

#include "nomos/profile.h"

#include "nomos/testhooks.h"

#include <gtest/gtest.h>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

namespace fs = std::filesystem;

const std::string kLongValue(300, 'v');

class Profile : public testing::Test {
 protected:
  Profile() : _path((fs::temp_directory_path() / "nomos_profile_test.ini").string()) {
    std::ofstream(_path) << "; a comment\n"
                            "[First]\n"
                            "plain=value\n"
                            "  Blanks  =  both sides  \n"
                            "Quoted=\"  kept blanks \"\n"
                            "single='one pair'\n"
                            "openQuote=\"open\n"
                            "two=\"\"\n"
                            "none=\n"
                            "equals=a=b\n"
                            "path=C:\\Data\\x;y\n"
                            "comment=text ; not this\n"
                            ";hidden=1\n"
                            "#sign=number\n"
                            "colon:ends=no key\n"
                            "# no=comment: [x]\n"
                            "all=; comment\n"
                            "blankAll= ;comment\n"
                            "inQuotes=\" a ; b\"\n"
                            "behindQuotes=' a' ; b\n"
                            "pairs=\"\"x\"\"\n"
                            "mixed=\"a'\n"
                            "  indented=no continuation\n"
                            "twice=first\n"
                            "twice=second\n"
                            "zero=0\n"
                            "one=1\n"
                            "long="
                         << kLongValue << " ; " << kLongValue << "\n;" << kLongValue
                         << "\n"
                            "\n"
                            "[second part]\n"
                            "plain=other\n"
                            "on=On\n"
                            "yes=YES\n"
                            "true=\"true\"\n"
                            "off=oFF\n"
                            "no=no\n"
                            "false=FALSE\n"
                            "maybe=perhaps\n"
                            "blank=\n"
                            "[FIRST]\n"
                            "late=no longer\n"
                            "[end]\n"
                            "last=without an end of line";
  }
  ~Profile() override { fs::remove(_path); }

  std::string read(const char* section, const char* key, unsigned size = 1000) {
    char buffer[1001];
    std::memset(buffer, '#', sizeof buffer);
    const unsigned stored =
        getIniFileStringParam(section, key, "default", buffer, size, _path.c_str());
    EXPECT_EQ(buffer[size], '#') << "beyond the room";
    EXPECT_EQ(stored, std::strlen(buffer));
    return buffer;
  }

  std::string _path;
};

TEST_F(Profile, ReadsEveryFormOfAValue) {
  const struct {
    const char* section;
    const char* key;
    std::string value;
  } rows[] = {
      {"First", "plain", "value"},
      {"FIRST", "PLAIN", "value"},
      {"First", "blanks", "both sides"},
      {"First", "quoted", "  kept blanks "},
      {"First", "single", "one pair"},
      {"First", "openQuote", "\"open"},
      {"First", "two", ""},
      {"First", "none", ""},
      {"First", "equals", "a=b"},
      {"First", "path", "C:\\Data\\x;y"},
      {"First", "comment", "text"},
      {"First", "#sign", "number"},
      {"First", "colon", "default"},
      {"First", "colon:ends", "no key"},
      {"First", "all", ""},
      {"First", "blankAll", ""},
      {"First", "inQuotes", " a"},
      {"First", "behindQuotes", " a"},
      {"First", "pairs", "\"x\""},
      {"First", "mixed", "\"a'"},
      {"First", "indented", "no continuation"},
      {"First", "late", "default"},  // the section came before
      {"First", "twice", "first"},
      {"First", "zero", "0"},
      {"First", "one", "1"},
      {"First", "long", kLongValue},
      {"Second Part", "plain", "other"},
      {"end", "last", "without an end of line"},
      {"First", "hidden", "default"},
      {"First", "absent", "default"},
      {"First", "last", "default"},  // a key of another section
      {"Third", "plain", "default"},
  };
  for (const auto& row : rows) EXPECT_EQ(read(row.section, row.key), row.value) << row.key;
}

TEST_F(Profile, CutsAtTheRoom) {
  EXPECT_EQ(read("First", "plain", 4), "val");
  EXPECT_EQ(read("First", "quoted", 4), "  k");
  EXPECT_EQ(read("First", "absent", 4), "def");
  EXPECT_EQ(read("First", "plain", 1), "");
  char untouched = '#';
  EXPECT_EQ(getIniFileStringParam("First", "plain", "", &untouched, 0, _path.c_str()), 0u);
  EXPECT_EQ(untouched, '#');
}

TEST_F(Profile, GivesTheDefaultWithoutAFile) {
  fs::remove(_path);
  EXPECT_EQ(read("First", "plain"), "default");
  EXPECT_TRUE(getIniFileBooleanParam("First", "one", true, _path.c_str()));
}

TEST_F(Profile, ReadsBooleans) {
  const struct {
    const char* key;
    bool whenDefaultTrue;
    bool whenDefaultFalse;
  } rows[] = {{"on", true, true},     {"yes", true, true},    {"true", true, true},
              {"off", false, false},  {"no", false, false},   {"false", false, false},
              {"maybe", true, false}, {"blank", true, false}, {"absent", true, false},
              {"plain", true, false}};
  for (const auto& row : rows) {
    EXPECT_EQ(getIniFileBooleanParam("second part", row.key, true, _path.c_str()),
              row.whenDefaultTrue)
        << row.key;
    EXPECT_EQ(getIniFileBooleanParam("second part", row.key, false, _path.c_str()),
              row.whenDefaultFalse)
        << row.key;
  }
  EXPECT_FALSE(getIniFileBooleanParam("First", "zero", true, _path.c_str()));
  EXPECT_TRUE(getIniFileBooleanParam("First", "one", false, _path.c_str()));
}

TEST_F(Profile, FindsAFileInTheCurrentFolder) {
  // The system's own calls would look for a bare name in a folder of theirs.
  const fs::path before = fs::current_path();
  fs::current_path(fs::path(_path).parent_path());
  char buffer[20];
  getIniFileStringParam("First", "plain", "", buffer, sizeof buffer,
                        fs::path(_path).filename().string().c_str());
  fs::current_path(before);
  EXPECT_STREQ(buffer, "value");
}

TEST(GlobalProfile, LiesInTheInstallationDirectoryUnlessNamed) {
  nosSetGlbIniFileName("some/where.ini");
  EXPECT_STREQ(getGlbIniFileName(), "some/where.ini");
  nosSetGlbIniFileName(nullptr);
  EXPECT_EQ(fs::path(getGlbIniFileName()).filename().string(), "nomutil.ini");
}

}  // namespace
