// pack, inspect and unpack: what comes back, the forms of columns, and what is refused.
#include "snapshotfiles.h"
#include "snapshotreader.h"

#include "nomos/testhooks.h"
#include "sys/compress.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using nomtest::quoted;
using nomtest::Snapshots;

// Tables of random rows come back byte by byte; their writer is the rules of RFC 4180 by hand.
TEST_F(Snapshots, GiveBackRandomTables) {
  const std::vector<std::vector<std::string>> pools = {
      {"true", "false", ""},
      {"0", "-1", "9223372036854775807", "-9223372036854775808", "12", ""},
      {"0.0", "-12.50", "12345678901234567890.123", "7", "0.00000000000000000000001"},
      {"2024-02-29", "0001-01-01", "9999-12-31", ""},
      {"2024/02/29", "1999/12/31"},
      {"2024-01-05 10:30:00", "2024-01-05 23:59:59", ""},
      {"2024-01-05T10:30:00.250", "2024-01-05T00:00:00.000"},
      {"007", "1e3", "-0", "+1", ".5", "2023-02-29", "24:00", "x"},
      {"caf\xC3\xA9", "a,b", "say \"hi\"", "two\nlines", "two\r\nlines", "", std::string("\0x", 2)},
      {"caf\xE9", "\xFF", "", "\xED\xA0\x80"}};
  std::mt19937 random(1);
  for (int table = 0; table < 60; ++table) {
    const std::string lineEnd = table % 2 == 0 ? "\n" : "\r\n";
    const char delimiter = table % 3 == 0 ? ';' : ',';
    std::vector<const std::vector<std::string>*> columns(2 + random() % 10);
    for (auto& column : columns) column = &pools[random() % pools.size()];
    std::string text = table % 5 == 0 ? "\xEF\xBB\xBF" : "";
    for (std::size_t i = 0; i < columns.size(); ++i) {
      text += (i == 0 ? "" : std::string(1, delimiter)) +
              quoted(i % 4 == 3 ? "a \"name\"" : "n", delimiter);
    }
    for (auto rows = random() % 300; rows > 0; --rows) {
      text += lineEnd;
      for (std::size_t i = 0; i < columns.size(); ++i) {
        if (i != 0) text += delimiter;
        text += quoted((*columns[i])[random() % columns[i]->size()], delimiter);
      }
    }
    if (table % 4 != 0) text += lineEnd;
    // Of a header without an end, the ends of the lines are not known.
    const std::string options =
        std::string("-d ") + delimiter + " -b " + std::to_string(1 + random() % 5'000) + " -j 3";
    EXPECT_EQ(pack(text, options), "");
    EXPECT_EQ(unpack(read("snapshot")), std::pair(0, text)) << "table " << table;
  }
}

// The bytes that docs/formats/snapshot.md shows, put together by hand; the checksums and the block
// are those of zlib.crc32 and zlib.compress of Python.
TEST_F(Snapshots, HaveTheBytesOfTheForm) {
  const auto description = [](char name, const std::string& rest) {
    return name + std::string(100, '\0') + rest;
  };
  const std::string salt("\x78\x13\xDC\xE1\4\0\0\0", 8);  // of "7,a" and LF
  const std::string header =
      std::string("NOMSNP1\n\2\0\0\0,\0\0\0\3\0\0\0\xF0\0\0\0", 24) + salt +
      std::string("<< format >>\0\1<< version >>\0\1<< charSize >>\0\1", 45) + "n,t" +
      description('n', std::string("\1\x2A\0\x15\0\0\0\0\0\0\0\6\0\0\0\0\0\0\0", 19)) +
      description('t', std::string("\x09\x33\0\x17\0\0\0\0\0\0\0\6\0\0\0\x08\0\0\0", 19)) +
      "\xBF\x86\x04\x98";
  const std::string block =
      "NBLK" + salt + std::string("\0\0\0\0\0\0\0\0\0\0\0\0\1\0\0\0\x1D\0\0\0\x16\0\0\0", 24) +
      "\xEE\x27\x6F\x90" +
      std::string(
          "\x09\x78\x9C\xE3\x64\x60\x60\x60\x67\x80\x00\x4E\x28\xCD\x08\xC5\x89\x00\x02"
          "\xD9\x00\x7D",
          22);
  const std::string trailer =
      "NEND" + salt +
      std::string("\1\0\0\0\1\0\0\0\0\0\0\0\x08\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 28) +
      "\x77\x43\x82\x4A";
  EXPECT_EQ(unpack(header + block + trailer), std::pair(0, std::string("n,t\n7,a\n")));
  pack("n,t\n7,a\n");
  EXPECT_EQ(read("snapshot").substr(0, header.size()), header);
  EXPECT_EQ(read("snapshot").substr(read("snapshot").size() - trailer.size()), trailer);
}

TEST_F(Snapshots, TellWhichRowsComeBackWrittenInAnotherWay) {
  const struct {
    const char* text;
    const char* back;
    const char* said;
  } rows[] = {
      {"a,b\n\"1\",2\n", "a,b\n1,2\n", "1 row will come back written in another way\n"},
      {"a,b\n1,x\"y\n", "a,b\n1,\"x\"\"y\"\n", "1 row will come back written in another way\n"},
      {"a,b\n\n1,2\r\n", "a,b\n1,2\n", "2 rows will come back written in another way\n"},
      {"\"a\",b\n1,2", "a,b\n1,2", "1 row will come back written in another way\n"},
      {"a\n\n1\n", "a\n\n1\n", ""},  // an empty field of the only column
      {"\n1\n", "\n1\n", ""},        // which has no name
      {"a,\"b\rc\"", "a,\"b\rc\"", ""},
      {"a,b\n1,2\n\n", "a,b\n1,2\n", "1 row will come back written in another way\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(pack(row.text), row.said);
    EXPECT_EQ(unpack(read("snapshot")).second, row.back);
  }
}

TEST_F(Snapshots, RefuseTextsThatAreNoTable) {
  const struct {
    const char* text;
    const char* said;
  } rows[] = {
      {"", "there is no header row"},
      {"\xEF\xBB\xBF", "there is no header row"},
      {"a,\"b\nc\"\r1,2\r3,4\r", "the lines end with CR alone"},
      {"a,\"b\n1,2\n", "row 0: a quote is not closed"},
      {"a,b\n1,2\n3\n", "row 2: 1 field instead of 2"},
      {"a,b\n1,2\n3,\"4\"5\n", "row 2: text follows a closing quote"},
      {"a,b\n1,2\n3,\"4\n", "row 2: a quote is not closed"},
  };
  for (const auto& row : rows) {
    write("text", row.text);
    write("snapshot", "before");
    EXPECT_EQ(
        runTool("pack -q -b 1 @text @snapshot"),
        Outcome(1, "", std::string("@text: ") + row.said + ": Invalid parameter value (1002)\n"));
    EXPECT_EQ(read("snapshot"), "before");
  }
}

TEST_F(Snapshots, NameTheRowThatIsTooLong) {
  write("text", "a\n1\n\n" + std::string(72'000'000, 'x'));
  EXPECT_EQ(
      runTool("pack -q -b 5000000 @text @snapshot"),
      Outcome(1, "",
              "@text: row 3: the row has more than 64 MiB: Invalid parameter value (1002)\n"));
  write("text", std::string(72'000'000, 'x'));
  EXPECT_EQ(
      runTool("pack -q -b 5000000 @text @snapshot"),
      Outcome(1, "",
              "@text: row 0: the row has more than 64 MiB: Invalid parameter value (1002)\n"));
}

TEST_F(Snapshots, AreMadeOfFilesThatCanBeReadTwice) {
  EXPECT_EQ(runTool("pack -q - @snapshot"),
            Outcome(2, "", "standard input: a table is read twice, and must be a file\n"));
  if (std::filesystem::is_character_file("/dev/null")) {
    EXPECT_EQ(runTool("pack -q /dev/null @snapshot"),
              Outcome(2, "", "/dev/null: a table is read twice, and must be a file\n"));
  }
  write("text", "a\n1\n");
  EXPECT_EQ(runTool("pack -q @text @text"),
            Outcome(2, "", "@text: the snapshot would replace the table\n"));
  EXPECT_EQ(read("text"), "a\n1\n");
}

TEST_F(Snapshots, GoThroughTheStandardStreams) {
  const std::string text = "a,b\n1,2\n3,\n";
  pack(text);
  const std::string snapshot = read("snapshot");
  EXPECT_EQ(piped("pack -q " + path("text") + " -", ""), snapshot);
  EXPECT_EQ(piped("unpack -q -", snapshot), text);
}

TEST_F(Snapshots, NameTheLibraryThatIsMissing) {
  pack("a\n1\n");
  nosDenyLibrary("zlib1");
  ZLibDesc::processWide().allowLibReload();
  for (const char* const line :
       {"pack -q @text @snapshot", "inspect -q @snapshot", "unpack -q @snapshot @back"}) {
    const std::string name = line[0] == 'p' ? "@text" : "@snapshot";
    EXPECT_EQ(runTool(line),
              Outcome(1, "", name + ": zlib: Library not found (1006); see nomtool doctor\n"));
  }
  nosDenyLibrary(nullptr);
  ZLibDesc::processWide().allowLibReload();
}

// The limits are those of docs/formats/snapshot.md; a description has 120 bytes.
TEST_F(Snapshots, AreNotMadeOfAFirstLineThatAHeaderHasNoRoomFor) {
  const std::size_t most = std::size_t{1} << 24;
  const auto columns = [](std::size_t count, const char* rows) {
    const std::string commas(count - 1, ',');
    return commas + '\n' + commas + '\n' + rows + (*rows != '\0' ? commas + '\n' : "");
  };
  const struct {
    std::string text;
    std::string said;  // empty: the text comes back
  } rows[] = {
      {columns(most / 120, ""), ""},
      {columns(most / 120 + 1, ""), "139811 columns are more than a snapshot can describe"},
      // With absent fields.
      {columns(most / 120, "1"), "139810 columns are more than a snapshot can describe"},
      {std::string(most, 'n') + "\n1\n", ""},
      {std::string(most + 1, 'n') + "\n1\n", "the names of the columns take more than 16 MiB"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.said);
    write("text", row.text);
    write("snapshot", "before");
    const auto [status, results, refusals] = runTool("pack -q -b 8388608 @text @snapshot");
    if (row.said.empty()) {
      EXPECT_TRUE(unpack(read("snapshot")) == std::pair(0, row.text)) << refusals;
    } else {
      EXPECT_EQ(status, 1);
      EXPECT_EQ(refusals, "@text: row 0: " + row.said + ": Invalid parameter value (1002)\n");
      EXPECT_EQ(read("snapshot"), "before");
    }
  }
}

TEST_F(Snapshots, HaveBlocksThatEndBeforeTheyAreFull) {
  using namespace nomtool;
  const SnapshotSchema schema({}, {"n"}, {ColumnForm::kInteger}, false, 0);
  BlockBuilder one(schema);
  EXPECT_TRUE(one.add(0, {"1"}));
  const std::size_t length = one.bytes().size();
  for (const std::size_t fullBytes : {3 * length, 3 * length - 1, std::size_t{1}}) {
    BlockBuilder builder(schema, fullBytes);
    std::size_t count = 0;
    while (builder.add(count, {"1"})) ++count;
    EXPECT_EQ(count, std::max<std::size_t>(fullBytes / length, 1));
    EXPECT_EQ(builder.rowCount(), count);
    EXPECT_EQ(builder.bytes().size(), count * length);
  }

  // 2 MiB of text in a piece are 36 MB of images.
  std::string text = std::string(4'999, ',') + '\n';
  for (int i = 0; i < 5'000; ++i) text += i == 0 ? "1.5" : ",1.5";
  for (int i = 0; i < 450; ++i) text += '\n' + std::string(4'999, ',');
  pack(text, "-b 8388608 -j 1");
  SnapshotReader reader(path("snapshot"), false);
  SnapshotBlock block;
  std::uint64_t offset = 0;
  for (std::string bytes; reader.next(block, bytes, offset);) {
    EXPECT_LE(block.expandedLength, kFullBlockBytes);
  }
  EXPECT_EQ(reader.trailer().blockCount, 2u);
  EXPECT_TRUE(unpack(read("snapshot")) == std::pair(0, text));
}

// The sums are those that Python's decimal gives: sum(Decimal(row["x"]) for row in csv.DictReader).
TEST_F(Snapshots, AreInspected) {
  pack("id,x,when,note\n1,0.50,2024-01-05,b\n2,-1.25,2023-12-31,a\n30,,2024-02-01,\n");
  const std::string table = std::get<1>(runTool("inspect -q @snapshot"));
  EXPECT_EQ(table.substr(table.find("column")),
            "column  type     filled  empty  smallest    largest     sum\n"
            "id      integer  3       0      1           30          33\n"
            "x       decimal  2       1      -1.25       0.50        -0.75\n"
            "when    date     3       0      2023-12-31  2024-02-01\n"
            "note    text     2       1      a           b\n");
  const std::string json = std::get<1>(runTool("inspect -q --json @snapshot"));
  EXPECT_NE(json.find("\"rows\": 3,"), json.npos) << json;
  EXPECT_NE(json.find("\"sum\": \"-0.75\""), json.npos) << json;
}

// 2^79 is 604462909807314587353088.
TEST_F(Snapshots, HaveDecimalsOfFieldsThatComeBack) {
  const std::pair<const char*, const char*> rows[] = {{"-9223372036854775809", "decimal"},
                                                      {"99999999999999999999999", "decimal"},
                                                      {"100000000000000000000000", "text"},
                                                      {"0.99999999999999999999999", "decimal"},
                                                      {"0.999999999999999999999999", "text"},
                                                      {"60446290980731458735308.7", "decimal"},
                                                      {"60446290980731458735308.8", "text"},
                                                      {"-60446290980731458735308.8", "decimal"},
                                                      {"-60446290980731458735308.9", "text"},
                                                      {"1.000000000000000000000000", "text"},
                                                      {"-0", "text"},
                                                      {"-0.00", "text"}};
  for (const auto& [field, form] : rows) {
    pack(std::string("n\n") + field + '\n');
    const std::string table = std::get<1>(runTool("inspect -q @snapshot"));
    EXPECT_NE(table.find(std::string("n       ") + form), table.npos) << table;
  }
}

TEST_F(Snapshots, ShowTheirProgressAsLines) {
  write("text", "a,b\n1,2\n");
  EXPECT_EQ(std::get<2>(runTool("pack @text @snapshot")),
            "survey @text: 100 %\npack @text: 100 %\n");
}

}  // namespace
