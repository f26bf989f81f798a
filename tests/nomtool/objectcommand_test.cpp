// The commands over dynamic objects in files, and their file.
#include "toolfiles.h"

#include "nomos/testhooks.h"

#include "recorder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace std::string_literals;

// docs/formats/objectfile.md; python3's zlib.crc32 gives the checksum.
const std::string kHeader =
    "NOMOBJ1\n\x01\0\0\0\x04\0\0\0\x11\0\0\0\0\0\0\0\x07\x08\0\0\0\0\0\0\0\0\0\0\0\0\x78\0\0\0"
    "\x08\0\0\0\x07\0\0\0<< format >>\0\x01<< version >>\0\x01<< charSize >>\0\x01"s;
const std::string kImages = "name" + std::string(97, '\0') +
                            "\x03\x01\0\x0B\0\0\0\0\0\0\0\x06\0\0\0\0\0\0\0"
                            "\x04\0\0\0\x03\0\0\0Al\0Ann\0"s;
const std::string kExample = kHeader + kImages + "\x0B\x64\x10\xF0";

// Bit by bit, as the standard defines it.
std::string withChecksum(const std::string& bytes) {
  std::uint32_t crc = 0xFFFFFFFF;
  for (const char c : bytes) {
    crc ^= static_cast<unsigned char>(c);
    for (int i = 0; i < 8; ++i) crc = crc >> 1 ^ (crc % 2 != 0 ? 0xEDB88320 : 0);
  }
  std::string all = bytes;
  for (int i = 0; i < 4; ++i) all += static_cast<char>(~crc >> (8 * i) & 0xFF);
  return all;
}

class ObjectCommand : public nomtest::ToolFiles {
 protected:
  ObjectCommand() { nosSetCodePage(1252); }
  ~ObjectCommand() override { nosSetCodePage(0); }

  void expectDone(const std::string& line) const { EXPECT_EQ(runTool(line), Outcome(0, "", "")); }
  std::string shown(const std::string& options) const {
    const auto [status, results, refusals] = runTool("object show @o " + options);
    EXPECT_EQ(status, 0) << refusals;
    return results;
  }

  nomtest::Recorder _log;  // whose lines are of no account
};

TEST_F(ObjectCommand, WritesTheBytesOfItsPage) {
  expectDone("object new @o --parent 2055.17");
  expectDone("object define @o name String Al");
  expectDone("object set @o name Ann --usage 3");
  EXPECT_EQ(read("o"), kExample);
  EXPECT_EQ(withChecksum(kHeader + kImages), kExample);
  write("in", kExample);
  EXPECT_EQ(piped("object set - name Ann --usage 3", kExample).substr(0, 16),
            kExample.substr(0, 12) + "\x06\0\0\0"s);
}

TEST_F(ObjectCommand, ShowsTheImagesFieldByField) {
  write("o", kExample);
  EXPECT_EQ(shown("--images"), R"(parent    [2055.17]
kind      ordinary
revision  4

index  name  format  usage  type  value
1      name  String  3      6.11  "Ann"

format descriptor, 45 bytes
00  3c 3c 20 66 6f 72 6d 61 74 20 3e 3e 00             title
0d  01                                                 format 1
0e  3c 3c 20 76 65 72 73 69 6f 6e 20 3e 3e 00          title
1c  01                                                 version 1
1d  3c 3c 20 63 68 61 72 53 69 7a 65 20 3e 3e 00       title
2c  01                                                 charSize 1

descriptions, 120 bytes
00  6e 61 6d 65 00 ..                                  name name
65  03                                                 usage 3
66  01 00                                              format 1 String
68  0b 00 00 00 00 00 00 00                            typeNumber 11
70  06 00 00 00                                        typeClass 6
74  00 00 00 00                                        slotOffset 0

values, 8 bytes
00  04 00 00 00                                        name: room 4
04  03 00 00 00                                        name: offset 3

long values, 7 bytes
00  41 6c 00                                           not in use
03  41 6e 6e 00                                        name: text and NUL
)");
}

