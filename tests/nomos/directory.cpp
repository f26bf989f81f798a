// Directories, the environment and files as byte streams.

#include "nomos/directory.h"

#include "nomos/file.h"
#include "nomos/lasterror.h"
#include "nomos/testhooks.h"

#include <gtest/gtest.h>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

namespace {

namespace fs = std::filesystem;

constexpr char kSeparator = static_cast<char>(fs::path::preferred_separator);

// The platform's form of a directory that is written with '/'.
std::string native(std::string text) {
  for (char& character : text) {
    if (character == '/') character = kSeparator;
  }
  return text;
}

TEST(NormaliseDirectory, EndsInOneSeparatorAndJoinsRepeatedOnes) {
  const struct {
    const char* directory;
    const char* normal;
  } rows[] = {{"", "./"},         {"/", "/"},          {"a", "a/"},
              {"a/", "a/"},       {"a///", "a/"},      {"a//b", "a/b/"},
              {"/a/b/", "/a/b/"}, {"a/./b", "a/./b/"}, {"a b/c.d", "a b/c.d/"}};
  for (const auto& row : rows) {
    char buffer[32];
    std::strcpy(buffer, row.directory);
    EXPECT_TRUE(nosNormaliseDirectory(buffer, sizeof buffer));
    EXPECT_EQ(buffer, native(row.normal)) << row.directory;
    EXPECT_TRUE(nosNormaliseDirectory(buffer, sizeof buffer));
    EXPECT_EQ(buffer, native(row.normal)) << "normalised twice";
  }
}

TEST(NormaliseDirectory, LeavesWhatDoesNotFit) {
  const struct {
    const char* directory;
    unsigned size;
    bool fits;
  } rows[] = {{"", 2, false},    {"", 3, true},     {"abc", 4, false}, {"abc", 5, true},
              {"abc/", 5, true}, {"a//b", 5, true}, {"a//b", 4, false}};
  for (const auto& row : rows) {
    char buffer[16];
    std::strcpy(buffer, row.directory);
    EXPECT_EQ(nosNormaliseDirectory(buffer, row.size), row.fits) << row.directory << row.size;
    if (!row.fits) {
      EXPECT_STREQ(buffer, row.directory);
    }
  }
}

TEST(InstallDirectory, IsNormalExistsAndYieldsToTheHook) {
  char buffer[520];
  const unsigned length = nosGetInstallDirectory(buffer, sizeof buffer);
  ASSERT_GT(length, 0u);
  EXPECT_EQ(length, std::strlen(buffer));
  EXPECT_EQ(buffer[length - 1], kSeparator);
  EXPECT_TRUE(fs::path(buffer).is_absolute());
  EXPECT_TRUE(fs::is_directory(buffer));
  nosSetInstallDirectory("some//where");
  EXPECT_EQ(nosGetInstallDirectory(buffer, sizeof buffer), 11u);
  EXPECT_EQ(buffer, native("some/where/"));
  nosSetInstallDirectory(nullptr);
  EXPECT_EQ(nosGetInstallDirectory(buffer, sizeof buffer), length);
}

TEST(Environment, IsCutAndEmptyWhenUnset) {
  const char* const expected = std::getenv("PATH");
  ASSERT_NE(expected, nullptr);
  const std::string path = expected;
  std::string buffer(path.size() + 1, '#');
  for (const std::size_t size : {path.size() + 1, path.size(), std::size_t{2}, std::size_t{1}}) {
    buffer.assign(buffer.size(), '#');
    EXPECT_EQ(nosGetEnv("PATH", buffer.data(), static_cast<unsigned>(size)), size - 1);
    EXPECT_EQ(std::string(buffer.c_str()), path.substr(0, size - 1));
  }
  EXPECT_EQ(nosGetEnv("NOMUTIL_NO_SUCH_VARIABLE", buffer.data(), 2), 0u);
  EXPECT_EQ(buffer[0], '\0');
}

TEST(File, ReadsBytesForwardToTheEnd) {
  const std::string path = (fs::temp_directory_path() / "nomos_file_test.bin").string();
  std::string content;
  for (unsigned i = 0; i < 1000; ++i) content += static_cast<char>(i * 7 & 0xFF);
  content += "\r\n\x1A\n";  // nothing is translated and nothing ends the file early
  std::ofstream(path, std::ios::binary) << content;
  KoraFile file;
  ASSERT_TRUE(file.openReadOnly(path.c_str()));
  std::string read(2000, '#');
  EXPECT_EQ(file.read(read.data(), 10), 10);
  EXPECT_EQ(file.read(read.data() + 10, 0), 0);
  EXPECT_EQ(file.read(read.data() + 10, 1900), 994);
  EXPECT_EQ(file.read(read.data() + 1004, 10), 0);
  EXPECT_EQ(read.substr(0, 1004), content);
  ASSERT_TRUE(file.openReadOnly(path.c_str()));  // begins again
  EXPECT_EQ(file.read(read.data(), 1), 1);
  file.close();
  EXPECT_EQ(file.read(read.data(), 1), -1);
  fs::remove(path);
  nosSetLastError(0);
  EXPECT_FALSE(file.openReadOnly(path.c_str()));
  EXPECT_EQ(nosGetLastError(), 2u);  // no such file, on both platforms
  EXPECT_FALSE(file.openReadOnly(fs::temp_directory_path().string().c_str())) << "a directory";
}

TEST(LastError, BelongsToItsThread) {
  // No call that might set the number itself stands between setting and asking.
  std::atomic<bool> isSetThere{false};
  std::atomic<bool> isSetHere{false};
  unsigned there = 0;
  std::thread other([&] {
    nosSetLastError(5);
    isSetThere = true;
    while (!isSetHere) {
    }
    there = nosGetLastError();
  });
  while (!isSetThere) {
  }
  nosSetLastError(317);
  isSetHere = true;
  const unsigned here = nosGetLastError();
  other.join();
  EXPECT_EQ(here, 317u);
  EXPECT_EQ(there, 5u);
}

}  // namespace
