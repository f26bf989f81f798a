// The doctor, with libraries that are there and libraries that are denied.
#include "commandline.h"

#include "nomos/testhooks.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace nomtool {
namespace {

std::string outputOf(std::vector<std::string> arguments, int expectedStatus = 0) {
  std::ostringstream out, err;
  EXPECT_EQ(run(std::move(arguments), out, err), expectedStatus);
  return out.str() + err.str();
}

TEST(Doctor, TellsWhatWorksWithoutALibrary) {
  nosDenyLibrary("geos_c");
  EXPECT_NE(outputOf({"doctor"}).find("GEOS           missing: everything but geometry works\n"),
            std::string::npos);
  EXPECT_EQ(outputOf({"geometry", "POINT (1 2)"}, 1),
            "GEOS: Library not found (1006); see nomtool doctor\n");
  nosDenyLibrary("zlib1");
  const std::string text = outputOf({"doctor", "--json"});
  nosDenyLibrary(nullptr);
  EXPECT_NE(text.find("\"library\": \"zlib\",\n      \"found\": false,\n"), text.npos) << text;
  EXPECT_NE(text.find("\"language\": \"eng\",\n"), text.npos) << text;
}

TEST(Doctor, NamesTheFileOfALibrary) {
  const std::string text = outputOf({"doctor"});
  std::istringstream lines(text.substr(text.find("zlib ")));
  std::string found, path;
  ASSERT_TRUE(std::getline(lines, found) && std::getline(lines >> std::ws, path)) << text;
  EXPECT_NE(found.find(", version 1."), found.npos) << found;
  EXPECT_TRUE(std::filesystem::exists(path)) << path;
}

}  // namespace
}  // namespace nomtool
