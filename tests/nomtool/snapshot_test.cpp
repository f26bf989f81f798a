// pack, inspect and unpack: what comes back, the forms of columns, and snapshots that are damaged.
#include "snapshotreader.h"
#include "toolfiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

// A field by the rules of RFC 4180.
std::string quoted(const std::string& field, char delimiter) {
  if (field.find_first_of(std::string("\"\r\n") + delimiter) == field.npos) return field;
  std::string text = "\"";
  for (const char c : field) text += c == '"' ? "\"\"" : std::string(1, c);
  return text + '"';
}

class Snapshots : public nomtest::ToolFiles {
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
      {"", "row 0: there is no header row"},
      {"a,\"b\n1,2\n", "row 0: a quote is not closed"},
      {"a,b\n1,2\n3\n", "row 2: 1 fields instead of 2"},
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
      {columns(most / 120 - 1, "1"), ""},  // with absent fields
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

// A table of 4 blocks, small enough to be damaged at every place.
class DamagedSnapshots : public Snapshots {
 protected:
  DamagedSnapshots() {
    for (int i = 0; i < 12; ++i) {
      _lines.push_back(std::to_string(i * 37) + ",line " + std::string(std::size_t(i), 'x') + "\n");
    }
    std::string text = "n,text\n";
    for (const std::string& line : _lines) text += line;
    pack(text, "-b 60 -j 1");
    _whole = read("snapshot");
    _text = text;
  }

  // Whether a text is the header and some of the lines, in their order.
  bool isPartOfText(const std::string& text) const {
    std::size_t at = 7;
    if (text.compare(0, at, _text, 0, at) != 0) return false;
    for (const std::string& line : _lines) {
      if (text.compare(at, line.size(), line) == 0) at += line.size();
    }
    return at == text.size();
  }

  // Refused with nothing written; salvaged, nothing is invented. The lines that are left.
  std::size_t expectHarmless(const std::string& snapshot) {
    EXPECT_EQ(unpack(snapshot), std::pair(1, std::string()));
    const auto [status, text] = unpack(snapshot, "--salvage");
    EXPECT_EQ(status, 1);
    if (text.empty()) return 0;
    EXPECT_TRUE(isPartOfText(text)) << text;
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) - 1;
  }

  std::vector<std::string> _lines;
  std::string _whole;
  std::string _text;
};

TEST_F(DamagedSnapshots, AreRefusedAndSalvagedWhateverByteIsWrong) {
  const std::size_t firstBlock = _whole.find("NBLK");
  ASSERT_NE(firstBlock, _whole.npos);
  ASSERT_GT(std::count(_whole.begin(), _whole.end(), 'N'), 4);
  for (std::size_t i = 0; i < _whole.size(); ++i) {
    SCOPED_TRACE("byte " + std::to_string(i));
    std::string damaged = _whole;
    damaged[i] = static_cast<char>(damaged[i] ^ (1 << i % 8));
    const std::size_t left = expectHarmless(damaged);
    // Without the header nothing is left; else one block is lost, the largest of which has 8 lines.
    EXPECT_GE(left, i < firstBlock ? 0u : _lines.size() - 8);
  }
}

TEST_F(DamagedSnapshots, AreRefusedAndSalvagedWhereverTheyAreCut) {
  for (std::size_t length = 0; length < _whole.size(); ++length) {
    SCOPED_TRACE("length " + std::to_string(length));
    expectHarmless(_whole.substr(0, length));
  }
}

