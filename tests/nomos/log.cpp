// Log lines, assertions and message boxes on their way to the sinks.

#include "nomos/log.h"

#include "recorder.h"
#include "temppath.h"

#include <gtest/gtest.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

// What came since the last call: lines with their levels, assertions, message boxes.
std::string take(nomtest::Recorder& recorder) {
  std::string all;
  for (const auto& [level, text] : recorder.takeLines()) {
    all += std::to_string(static_cast<unsigned>(level)) + '|' + text + '\n';
  }
  for (const auto& [file, module, expression, kind] : recorder.takeAssertions()) {
    all += file + '|' + module + '|' + expression + '|' + kind + '\n';
  }
  for (const auto& [text, title] : recorder.takeBoxes()) all += text + '|' + title + '\n';
  return all;
}

TEST(Sinks, GetEveryReportFormattedAndCut) {
  nomtest::Recorder recorder;
  nomLog("failure %I64u of %s", std::uint64_t{5000000000}, "two");
  nomInfo("%04d", 7);
  NomLog("%s", std::string(2000, 'x').c_str());
  nosAssertFail("some/file", "nomutil", "a > %d", kNosPrecondition);
  nosMessageBox("text %d", "title");
  EXPECT_EQ(take(recorder), "0|failure 5000000000 of two\n1|0007\n0|" + std::string(1023, 'x') +
                                "\nsome/file|nomutil|a > %d|Precondition contract violated\n"
                                "text %d|title\n");
  nosSetAssertSink(nullptr, nullptr);
  nosSetMessageBoxSink(nullptr, nullptr);  // a test has no window to show: it must come back
  nosAssertFail("some/file", "nomos", "a != b%s", kNosAssertion, 12);
  nosMessageBox("text %d", "title");
  EXPECT_EQ(take(recorder),
            "0|some/file(12): nomos: Assertion failed: a != b%s\n0|title: text %d\n");
}

TEST(Sinks, GetLinesOfSeveralThreadsWhole) {
  nomtest::Recorder recorder;
  std::vector<std::thread> threads;
  for (const char letter : {'a', 'b', 'c', 'd'}) {
    threads.emplace_back([text = std::string(1000, letter)] {
      for (unsigned line = 0; line < 500; ++line) nomInfo("%s", text.c_str());
    });
  }
  for (std::thread& thread : threads) thread.join();
  const auto lines = recorder.takeLines();
  EXPECT_EQ(lines.size(), 2000u);
  for (const auto& [level, text] : lines) EXPECT_EQ(text, std::string(1000, text[0]));
}

// What a process of its own does without a sink, since a process asks for its log file once.
void logLines(const std::string& configuration) {
  nosSetGlbIniFileName(configuration.c_str());
  nosSetLogSink(nullptr, nullptr);
  nomLog("first line");
  nomInfo("second line");
  std::_Exit(0);
}

TEST(LogDeathTest, GoesToTheErrorStreamOrToTheConfiguredFile) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const std::string path = nomtest::tempPath("").string();
  std::ofstream(path + ".ini") << "[NomLog]\nLogFile=" << path << "\n";
  std::ofstream(path) << "earlier\n";
  EXPECT_EXIT(logLines("no such file"), testing::ExitedWithCode(0), "^first line\r?\nsecond line");
  EXPECT_EXIT(logLines(path + ".ini"), testing::ExitedWithCode(0), "^$");
  std::string lines;
  std::ifstream log(path);
  for (std::string line; std::getline(log, line);) lines += line.substr(0, line.find('\r')) + '|';
  EXPECT_EQ(lines, "earlier|first line|second line|");
  log.close();
  std::filesystem::remove(path);
  std::filesystem::remove(path + ".ini");
}

}  // namespace