// The bytes are those of docs/formats/parameter.md, decimal.md and datetime.md.
TEST_F(ObjectCommand, KeepsAValueOfEveryFormat) {
  const std::vector<std::vector<std::string>> kRows = {
      {"String", "-5", "-5", "2d 35"},
      {"string", "caf\xC3\xA9", "caf\xC3\xA9", "63 61 66 e9"},
      {"DSKOBJECTID", "2055.18", "[2055.18]", "12 00 00 00 00 00 00 00 07 08 00 00"},
      {"object", "120000000000000007080000", "[2055.18]", "12 00 00 00 00 00 00 00 07 08 00 00"},
      {"Integer", "-2147483648", "-2147483648", "00 00 00 80"},
      {"Character", "\xE2\x82\xAC", "\xE2\x82\xAC", "80"},
      {"Boolean", "true", "true", "01"},
      {"Point", "-1,2", "-1,2", "ff ff ff ff 02 00 00 00"},
      {"Binary", "deAD", "de ad", "de ad"},
      {"Date", "2024-01-05", "05 January 2024", "9b 8a 25 00"},
      {"16", "2460315", "05 January 2024", "9b 8a 25 00"},
      {"Time", "50829042", "14:07:09", "f2 96 07 03"},
      {"Timestamp", "2024-01-05T10:30:00", "05 January 2024, 10:30:00", "9b 8a 25 00 40 c8 40 02"},
      {"Decimal", "12.50", "12.50", "02 02 e2 04 aa aa aa aa aa aa aa aa 00 00 00 00"},
      {"Real", "-1e-1", "-0.1", "9a 99 99 99 99 99 b9 bf"},
      {"Integer64", "-5", "-5", "fb ff ff ff ff ff ff ff"},
      {"MemoryAddress", "4096,7", "0x00001000,7", "00 10 00 00 00 00 00 00 07 00 00 00"},
      {"StringUtf8", "\xE6\x97\xA5", "\xE6\x97\xA5", "e6 97 a5"},
      {"Byte", "255", "255", "ff"},
      {"TimestampInterval", "-1", "-0:00:00:00.001", "ff ff ff ff ff ff ff ff"},
      {"TimestampOffset", "2460315,50829042,-780", "05 January 2024, 14:07:09 +1300",
       "9b 8a 25 00 f2 96 07 03 f4 fc ff ff"}};
  for (const std::string kind : {"ordinary", "relational"}) {
    expectDone("object new @o" + (kind == "ordinary" ? "" : " --" + kind));
    for (std::size_t i = 0; i < kRows.size(); ++i) {
      const std::string name = " @o -" + std::to_string(i) + ' ';
      expectDone("object define" + name + kRows[i][0]);
      expectDone("object set" + name + kRows[i][1]);
    }
    const std::string json = shown("--json");
    EXPECT_NE(json.find("\"kind\": \"" + kind + "\",\n  \"revision\": 42,"), json.npos) << json;
    std::size_t at = 0;
    for (std::size_t i = 0; i < kRows.size(); ++i) {
      const std::string value =
          "\"value\": \"" + kRows[i][2] + "\",\n      \"bytes\": \"" + kRows[i][3] + '"';
      at = json.find("\"name\": \"-" + std::to_string(i) + "\"", at);
      const std::size_t end = json.find('}', at);
      EXPECT_LT(json.find(value, at), end) << value << json;
    }
    // Strings, binaries and UTF-8 alone can be null.
    for (std::size_t i = 0; i < kRows.size(); ++i) {
      expectDone("object set @o -" + std::to_string(i) + " --null");
    }
    const std::string nulls = shown("");
    const auto count = [&](const std::string& text) {
      std::size_t found = 0;
      for (at = 0; (at = nulls.find(text, at)) != nulls.npos; ++at) ++found;
      return found;
    };
    EXPECT_EQ(count("  null\n"), 4u) << nulls;
    EXPECT_EQ(count("  0\n"), 5u) << nulls;  // the numbers, Byte among them
    std::filesystem::remove(path("o"));
  }
}