TEST_F(DamagedSnapshots, TellWhatIsLost) {
  std::vector<std::size_t> blocks;
  for (std::size_t at = 0; (at = _whole.find("NBLK", at)) != _whole.npos; ++at)
    blocks.push_back(at);
  ASSERT_GE(blocks.size(), 3u);
  std::string damaged = _whole;
  damaged[blocks[1] + 40] ^= 1;
  write("snapshot", damaged);
  const std::string offset = std::to_string(blocks[1]);
  EXPECT_EQ(runTool("unpack -q @snapshot @back"),
            Outcome(1, "",
                    "@snapshot: block 1 at offset " + offset +
                        ": the checksum differs: Invalid parameter value (1002)\n"));
  std::uint64_t first = 0, next = 0;
  std::memcpy(&first, _whole.data() + blocks[1] + 16, 8);
  std::memcpy(&next, _whole.data() + blocks[2] + 16, 8);
  EXPECT_EQ(runTool("unpack -q --salvage @snapshot @back"),
            Outcome(1, "",
                    "@snapshot: offset " + offset +
                        ": the checksum differs: Invalid parameter value (1002): rows " +
                        std::to_string(first + 1) + " to " + std::to_string(next) + " are lost\n"));
  // A block that is left out leaves a gap; one that stands twice is no row.
  expectHarmless(std::string(_whole).erase(blocks[1], blocks[2] - blocks[1]));
  EXPECT_EQ(expectHarmless(std::string(_whole).insert(
                blocks[2], _whole.substr(blocks[1], blocks[2] - blocks[1]))),
            _lines.size());
}

// A field that ends as another snapshot of the same columns does is no place to find blocks in.
// Bytes by chance are not compressed, so that the block among them is stored as it is.
TEST_F(Snapshots, GiveNoRowsOfASnapshotInAField) {
  std::mt19937 random(1);
  const auto chance = [&](std::size_t count) {
    std::string bytes;
    while (bytes.size() < count) bytes += static_cast<char>(random() % 256);
    return bytes;
  };
  const auto packed = [&](const std::string& field, std::size_t blockBytes) {
    std::string text = "n,raw\n0," + quoted("\xFF" + field, ',') + '\n';
    for (auto i = 2 + random() % 4; i > 0; --i) {
      text += std::to_string(i) + ',' + quoted("\xFF" + chance(20), ',') + '\n';
    }
    pack(text, "-j 1 -b " + std::to_string(blockBytes));
    return read("snapshot");
  };
  const auto blocksOf = [&] {
    std::vector<std::string> blocks;
    nomtool::SnapshotReader reader(path("snapshot"), true);
    nomtool::SnapshotBlock block;
    std::uint64_t offset = 0;
    for (std::string bytes; reader.next(block, bytes, offset);) {
      blocks.push_back(std::to_string(block.firstRow) + ' ' + bytes);
    }
    return blocks;
  };
  for (int table = 0; table < 3; ++table) {
    SCOPED_TRACE("table " + std::to_string(table));
    const std::string inner = packed("", 1);
    const std::string end = inner.substr(inner.rfind("NBLK"));
    const std::string outer = packed(end + chance(1'200), 1 + random() % 60);
    ASSERT_NE(outer.find(end), outer.npos);
    const std::vector<std::string> whole = blocksOf();
    ASSERT_GT(whole.size(), 1u);
    const auto isPartOfWhole = [&](const std::vector<std::string>& blocks) {
      auto at = blocks.begin();
      for (const std::string& block : whole) at += at != blocks.end() && *at == block ? 1 : 0;
      return at == blocks.end();
    };
    const auto put = [&](std::size_t at, int byte) {
      std::fstream file(path("snapshot"), std::ios::in | std::ios::out | std::ios::binary);
      file.seekp(static_cast<std::streamoff>(at)).put(static_cast<char>(byte));
    };
    const std::size_t firstBlock = outer.find("NBLK");
    for (std::size_t i = firstBlock; i < outer.size(); ++i) {
      put(i, outer[i] ^ (1 << i % 8));
      ASSERT_TRUE(isPartOfWhole(blocksOf())) << "byte " << i;
      put(i, outer[i]);
    }
    for (std::size_t length = outer.size(); length-- > firstBlock;) {
      std::filesystem::resize_file(path("snapshot"), length);
      ASSERT_TRUE(isPartOfWhole(blocksOf())) << "length " << length;
    }
  }
}

TEST_F(Snapshots, ShowTheirProgressAsLines) {
  write("text", "a,b\n1,2\n");
  EXPECT_EQ(std::get<2>(runTool("pack @text @snapshot")),
            "survey @text: 100 %\npack @text: 100 %\n");
}

}  // namespace
