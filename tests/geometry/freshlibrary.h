// Fixtures that begin with no entry found and no library loaded, and leave it so: by itself, with
// the GEOS of the system, or with the library that stands in for it.
#ifndef NOMUTIL_TESTS_GEOMETRY_FRESHLIBRARY_H
#define NOMUTIL_TESTS_GEOMETRY_FRESHLIBRARY_H

#include "geometry/loader.h"
#include "geometry/standin/standin.h"
#include "nomos/testhooks.h"
#include "recorder.h"

#include <gtest/gtest.h>

#include <string>

namespace nomtest {

class FreshLibrary : public testing::Test {
 protected:
  explicit FreshLibrary(const char* configuration = nullptr) { forget(configuration); }
  ~FreshLibrary() override { forget(nullptr); }

  // The log lines since the last call, information with "i " ahead.
  std::string lines() {
    std::string all;
    for (const LogLine& line : _recorder.takeLines()) {
      all += (line.level == NosLogLevel::Information ? "i " : "") + line.text + "\n";
    }
    return all;
  }

  std::string broken() { return _recorder.takeExpressions(); }

 private:
  static void forget(const char* configuration) {
    nosDenyLibrary(nullptr);
    nosDenyEntry(nullptr);
    nosSetGlbIniFileName(configuration);
    for (auto& entry : nomutil::geometry::foundEntries) entry = nullptr;
    nomutil::geometry::geosLibrary().unload();
  }

  Recorder _recorder;
};

class StandInLibrary : public FreshLibrary {
 protected:
  StandInLibrary() : FreshLibrary(NOMUTIL_STANDIN_CONFIGURATION) {}
  void SetUp() override { ASSERT_NE(standIn, nullptr) << lines(); }

  // Sets what each entry gives from now on, and forgets the calls.
  void prepare(std::int64_t answer) {
    standIn->answer = answer;
    standIn->count = 0;
  }
  void prepare(const void* answer) { prepare(static_cast<std::int64_t>(bitsOf(answer))); }

  static std::uint64_t bitsOf(const void* pointer) {
    return reinterpret_cast<std::uint64_t>(pointer);
  }

  StandIn* const standIn =
      static_cast<StandIn*>(nomutil::geometry::geosLibrary().getMethod("standIn", true));
};

}  // namespace nomtest

#endif  // NOMUTIL_TESTS_GEOMETRY_FRESHLIBRARY_H
