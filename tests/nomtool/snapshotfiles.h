// Tables that a test packs and snapshots that it unpacks.
#ifndef NOMUTIL_TESTS_NOMTOOL_SNAPSHOTFILES_H
#define NOMUTIL_TESTS_NOMTOOL_SNAPSHOTFILES_H

#include "toolfiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>

namespace nomtest {

// A field by the rules of RFC 4180.
inline std::string quoted(const std::string& field, char delimiter) {
  if (field.find_first_of(std::string("\"\r\n") + delimiter) == field.npos) return field;
  std::string text = "\"";
  for (const char c : field) text += c == '"' ? "\"\"" : std::string(1, c);
  return text + '"';
}

class Snapshots : public ToolFiles {
 protected:
  // Packs a text with blocks of at least so many bytes; what the command says behind its first
  // line.
  std::string pack(const std::string& text, const std::string& options = "") {
    write("text", text);
    const auto [status, results, refusals] = runTool("pack -q " + options + " @text @snapshot");
    EXPECT_EQ(status, 0) << refusals;
    return results.substr(std::min(results.size(), results.find('\n') + 1));
  }

  // Unpacks these bytes: the status and the text.
  std::pair<int, std::string> unpack(const std::string& snapshot, const std::string& options = "") {
    write("snapshot", snapshot);
    write("back", "");
    const auto [status, results, refusals] =
        runTool("unpack -q -j 1 " + options + " @snapshot @back");
    EXPECT_EQ(refusals.empty(), status == 0) << refusals;
    return {status, read("back")};
  }
};

}  // namespace nomtest

#endif  // NOMUTIL_TESTS_NOMTOOL_SNAPSHOTFILES_H
