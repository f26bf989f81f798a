// Message tables of modules: the contract of nosFormatModuleMessage on the library's own table, on
// both platforms, and the copying of texts of every length where tables are rows.
#include "nomos/messagetable.h"

#include "messages/builtin.h"

#include "nomos/lasterror.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace nomutil::messages {
namespace {

constexpr char kUntouched = '\x7F';

struct Lookup {
  bool found;
  std::string bytes;  // the buffer afterwards, with what was not written
};

Lookup lookUp(const NosMessageModule& module, std::uint32_t identifier, std::uint32_t language,
              std::uint32_t size, std::uint32_t room = 120) {
  std::string bytes(room, kUntouched);
  const bool found = nosFormatModuleMessage(module, identifier, language, bytes.data(), size);
  bytes.erase(bytes.find_last_not_of(kUntouched) + 1);
  return {found, bytes};
}

TEST(MessageTable, CutsTheTextToTheBuffer) {
  const struct {
    std::uint32_t size;
    std::string bytes;
  } kRows[] = {
      {1, std::string("", 1)},
      {5, std::string("Inva", 5)},
      {23, std::string("Invalid parameter valu", 23)},
      {24, std::string("Invalid parameter value", 24)},
      {100, std::string("Invalid parameter value", 24)},
      {0, std::string("Invalid parameter value", 24)},
  };
  for (const auto& row : kRows) {
    const Lookup lookup = lookUp(kBuiltInMessages, 0x610003EA, 0, row.size);
    EXPECT_TRUE(lookup.found && lookup.bytes == row.bytes) << row.size << ": " << lookup.bytes;
  }
}

TEST(MessageTable, RefusesWhatItLacksAndLeavesTheBuffer) {
  const struct {
    std::uint32_t identifier;
    std::uint32_t language;
    bool found;
    const char* note;
  } kRows[] = {
      {0x610003E8, 1033, true, "English"},
      {0x610003E8, 1036, false, "French, which the table does not have"},
      {0x6100002A, 0, false, "no such number"},
      {0x610103E8, 0, false, "another facility"},
      {0xA10003E8, 0, false, "another severity"},
      {0x410003E8, 0, false, "without the customer bit"},
  };
  for (const auto& row : kRows) {
    nosSetLastError(0);
    const Lookup lookup = lookUp(kBuiltInMessages, row.identifier, row.language, 0);
    EXPECT_EQ(lookup.found, row.found) << row.note;
    if (lookup.found) continue;
    EXPECT_EQ(lookup.bytes, "") << row.note;
    EXPECT_TRUE(nosGetLastError() == kNosMessageNotFound ||
                nosGetLastError() == kNosMessageLanguageNotFound)
        << row.note << ": " << nosGetLastError();
  }
}

// Texts of 0 to 199 characters under random identifiers, of which some meet in the index.
TEST(MessageTable, CopiesTextsOfEveryLengthExactly) {
  constexpr std::uint32_t kCount = 200;
  std::mt19937 random(1);
  static NosMessageRow rows[kCount];
  std::vector<std::string> texts(kCount);
  for (std::uint32_t length = 0; length < kCount; ++length) {
    for (std::uint32_t i = 0; i < length; ++i) texts[length] += static_cast<char>('!' + i % 90);
    rows[length] = {0x60000000u | static_cast<std::uint32_t>(random() >> 4), length,
                    texts[length].c_str()};
  }
  const NosMessageIndex index(rows);
  const NosMessageModule module = {rows, rows, index.slots, index.kSlotBits};
  if (!lookUp(module, rows[0].identifier, 0, 0).found)
    GTEST_SKIP() << "tables of this platform are no rows";
  for (std::uint32_t length = 0; length < kCount; ++length) {
    const Lookup lookup = lookUp(module, rows[length].identifier, 0, 0, kCount + 20);
    EXPECT_TRUE(lookup.found) << length;
    EXPECT_EQ(lookup.bytes, texts[length] + '\0');
  }
  EXPECT_FALSE(lookUp(module, 0x60000001, 0, 0).found);
}

}  // namespace
}  // namespace nomutil::messages