TEST_F(ObjectCommand, LeavesTheFileWhenAChangeIsRefused) {
  expectDone("object new @o --parent 2055.17");
  expectDone("object define @o n integer 42 --type 2055.3 --usage 9");
  expectDone("object define @o boss object");
  expectDone("object define @o s string");
  const std::string before = read("o");
  const std::string wrong = ": Invalid parameter value (1002)\n";
  const std::pair<std::string, Outcome> kRows[] = {
      {"define @o n string", {1, "", "\"n\": Dynamic Object property name conflict (1433)\n"}},
      {"define @o " + std::string(101, 'x') + " byte",
       {1, "",
        '"' + std::string(60, 'x') + "...\": Dynamic Object property name too long (1425)\n"}},
      {"define @o x any", {1, "", "\"x\": Invalid parameter type (1000)\n"}},
      {"define @o x 9", {2, "", "nomtool: \"9\" is no format; see nomtool formats\n"}},
      {"define @o x byte 256", {1, "", "\"256\"" + wrong}},
      {"define @o x byte --type 16777216.1", {1, "", "\"16777216.1\"" + wrong}},
      {"set @o n 4x", {1, "", "\"4x\"" + wrong}},
      {"set @o s \xE6\x97\xA5", {1, "", "\"\xE6\x97\xA5\"" + wrong}},
      {"set @o boss 1100", {1, "", "\"1100\"" + wrong}},
      {"set @o boss 4196359.18",
       {1, "", "\"boss\": Persistent objects cannot reference transient objects (1215)\n"}},
      {"set @o N 1",
       {1, "", "\"N\": The requested property is not defined for this object class (1011)\n"}},
      {"set @o n", {2, "", "nomtool: a value, --null or --usage is needed\n"}},
      {"new @o", {2, "", "nomtool: @o exists\n"}}};
  for (const auto& [line, outcome] : kRows) EXPECT_EQ(runTool("object " + line), outcome) << line;
  for (const char* line : {"", "show", "set @o n 1 --null", "set @o n 1 --usage 256", "show @none"})
    EXPECT_EQ(std::get<0>(runTool(std::string("object ") + line)), 2) << line;
  EXPECT_EQ(read("o"), before);
  EXPECT_NE(shown("").find("1      n     Integer  9      2055.3  42\n"), std::string::npos);
}

TEST_F(ObjectCommand, RefusesEveryCutAndEveryChangedByte) {
  const auto isRefused = [&](const std::string& bytes) {
    write("o", bytes);
    const auto [status, results, refusals] = runTool("object set @o name Bo");
    return status == 1 && results.empty() && refusals.rfind("@o: offset ", 0) == 0 &&
           read("o") == bytes;
  };
  for (std::size_t i = 0; i < kExample.size(); ++i) {
    EXPECT_TRUE(isRefused(kExample.substr(0, i))) << i;
    std::string changed = kExample;
    changed[i] = static_cast<char>(changed[i] ^ 0x10);
    EXPECT_TRUE(isRefused(changed)) << i;
  }
}

TEST_F(ObjectCommand, SaysWhereAFileIsWrong) {
  const std::string wrong = ": Invalid parameter value (1002)\n";
  const auto changed = [](std::size_t place, char byte) {
    std::string bytes = kHeader + kImages;
    bytes[place] = byte;
    return withChecksum(bytes);
  };
  std::string utf8 = kHeader + kImages;
  utf8[0xC5] = 51;
  utf8.replace(utf8.size() - 4, 4, "\x01\0\0\0\0\0\0\0\xC3"s);
  utf8[0x2E] = 12;
  utf8[0xD7] = 9;
  const std::pair<std::string, std::string> kRows[] = {
      {"NOMBLK1\n", "0: no object file" + wrong},
      {kExample.substr(0, 50), "50: the file is cut" + wrong},
      {kExample + "x", "234: something follows the end" + wrong},
      {kHeader + kImages + "\x0B\x64\x10\xF1", "230: the checksum differs" + wrong},
      {changed(0x29, '\x7F'), "234: the file is cut" + wrong},
      {changed(0x08, 3), "8: a wrong kind" + wrong},
      {changed(0x08, 2), "38: a wrong length" + wrong},
      {changed(0x5E, 2),
       "50: a wrong format: Incompatible Dynamic object format, eg. Ansi to Unicode (1465)\n"},
      {changed(0xC3, 'x'),
       "95: property 1: The requested property is not defined for this object class (1011)\n"},
      {changed(0xC5, 5), "95: property 1: Invalid parameter type (1000)\n"},
      {changed(0xD3, 1), "95: property 1" + wrong},
      {changed(0xDB, 4), "95: property 1" + wrong},
      {changed(0xE5, 'x'), "95: property 1" + wrong},
      {withChecksum(utf8), "95: property 1" + wrong}};
  for (const auto& [bytes, refusal] : kRows) {
    write("o", bytes);
    EXPECT_EQ(runTool("object show @o"), Outcome(1, "", "@o: offset " + refusal));
  }
}

}  // namespace
