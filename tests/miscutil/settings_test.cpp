// The server settings of a real configuration file, byte by byte of the parameter that takes them,
// and the node specification that the process keeps.

#include "nomos/temppath.h"
#include "nomos/testhooks.h"
#include "sys/miscutil.h"
#include "sys/params.h"

#include "recorder.h"
#include "rows.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

class ServerSettings : public testing::Test {
 protected:
  ServerSettings() { nosSetGlbIniFileName(_path.c_str()); }
  ~ServerSettings() override {
    nosSetGlbIniFileName(nullptr);
    std::filesystem::remove(_path);
  }
  void write(const std::string& lines) const { std::ofstream(_path) << lines; }

  const std::string _path = nomtest::tempPath(".ini").string();
  nomtest::Recorder _recorder;
};

// A parameter whose bytes are all the same, or which is by reference.
ShortDskParam filled(DskParam* target = nullptr) {
  ShortDskParam parameter;
  std::memset(static_cast<void*>(&parameter), 0xCC, sizeof parameter);
  parameter.header.format = static_cast<PFormat>(30);
  if (target != nullptr) parameter.setValue(target);
  return parameter;
}

// The first nine bytes are written, no others.
bool holds(const ShortDskParam& parameter, char value) {
  const std::string expected =
      std::string("\x07\x00\x03\x00\xCC\xCC\xCC\xCC", 8) + value + std::string(31, '\xCC');
  return std::memcmp(&parameter, expected.data(), sizeof parameter) == 0;
}

TEST_F(ServerSettings, ComeFromTheConfigurationFileAsABoolean) {
  const auto check = [this](const nomtest::Row& row) {
    if (row[0] != "none")
      write("[Other]\nEnhancedLocaleSupport=no\n[" + row[0] + "]\n" + row[1] + "\n");
    ShortDskParam direct = filled(), target = filled();
    direct.header.format = DSKSTRING;
    ShortDskParam reference = filled(target);
    EXPECT_EQ(getServerSettings(direct), 0);
    EXPECT_EQ(getServerSettings(reference), 0);
    EXPECT_EQ(reference.header.format, 30);
    EXPECT_EQ(reference.getValue<DskParam*>(), static_cast<DskParam*>(target));
    const char value = row[2] == "true";
    return holds(direct, value) && holds(target, value) ? row[2] : "damaged";
  };
  nomtest::expectRows(3, check, R"(
      none - false
      KoraEnvironment EnhancedLocaleSupport=true true
      KORAenvironment enhancedlocalesupport=1 true
      KoraEnvironment EnhancedLocaleSupport=no false
      KoraEnvironment EnhancedLocaleSupport=perhaps false
      KoraClient EnhancedLocaleSupport=true false)");
  EXPECT_TRUE(_recorder.takeLines().empty());
}

TEST_F(ServerSettings, NeedAParameterToGoTo) {
  ShortDskParam nowhere = filled();
  nowhere.setValue<DskParam*>(nullptr);
  EXPECT_EQ(getServerSettings(nowhere), 1000);
  EXPECT_EQ(getServerSettings(nullptr), 1000);
  const auto lines = _recorder.takeLines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].text, "getServerSettings: no parameter for the result");
}

// Made before main and so destroyed behind all that is made later.
struct LastReader {
  ~LastReader() {
    const char* const kept = incRestoreServerNodeSpecifications();
    if (kept != nullptr && std::strcmp(kept, "HPSM,last") != 0) std::abort();
  }
} lastReader;

TEST(NodeSpecification, IsKeptAsACopyUntilTheNextOrTheEndOfTheProcess) {
  EXPECT_EQ(incRestoreServerNodeSpecifications(), nullptr);
  std::string text = "TCPIP,host," + std::string(100, '6');
  const std::string before = text;
  incSaveServerNodeSpecifications(text.c_str());
  text.assign(text.size(), '#');
  EXPECT_EQ(incRestoreServerNodeSpecifications(), before);
  nosFailAllocation(1);
  incSaveServerNodeSpecifications(std::string(1000, 'x').c_str());
  nosFailAllocation(0);
  EXPECT_EQ(incRestoreServerNodeSpecifications(), nullptr);
  for (const char* const nothing : {"", static_cast<const char*>(nullptr)}) {
    incSaveServerNodeSpecifications("HPSM,a");
    incSaveServerNodeSpecifications(nothing);
    EXPECT_EQ(incRestoreServerNodeSpecifications(), nullptr);
  }
  incSaveServerNodeSpecifications("HPSM,last");
}

}  // namespace
