// Ctrl-C while a command writes a file: the file that was there before stays, and nothing else.
#include "runprogress.h"
#include "toolfiles.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

namespace {

class Interrupts : public nomtest::ToolFiles {
 protected:
  std::set<std::string> files() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path(""))) {
      names.insert(entry.path().filename().string());
    }
    return names;
  }

  const Outcome _stopped{nomtool::kExitInterrupted, "", "interrupted; no file was changed\n"};
};

TEST_F(Interrupts, LeaveTheOutputAsItWas) {
  write("text", "a,b\n1,2\n");
  ASSERT_EQ(std::get<0>(runTool("pack -q @text @snapshot")), 0);
  ASSERT_EQ(std::get<0>(runTool("compress @text -o @blocks")), 0);
  ASSERT_EQ(std::get<0>(runTool("object new @object")), 0);
  for (const std::string command :
       {"base64 @text -o @out", "base64 -d @text -o @out", "plain @text -o @out",
        "compress @text -o @out", "uncompress @blocks -o @out", "pack -q @text @out",
        "unpack -q @snapshot @out", "object define @out age Integer 7", "object new @new"}) {
    SCOPED_TRACE(command);
    write("out", read("object"));
    const std::set<std::string> before = files();
    nomtool::RunProgress::interrupt();
    EXPECT_EQ(runTool(command), _stopped);
    EXPECT_EQ(files(), before);
    EXPECT_EQ(read("out"), read("object"));
  }
}

// The signal itself, in the midst of an input that takes seconds, of which the commands make
// little.
TEST_F(Interrupts, ComeAsSignals) {
  std::signal(SIGINT, SIG_DFL);  // the tests may run where they are ignored
  std::signal(SIGTERM, SIG_DFL);
  write("zeros", "");
  std::filesystem::resize_file(path("zeros"),
                               std::uintmax_t{4} << 30);  // takes no room on the disk
  const std::pair<std::string, int> cases[] = {{"compress", SIGINT}, {"base64 -d", SIGTERM}};
  for (const auto& [command, signal] : cases) {
    SCOPED_TRACE(command);
    write("out", "before");
    std::atomic<bool> isOver = false;
    std::thread user([&, signal = signal] {
      while (files().size() < 3 && !isOver) {
        std::this_thread::yield();
      }
      if (!isOver) std::raise(signal);
    });
    EXPECT_EQ(runTool(command + " @zeros -o @out"), _stopped);
    isOver = true;
    user.join();
    EXPECT_EQ(files(), (std::set<std::string>{"out", "zeros"}));
    EXPECT_EQ(read("out"), "before");
  }
}

TEST_F(Interrupts, AndOutputsThatAreLinksKeepTheLink) {
  write("text", "x");
  write("target", "before");
  std::error_code error;
  std::filesystem::create_symlink("target", path("link"), error);
  if (error) {
    // The compiler's library for Windows knows no links, hence neither does the tool.
    EXPECT_EQ(error, std::errc::function_not_supported);
    return;
  }
  EXPECT_EQ(std::get<0>(runTool("base64 @text -o @link")), 0);
  EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
  EXPECT_EQ(read("target"), "eA==");
}

}  // namespace
