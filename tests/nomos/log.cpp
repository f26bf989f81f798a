// Log lines, assertions and message boxes on their way to the sinks.

#include "nomos/log.h"

#include "recorder.h"

#include <gtest/gtest.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using nomtest::Recorder;
namespace fs = std::filesystem;

TEST(Log, FormatsCutsAndMarksEachLine) {
  Recorder recorder;
  nomLog("failure %I64u of %s", std::uint64_t{5000000000}, "two");
  nomInfo("%04d", 7);
  NomLog("%s", std::string(2000, 'x').c_str());
  const std::vector<nomtest::LogLine> lines = recorder.takeLines();
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0].text, "failure 5000000000 of two");
  EXPECT_EQ(lines[0].level, NosLogLevel::Error);
  EXPECT_EQ(lines[1].text, "0007");
  EXPECT_EQ(lines[1].level, NosLogLevel::Information);
  EXPECT_EQ(lines[2].text, std::string(1023, 'x'));
  EXPECT_EQ(lines[2].level, NosLogLevel::Error);
}

TEST(Assertion, ReportsItsPartsAndReturns) {
  Recorder recorder;
  nosAssertFail("objman/common/source/decimals", "nomutil", "a > %d", kNosPrecondition);
  const std::vector<nomtest::Assertion> assertions = recorder.takeAssertions();
  ASSERT_EQ(assertions.size(), 1u);
  EXPECT_EQ(assertions[0].file, "objman/common/source/decimals");
  EXPECT_EQ(assertions[0].module, "nomutil");
  EXPECT_EQ(assertions[0].expression, "a > %d");
  EXPECT_EQ(assertions[0].kind, "Precondition contract violated");
  EXPECT_TRUE(recorder.takeLines().empty());
}

TEST(Assertion, IsOneLogLineWithoutASink) {
  Recorder recorder;
  nosSetAssertSink(nullptr, nullptr);
  nosAssertFail("some/file", "nomos", "a != b%s", kNosAssertion, 12);
  const std::vector<nomtest::LogLine> lines = recorder.takeLines();
  ASSERT_EQ(lines.size(), 1u);
  for (const char* part : {"some/file", "12", "nomos", "Assertion failed", "a != b%s"}) {
    EXPECT_NE(lines[0].text.find(part), std::string::npos) << part;
  }
}

TEST(MessageBox, GoesToItsSinkOrToTheLog) {
  Recorder recorder;
  nosMessageBox("text %d", "title");
  const std::vector<nomtest::MessageBox> boxes = recorder.takeBoxes();
  ASSERT_EQ(boxes.size(), 1u);
  EXPECT_EQ(boxes[0].text + '|' + boxes[0].title, "text %d|title");
  EXPECT_TRUE(recorder.takeLines().empty());
  // A test has no window to show: without the sink it must come back, and leave a line.
  nosSetMessageBoxSink(nullptr, nullptr);
  nosMessageBox("text %d", "title");
  const std::vector<nomtest::LogLine> lines = recorder.takeLines();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_NE(lines[0].text.find("text %d"), std::string::npos);
}

// What a process of its own does without a sink, since a process asks for its log file once.
void logLines(const char* configuration) {
  nosSetGlbIniFileName(configuration);
  nosSetLogSink(nullptr, nullptr);
  nomLog("first line");
  nomInfo("second line");
  std::_Exit(0);
}

TEST(LogDeathTest, GoesToTheErrorStreamOrToTheConfiguredFile) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const fs::path folder = fs::temp_directory_path();
  const fs::path configuration = folder / "nomos_log_test.ini";
  const fs::path file = folder / "nomos_log_test.log";
  std::ofstream(configuration) << "[NomLog]\nLogFile=" << file.string() << "\n";
  std::ofstream(file) << "earlier\n";
  const testing::ExitedWithCode succeeds(0);
  EXPECT_EXIT(logLines("no such file"), succeeds, "^first line\r?\nsecond line");
  EXPECT_EXIT(logLines(configuration.string().c_str()), succeeds, "^$");
  std::ifstream log(file);
  std::string lines;
  for (std::string line; std::getline(log, line);) lines += line.substr(0, line.find('\r')) + '|';
  EXPECT_EQ(lines, "earlier|first line|second line|");
  log.close();
  fs::remove(file);
  fs::remove(configuration);
}

TEST(Log, LosesNoLineOfSeveralThreads) {
  Recorder recorder;
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < 4; ++i) {
    threads.emplace_back([i] {
      for (unsigned line = 0; line < 100; ++line) nomInfo("%u-%u", i, line);
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::vector<unsigned> next(4, 0);
  for (const nomtest::LogLine& line : recorder.takeLines()) {
    const auto thread = static_cast<unsigned>(line.text[0] - '0');
    EXPECT_EQ(line.text, std::to_string(thread) + "-" + std::to_string(next[thread]++));
  }
  EXPECT_EQ(next, std::vector<unsigned>(4, 100));
}

}  // namespace
