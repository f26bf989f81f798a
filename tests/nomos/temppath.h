// Files of a test in the system's temporary folder. The name tells the build and the test, so that
// tests may run side by side, and is the same in a process that a death test starts.
#ifndef NOMUTIL_TESTS_NOMOS_TEMPPATH_H
#define NOMUTIL_TESTS_NOMOS_TEMPPATH_H

#include <gtest/gtest.h>
#include <filesystem>
#include <functional>
#include <string>

namespace nomtest {

inline std::filesystem::path tempPath(const std::string& ending) {
  const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
  const std::size_t build = std::hash<std::string>()(NOMUTIL_BINARY_DIR);
  return std::filesystem::temp_directory_path() /
         ("nomos_" + std::to_string(build) + test.test_suite_name() + test.name() + ending);
}

}  // namespace nomtest

#endif  // NOMUTIL_TESTS_NOMOS_TEMPPATH_H
