// Libraries by name: a library of the tests is copied to where the descriptor has to find it.

#include "nomos/dlldesc.h"

#include "nomos/lasterror.h"
#include "nomos/processdump.h"
#include "nomos/testhooks.h"

#include "support/recorder.h"
#include "support/threads.h"
#include "temppath.h"

#include <gtest/gtest.h>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

class Library : public testing::Test {
 protected:
  Library() {
    fs::create_directories(_folder);
    configure("Directory=" + _folder.string());
    nosSetGlbIniFileName(_ini.string().c_str());
    for (std::istringstream rows(NOMOS_LIBRARY_NAMES); std::getline(rows, _row, ' ');) {
      const std::size_t middle = _row.find('=');
      _names.emplace_back(_row.substr(0, middle), _row.substr(middle + 1));
    }
  }

  ~Library() override {
    nosDenyLibrary(nullptr);
    nosDenyEntry(nullptr);
    nosSetGlbIniFileName(nullptr);
    fs::remove(_ini);
    fs::remove_all(_folder);
  }

  void configure(const std::string& lines) {
    std::ofstream(_ini) << "[NomLibraries]\n" << lines << '\n';
  }

  // The file of the library "counter", copied into the folder.
  void provideCounter() { fs::copy_file(NOMOS_COUNTER_PATH, _folder / _names.back().second); }

  const fs::path _folder = nomtest::tempPath(".libraries");
  const fs::path _ini = nomtest::tempPath(".ini");
  std::vector<std::pair<std::string, std::string>> _names;  // of libraries and of their files

 private:
  std::string _row;
};

int callNext(DllDesc& library) {
  void* const entry = library.getMethod("counterNext", true);
  return entry != nullptr ? reinterpret_cast<int (*)()>(entry)() : -1;
}

// What getMethod does: 0 when it finds the entry, else the last error.
unsigned lookUp(DllDesc& library, const char* entry = "counterNext") {
  nosSetLastError(0);
  return library.getMethod(entry, false) != nullptr ? 0 : nosGetLastError();
}

std::string pathOf(const DllDesc& library) {
  char path[600];
  return std::string(path, library.copyPath(path, sizeof path));
}

std::string fileNameOf(const DllDesc& library, unsigned size = 64) {
  char name[64];
  return std::string(name, library.copyFileName(name, size));
}

TEST_F(Library, IsFoundUnderEachOfItsFileNames) {
  for (const auto& [name, file] : _names) {
    DllDesc library(name.c_str());
    fs::copy_file(NOMOS_COUNTER_PATH, _folder / file);
    ASSERT_EQ(library.load(), 0) << file;
    EXPECT_EQ(callNext(library), 1) << file;
    EXPECT_EQ(fileNameOf(library), file);
    EXPECT_EQ(fileNameOf(library, 4), file.substr(0, 3)) << "cut";
    EXPECT_TRUE(fs::equivalent(pathOf(library), _folder / file)) << pathOf(library);
  }
}

TEST_F(Library, IsLookedForWhereTheConfigurationSays) {
  provideCounter();
  const std::string folder = _folder.string();
  const std::pair<std::string, unsigned> rows[] = {
      {"Directory=" + folder, 0},
      {"counter=" + folder, 0},
      {"Directory=" + folder + "/none\nCOUNTER=" + folder + "/", 0},
      {"Directory=" + folder + "\ncounter=" + folder + "/none", kNosNoSuchLibrary},
      {"Directory=" + folder + "\ncounter=", kNosNoSuchLibrary},
      {"zlib1=" + folder, kNosNoSuchLibrary},
  };
  for (const auto& [lines, expected] : rows) {
    configure(lines);
    DllDesc library("counter");
    EXPECT_EQ(lookUp(library), expected) << lines;
    EXPECT_EQ(library.isLoaded(), expected == 0) << lines;
  }
  for (const std::string& lines : {"counter=" + folder, "Directory=" + folder + "\nzlib1="}) {
    configure(lines);
    DllDesc library("zlib1");
    EXPECT_EQ(lookUp(library, "zlibVersion"), 0u) << "the system's own, with " << lines;
  }
}

