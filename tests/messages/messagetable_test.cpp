// Message tables of modules: the contract of nosFormatModuleMessage on the library's own table, on
// both platforms, and the copying of texts of every length where tables are rows.
#include "nomos/messagetable.h"

#include "messages/builtin.h"

#include "nomos/lasterror.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
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

// Texts of 0 to 199 characters under random identifiers, of which some meet in the index.
TEST(MessageTable, CopiesTextsOfEveryLengthExactly) {
  std::mt19937 random(1);
  std::string text;
  for (int i = 0; i < 199; ++i) text += static_cast<char>('!' + i % 90);
  static NosMessageRow rows[200];
  for (std::uint32_t length = 0; length < 200; ++length) {
    const std::uint32_t identifier = 0x60000000u | static_cast<std::uint32_t>(random() >> 4);
    rows[length] = {identifier, length, text.c_str() + 199 - length};
  }
  const NosMessageIndex index(rows);
  const NosMessageModule module = {rows, rows, index.slots, index.kSlotShift};
  if (lookUp(module, rows[0].identifier) == "refused") GTEST_SKIP() << "tables here are no rows";
  for (const auto& row : rows)
    EXPECT_EQ(lookUp(module, row.identifier), row.text + std::string("~"));
  EXPECT_EQ(lookUp(module, 0x60000001), "refused");
}

}  // namespace
}  // namespace nomutil::messages
