// Directories, the environment and files as byte streams.

#include "nomos/directory.h"

#include "nomos/file.h"
#include "nomos/lasterror.h"
#include "nomos/testhooks.h"

#include "temppath.h"

#include <gtest/gtest.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <tuple>

namespace {

namespace fs = std::filesystem;

// The platform's form of a directory that is written with '/'.
std::string native(const char* directory) {
  return fs::path(directory).make_preferred().string();
}

TEST(NormaliseDirectory, EndsInOneSeparatorOrLeavesWhatDoesNotFit) {
  const std::tuple<const char*, unsigned, const char*> rows[] = {
      {"", 3, "./"},      {"", 2, nullptr},    {"/", 32, "/"},         {"a", 32, "a/"},
      {"a///", 32, "a/"}, {"a//b", 5, "a/b/"}, {"a//b", 4, nullptr},   {"abc/", 5, "abc/"},
      {"abc", 5, "abc/"}, {"abc", 4, nullptr}, {"/a/b/", 32, "/a/b/"}, {"a/./b", 9, "a/./b/"}};
  for (const auto& [directory, size, normal] : rows) {
    std::string buffer = directory + std::string(32, '\0');
    for (unsigned time = 0; time < 2; ++time) {  // a normal one stays
      EXPECT_EQ(nosNormaliseDirectory(buffer.data(), size), normal != nullptr) << directory << size;
      EXPECT_EQ(buffer.c_str(), normal ? native(normal) : directory) << directory << size;
    }
  }
}

TEST(InstallDirectory, IsNormalAndYieldsToTheHook) {
  char buffer[520];
  const unsigned length = nosGetInstallDirectory(buffer, sizeof buffer);
  EXPECT_TRUE(fs::path(buffer).is_absolute() && fs::is_directory(buffer)) << buffer;
  EXPECT_TRUE(nosNormaliseDirectory(buffer, length + 1)) << "lacks its separator: " << buffer;
  nosSetInstallDirectory("some//where");
  EXPECT_EQ(nosGetInstallDirectory(buffer, sizeof buffer), 11u);
  EXPECT_EQ(buffer, native("some/where/"));
  nosSetInstallDirectory(nullptr);
}

TEST(Environment, IsCutAndEmptyWhenUnset) {
  const std::string path = std::getenv("PATH");
  for (const std::size_t size : {path.size() + 1, path.size(), std::size_t{1}}) {
    std::string buffer(path.size() + 1, '#');
    EXPECT_EQ(nosGetEnv("PATH", buffer.data(), static_cast<unsigned>(size)), size - 1);
    EXPECT_EQ(buffer.c_str(), path.substr(0, size - 1));
    EXPECT_EQ(nosGetEnv("NOMUTIL_NO_SUCH_VARIABLE", buffer.data(), 2), 0u);
    EXPECT_EQ(buffer[0], '\0');
  }
}

TEST(File, ReadsBytesForwardToTheEnd) {
  const std::string path = nomtest::tempPath(".bin").string();
  const std::string content("\0\xFF\r\n\x1A\n last", 11);  // nothing is translated or ends it early
  std::ofstream(path, std::ios::binary) << content;
  KoraFile file;
  std::string read(20, '#');
  EXPECT_TRUE(file.openReadOnly(path.c_str()));
  EXPECT_EQ(file.read(read.data(), 3), 3);
  EXPECT_EQ(file.read(read.data() + 3, 17), 8);
  EXPECT_EQ(file.read(read.data() + 11, 1), 0);
  EXPECT_EQ(read.substr(0, 12), content + '#');
  EXPECT_TRUE(file.openReadOnly(path.c_str())) << "begins again";
  EXPECT_EQ(file.read(read.data(), 20), 11);
  file.close();
  EXPECT_EQ(file.read(read.data(), 1), -1);
  fs::remove(path);
  EXPECT_FALSE(file.openReadOnly(fs::temp_directory_path().string().c_str())) << "a directory";
  EXPECT_FALSE(file.openReadOnly(path.c_str()));
  EXPECT_EQ(nosGetLastError(), 2u);  // no such file, on both platforms
}

TEST(File, IsWrittenUnderOneNameAndTakesAnother) {
  const std::string path = nomtest::tempPath(".bin").string(), part = path + ".part";
  const std::string content("\0\xFF\r\n\x1A\n last", 11);
  std::ofstream(path) << "before";
  fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
  const fs::perms permissions = fs::status(path).permissions();
  fs::remove(part);
  KoraFile file;
  EXPECT_FALSE(file.createNew(path.c_str())) << "there is one";
  EXPECT_FALSE(file.openDevice(path.c_str())) << "a file";
  EXPECT_TRUE(file.createNew(part.c_str()));
  EXPECT_EQ(file.size(), 0);
  EXPECT_TRUE(file.write(content.data(), 3) && file.write(content.data() + 3, 8) && file.flush());
  EXPECT_EQ(file.size(), 11);
  file.close();
  EXPECT_FALSE(file.write("x", 1));
  EXPECT_EQ(file.size(), -1);
  EXPECT_TRUE(nosReplaceFile(part.c_str(), path.c_str()));
  EXPECT_FALSE(fs::exists(part));
  EXPECT_EQ(fs::status(path).permissions(), permissions) << "as its owner wanted them";
  std::string read(20, '#');
  EXPECT_TRUE(file.openReadOnly(path.c_str()));
  EXPECT_EQ(file.size(), 11);
  EXPECT_EQ(file.read(read.data(), 20), 11);
  EXPECT_EQ(read.substr(0, 11), content);
  EXPECT_FALSE(file.write("x", 1)) << "open for reading";
  file.close();
  EXPECT_FALSE(nosReplaceFile(path.c_str(), fs::temp_directory_path().string().c_str()));
  EXPECT_TRUE(nosDeleteFile(path.c_str()));
  EXPECT_FALSE(nosDeleteFile(path.c_str()));
}

TEST(File, OpensAStandardStreamThatStaysOpen) {
  for (int round = 0; round < 2; ++round) {
    KoraFile file;
    ASSERT_TRUE(file.openStandard(NosStream::Error));
    EXPECT_TRUE(file.write("", 0));
  }
}

}  // namespace
