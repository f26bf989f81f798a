// A process whose environment names a French configuration (NOMUTIL_INI) and message directory
// (KORALANGDIR), through the functions that the library exports. kormsgs.fra is the worked example
// of docs/formats/messagefile.md.
#include "sys/messages.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

namespace {

TEST(FrenchMessages, AreThoseOfTheWorkedExample) {
  const std::string kBytes(
      "\x2F\x2F\x20\x54\x65\x78\x74\x65\x73\x0A\x0D\x0A\x31\x30\x30\x32"
      "\x20\x22\x56\x61\x6C\x65\x75\x72\x20\x64\x65\x20\x70\x61\x72\x61"
      "\x6D\xE8\x74\x72\x65\x20\x69\x6E\x63\x6F\x72\x72\x65\x63\x74\x65"
      "\x22\x20\x2F\x2F\x20\xE7\x61\x0A",
      56);
  std::ifstream file(NOMUTIL_SOURCE_DIR "/tests/messages/french/kormsgs.fra", std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), kBytes);

  const std::string kText = "Valeur de param\xE8tre incorrecte";
  char buffer[100];
  char* text = nullptr;
  EXPECT_TRUE(nomGetMessageText(1002, buffer, sizeof buffer) == 0 && buffer == kText);
  EXPECT_TRUE(NomVBGetMessageText(1002, buffer) == 0 && buffer == kText);
  EXPECT_TRUE(NomGetMessageText(1002, &text) == 0 && text == kText);
  // A message file knows no facility.
  EXPECT_EQ(nomGetMessageResourceText(1002, buffer, 8, 3, 257), 0);
  EXPECT_STREQ(buffer, "Valeur ");
  EXPECT_EQ(NomVBGetMessageText(42, buffer), 1);
  EXPECT_STREQ(buffer, "42      1       Undefined message number");
}

}  // namespace