TEST_F(Library, ThatIsMissingOrDamagedSetsTheLastError) {
  nomtest::Recorder recorder;
  DllDesc library("counter");
  EXPECT_EQ(library.load(), 1006);
  EXPECT_EQ(nosGetLastError(), 126u);
  EXPECT_EQ(lookUp(library), 126u);
  EXPECT_EQ(pathOf(library) + fileNameOf(library), "");
  EXPECT_TRUE(recorder.takeLines().empty());
  EXPECT_EQ(library.getMethod("counterNext", true), nullptr);
  EXPECT_EQ(nosGetLastError(), 126u) << "after the log line";

  std::ofstream(_folder / _names.back().second) << "no library";
  nosSetLastError(0);
  EXPECT_EQ(library.load(), 1006);
  EXPECT_NE(nosGetLastError(), 0u);

  fs::remove(_folder / _names.back().second);
  provideCounter();
  EXPECT_EQ(lookUp(library, "counterPrevious"), 127u) << "each call looks again";
  EXPECT_EQ(library.getMethod("counterPrevious", true), nullptr);
  std::string lines;
  for (const nomtest::LogLine& line : recorder.takeLines()) lines += line.text + '\n';
  EXPECT_EQ(lines,
            "DllDesc: Unable to get address of 'counterNext' in 'counter', O/S Error 126.\n"
            "DllDesc: Unable to get address of 'counterPrevious' in 'counter', O/S Error 127.\n");

  const std::string longName(200, 'x');
  EXPECT_EQ(DllDesc(longName.c_str()).load(), 1006);
}

TEST_F(Library, DeniedIsMissingUntilItIsAllowed) {
  provideCounter();
  DllDesc library("counter");
  nosDenyEntry("counterNext");
  EXPECT_EQ(lookUp(library), 127u);
  nosDenyLibrary("zlib1");
  nosDenyEntry("counterNex");
  EXPECT_EQ(callNext(library), 1) << "others are denied";
  nosDenyLibrary("counter");
  EXPECT_EQ(lookUp(library), 126u);
  EXPECT_EQ(library.load(), 1006);
  EXPECT_FALSE(library.isLoaded());
  EXPECT_EQ(pathOf(library) + fileNameOf(library), "");
  nosDenyLibrary(nullptr);
  EXPECT_TRUE(library.isLoaded());
  EXPECT_EQ(callNext(library), 2) << "it was loaded all the time";
}

TEST_F(Library, GoesWithTheLastDescriptorThatHoldsIt) {
  provideCounter();
  {
    DllDesc library("counter");
    EXPECT_EQ(callNext(library), 1);
    EXPECT_EQ(library.load(), 0);
    EXPECT_EQ(callNext(library), 2) << "loading twice is loading once";
    library.unload();
    EXPECT_FALSE(library.isLoaded());
    EXPECT_EQ(callNext(library), 1);
    DllDesc other("counter");
    EXPECT_EQ(callNext(other), 2);
    library.unload();
    library.unload();
    EXPECT_EQ(callNext(other), 3);
  }
  DllDesc library("counter");
  EXPECT_EQ(callNext(library), 1);
}

TEST_F(Library, IsLoadedOnceByThreadsThatRace) {
  provideCounter();
  DllDesc library("counter");
  constexpr int kThreads = 8;
  std::vector<void*> found(kThreads);
  nomtest::inThreads(
      kThreads, [&](unsigned thread) { found[thread] = library.getMethod("counterNext", false); });
  EXPECT_EQ(std::set<void*>(found.begin(), found.end()).size(), 1u);
  EXPECT_NE(found[0], nullptr);
  library.unload();
  EXPECT_EQ(callNext(library), 1) << "a second load would have held the library";
}

TEST(LocaleLibrary, HasAFileAndAVersion) {
  char path[600], version[64], cut[3];
  ASSERT_TRUE(nosDescribeLocaleLibrary(path, sizeof path, version, sizeof version));
  EXPECT_TRUE(fs::exists(path)) << path;
  EXPECT_GE(std::stoi(version), 6) << "ICU 72.1, Windows 10.0.19045, or 6.1, which Wine plays";
  ASSERT_TRUE(nosDescribeLocaleLibrary(nullptr, 0, cut, sizeof cut));
  EXPECT_EQ(cut, std::string(version).substr(0, 2));
}

TEST(Export, IsFoundByNameInNomosAlone) {
  EXPECT_EQ(nosFindExport("nosProcessDump"), reinterpret_cast<void*>(&nosProcessDump));
  for (const char* foreign : {"malloc", "main", "nosProcessDum", ""}) {
    EXPECT_EQ(nosFindExport(foreign), nullptr) << foreign;
  }
}

}  // namespace
