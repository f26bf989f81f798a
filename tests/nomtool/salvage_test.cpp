// Snapshots that are damaged: what is refused, what is left of them, and what is told of the rest.
#include "snapshotfiles.h"
#include "snapshotreader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using nomtest::quoted;
using nomtest::Snapshots;

// A table of 4 blocks, small enough to be damaged at every place.
class DamagedSnapshots : public Snapshots {
 protected:
  DamagedSnapshots() {
    for (int i = 0; i < 12; ++i) {
      _lines.push_back(std::to_string(i * 37) + ",line " + std::string(std::size_t(i), 'x') + "\n");
    }
    std::string text = "n,text\n";
    for (const std::string& line : _lines) text += line;
    pack(text, "-b 40 -j 1");
    _whole = read("snapshot");
    _text = text;
    for (std::size_t at = 0; (at = _whole.find("NBLK", at)) != _whole.npos; ++at) {
      _marks.push_back(at);
      _firstRows.push_back(static_cast<unsigned char>(_whole[at + 16]));
    }
    _marks.push_back(_whole.find("NEND"));
    _firstRows.push_back(_lines.size());
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
  std::vector<std::size_t> _marks;  // where the blocks and the trailer begin
  std::vector<std::size_t> _firstRows;
  std::string _whole;
  std::string _text;
};

TEST_F(DamagedSnapshots, AreRefusedAndSalvagedWhateverByteIsWrong) {
  for (std::size_t i = 0; i < _whole.size(); ++i) {
    SCOPED_TRACE("byte " + std::to_string(i));
    std::string damaged = _whole;
    damaged[i] = static_cast<char>(damaged[i] ^ (1 << i % 8));
    const std::size_t left = expectHarmless(damaged);
    // Without the header nothing is left; else one block is lost, or the trailer.
    const auto behind = std::upper_bound(_marks.begin(), _marks.end(), i) - _marks.begin();
    const bool isBlock = behind > 0 && static_cast<std::size_t>(behind) < _marks.size();
    const std::size_t lost =
        isBlock ? _firstRows[std::size_t(behind)] - _firstRows[std::size_t(behind) - 1] : 0;
    EXPECT_EQ(left, behind == 0 ? 0u : _lines.size() - lost);
  }
}

TEST_F(DamagedSnapshots, AreRefusedAndSalvagedWhereverTheyAreCut) {
  for (std::size_t length = 0; length < _whole.size(); ++length) {
    SCOPED_TRACE("length " + std::to_string(length));
    std::size_t rowCount = 0;  // of the whole blocks
    for (std::size_t i = 0; i + 1 < _marks.size() && _marks[i + 1] <= length; ++i) {
      rowCount = _firstRows[i + 1];
    }
    EXPECT_EQ(expectHarmless(_whole.substr(0, length)), rowCount);
  }
}

TEST_F(DamagedSnapshots, TellWhatIsLost) {
  ASSERT_EQ(_marks.size(), 5u);
  const auto damaged = [&](std::vector<std::size_t> places) {
    std::string bytes = _whole;
    for (const std::size_t place : places) bytes[place] ^= 1;
    return bytes;
  };
  const auto offset = [&](std::size_t mark) {
    return " at offset " + std::to_string(_marks[mark]);
  };
  const auto lost = [&](std::size_t from, std::size_t to) {
    return ": rows " + std::to_string(_firstRows[from] + 1) + " to " +
           std::to_string(_firstRows[to]) + " are lost\n";
  };
  const std::string status = ": Invalid parameter value (1002)";
  const std::string differs = ": the checksum differs" + status;
  const std::string follows = "@snapshot: trailer" + offset(4) + ": something follows the trailer" +
                              status + ": no row is lost\n";
  const std::string unknown = ": rows 13 and following are lost, if there were any\n";
  const std::string twice = _whole.substr(_marks[1], _marks[2] - _marks[1]);
  const std::pair<std::string, std::string> rows[] = {
      {damaged({_marks[1] + 40}), "@snapshot: block 1" + offset(1) + differs + lost(1, 2)},
      {damaged({_marks[1] + 40, _marks[2] + 40}),
       "@snapshot: blocks 1 to 2" + offset(1) + differs + lost(1, 3)},
      {damaged({_marks[0] + 40, _marks[3] + 40}), "@snapshot: block 0" + offset(0) + differs +
                                                      lost(0, 1) + "@snapshot: block 3" +
                                                      offset(3) + differs + lost(3, 4)},
      {std::string(_whole).erase(_marks[1], twice.size()),
       "@snapshot: block 1" + offset(1) + ": missing" + lost(1, 2)},
      {std::string(_whole).insert(_marks[2], twice),
       "@snapshot: offset " + std::to_string(_marks[2]) + ": the block is not in its place" +
           status + ": no row is lost\n"},
      {damaged({_marks[4] + 20}), "@snapshot: trailer" + offset(4) +
                                      ": the checksum of the trailer differs" + status + unknown},
      {damaged({_marks[4]}),
       "@snapshot: trailer" + offset(4) + ": no block begins here" + status + unknown},
      {_whole.substr(0, _marks[4] + 20),
       "@snapshot: trailer" + offset(4) + ": the file is cut" + status + unknown},
      {_whole.substr(0, _marks[4]),
       "@snapshot: offset " + std::to_string(_marks[4]) + ": the file is cut" + status + unknown},
      {_whole + 'x', follows},
      {damaged({_marks[3] + 40}) + 'x',
       "@snapshot: block 3" + offset(3) + differs + lost(3, 4) + follows},
      {std::string(_whole).erase(_marks[3], _marks[4] - _marks[3]) + 'x',
       "@snapshot: block 3" + offset(3) + ": missing" + lost(3, 4) +
           std::string(follows).replace(follows.find(offset(4)), offset(4).size(), offset(3))},
  };
  for (const auto& [bytes, said] : rows) {
    SCOPED_TRACE(said);
    expectHarmless(bytes);
    EXPECT_EQ(runTool("unpack -q -j 1 --salvage @snapshot @back"), Outcome(1, "", said));
  }
  write("snapshot", rows[0].first);
  EXPECT_EQ(runTool("unpack -q @snapshot @back"),
            Outcome(1, "", "@snapshot: block 1" + offset(1) + differs + '\n'));
  write("snapshot", _whole + 'x');
  EXPECT_EQ(runTool("unpack -q @snapshot @back"),
            Outcome(1, "",
                    "@snapshot: trailer" + offset(4) + ": something follows the trailer" + status +
                        '\n'));
  EXPECT_EQ(expectHarmless(std::string(_whole).insert(_marks[2], twice)), _lines.size());
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

}  // namespace
