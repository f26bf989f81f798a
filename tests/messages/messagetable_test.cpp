// Message tables of modules: the contract of nosFormatModuleMessage on the library's own table, on
// both platforms.
#include "nomos/messagetable.h"

#include "messages/builtin.h"

#include "nomos/lasterror.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>

namespace nomutil::messages {
namespace {

// The buffer afterwards, up to the last byte that was written, with ~ for NUL; "refused" when it
// was left alone.
std::string lookUp(const NosMessageModule& module, std::uint32_t identifier,
                   std::uint32_t language = 0, std::uint32_t size = 0) {
  std::string bytes(240, '\x7F');
  nosSetLastError(0);
  const bool found = nosFormatModuleMessage(module, identifier, language, bytes.data(), size);
  bytes.erase(bytes.find_last_not_of('\x7F') + 1);
  std::replace(bytes.begin(), bytes.end(), '\0', '~');
  const unsigned error = nosGetLastError();
  const bool isTold = error == kNosMessageNotFound || error == kNosMessageLanguageNotFound;
  return bytes + (found ? "" : isTold ? "refused" : "no reason");
}

TEST(MessageTable, CutsTheTextToTheBufferAndRefusesWhatItLacks) {
  using Row = std::tuple<std::uint32_t, std::uint32_t, std::uint32_t, std::string, const char*>;
  const Row kRows[] = {
      {0x610003EA, 0, 24, "Invalid parameter value~", "just enough"},
      {0x610003EA, 1033, 23, "Invalid parameter valu~", "English, one short"},
      {0x610003EA, 0, 1, "~", "room for the NUL only"},
      {0x610003EA, 1036, 0, "refused", "French, which the table does not have"},
      {0x6100002A, 0, 0, "refused", "no such number"},
  };
  for (const auto& [identifier, language, size, bytes, note] : kRows) {
    EXPECT_EQ(lookUp(kBuiltInMessages, identifier, language, size), bytes) << note;
  }
}

}  // namespace
}  // namespace nomutil::messages
