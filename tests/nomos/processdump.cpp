// Process dumps: where they go, how many there are, and what anybody can read in them.

#include "nomos/processdump.h"

#include "nomos/testhooks.h"

#include "recorder.h"
#include "temppath.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

class ProcessDump : public testing::Test {
 protected:
  ProcessDump() {
    fs::remove_all(_folder);
    fs::create_directories(_folder);
    std::ofstream(_ini) << "[NomLog]\nDumpDirectory=" << _folder.string() << '\n';
    nosSetGlbIniFileName(_ini.string().c_str());
  }

  ~ProcessDump() override {
    nosSetGlbIniFileName(nullptr);
    fs::remove(_ini);
    fs::remove_all(_folder);
  }

  std::vector<fs::path> files() const {
    std::vector<fs::path> paths;
    for (const auto& entry : fs::directory_iterator(_folder)) paths.push_back(entry.path());
    return paths;
  }

  // In a process of its own: one dump, a file in the place of the next, and dumps beyond the limit.
  [[noreturn]] void dumpTooOften() const {
    nosProcessDump(7);
    std::string next = files().at(0).string();
    next.replace(next.size() - 6, 1, "2");
    std::ofstream(next) << "kept";
    for (int i = 0; i < 4; ++i) nosProcessDump(7);
    std::exit(0);
  }

  const fs::path _folder = nomtest::tempPath(".dumps");
  const fs::path _ini = nomtest::tempPath(".ini");
};

std::string contentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

TEST_F(ProcessDump, TellsItsKindAndTheModules) {
  nomtest::Recorder recorder;
  nosProcessDump(2);
  ASSERT_EQ(files().size(), 1u);
  const fs::path path = files()[0];
  const std::string name = path.filename().string();
  unsigned process = 0;
  unsigned number = 0;
  ASSERT_EQ(std::sscanf(name.c_str(), "nomutil-%u-%u", &process, &number), 2) << name;
  EXPECT_EQ(name, "nomutil-" + std::to_string(process) + "-" + std::to_string(number) + ".dump");
  std::string content = contentOf(path);
  EXPECT_NE(content.find("nosProcessDump(2)"), content.npos);
  // A minidump has names in UTF-16.
  content.erase(std::remove(content.begin(), content.end(), '\0'), content.end());
  EXPECT_NE(content.find("nomos_tests"), content.npos);
  const auto lines = recorder.takeLines();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].text, "nosProcessDump(2): written to '" + path.string() + "'.");
}

TEST_F(ProcessDump, IsWrittenFourTimesAndOverNothing) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // the process starts anew
  EXPECT_EXIT(dumpTooOften(), testing::ExitedWithCode(0),
              "not written, the process has written 4 dumps\\.\r?\n$");
  EXPECT_EQ(files().size(), 5u);
  const auto isKept = [](const fs::path& path) { return contentOf(path) == "kept"; };
  const auto all = files();
  EXPECT_EQ(std::count_if(all.begin(), all.end(), isKept), 1);
}

TEST_F(ProcessDump, WithoutItsFolderIsALogLine) {
  nomtest::Recorder recorder;
  fs::remove_all(_folder);
  nosProcessDump(2);
  const auto lines = recorder.takeLines();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_TRUE(lines[0].text.starts_with("nosProcessDump(2): unable to write '" + _folder.string()))
      << lines[0].text;
}

TEST_F(ProcessDump, GoesToTheSinkInstead) {
  int kind = 0;
  nosSetProcessDumpSink([](void* context, int given) { *static_cast<int*>(context) = given; },
                        &kind);
  nosProcessDump(-5);
  nosSetProcessDumpSink(nullptr, nullptr);
  EXPECT_EQ(kind, -5);
  EXPECT_TRUE(files().empty());
}

}  // namespace
