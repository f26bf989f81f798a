// Expansions that end early: by damage, at the maximum of the target, or at the limit of the
// process. The library writes into held values in place; it must leave them as the model is left,
// to which every chunk is appended.

#include "sys/compress.h"
#include "sys/messages.h"

#include "nomos/testhooks.h"

#include "heldtext.h"
#include "nomos/temppath.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace {

using nomtest::ForeignText;
using nomtest::HeldText;

constexpr std::uint32_t kChunk = 36312;
constexpr std::uint32_t kTextSize = 10 * kChunk + 99;
const std::string kBefore = "before";

// Words of a few letters: some runs are compressed well, some badly.
std::string makeText() {
  std::mt19937_64 random(20240105);
  std::string text;
  while (text.size() < kTextSize) {
    const unsigned letters = random() % 16 == 0 ? 256 : 3;
    for (std::uint64_t left = random() % 100; left != 0; --left) {
      text += static_cast<char>('a' + random() % letters);
    }
  }
  return text.substr(0, kTextSize);
}

struct Case {
  std::string block;
  std::uint32_t maximum = kKoraNoMaximum;
  std::uint64_t limit = 0;
};

class Expansion : public testing::Test {
 protected:
  Expansion() : _text(makeText()) {
    HeldText target(DSKKORABINARY);
    EXPECT_EQ(target.compress(_text, 'z' + 256 * 6), 0);
    _block = target.text();
    doSetUncompressLimit(0);
  }
  ~Expansion() override { doSetUncompressLimit(0); }

  // Returns the status, and keeps what was expanded and logged.
  int expectSameAsModel(const Case& each) {
    const struct {
      PFormat format;
      int tooLong;
    } rows[] = {{DSKKORASTRING, 1035}, {DSKKORABINARY, 1091}, {DSKKORASTRINGUTF8, 1124}};
    doSetUncompressLimit(each.limit);
    int status = 0;
    for (const auto& [format, tooLong] : rows) {
      nomtest::Recorder recorder;
      const bool isString = format == DSKKORASTRING;
      HeldText held(format, kBefore, each.maximum);
      ForeignText model(kBefore, each.maximum, tooLong);
      status = held.uncompress(each.block, isString);
      _log = takeLines(recorder);
      EXPECT_EQ(model.uncompress(each.block, isString), status);
      EXPECT_EQ(takeLines(recorder), _log);
      const std::string all = held.text();
      EXPECT_EQ(all == model.text(), true) << all.size() << " and " << model.text().size();
      _expanded = all.substr(kBefore.size());
      const bool isDamaged = _block.compare(0, each.block.size(), each.block) != 0;
      EXPECT_EQ(isDamaged || all == kBefore + _text.substr(0, _expanded.size()), true);
    }
    return status;
  }

  std::string _text, _block, _expanded, _log;
};

TEST_F(Expansion, OfABadBlockKeepsWhatCameOut) {
  std::mt19937_64 random(20240105);
  for (std::size_t i = 0; i < 170; ++i) {
    Case each{_block};
    if (i % 2 == 0) {
      each.block.resize(i < 20 ? _block.size() - 1 - i / 2 : 1 + random() % (_block.size() - 1));
    } else {
      each.block[1 + random() % (_block.size() - 1)] ^= static_cast<char>(1 << random() % 8);
    }
    const bool isBounded = i % 3 == 0;
    if (isBounded) {
      each.maximum = static_cast<std::uint32_t>(kBefore.size() + random() % kTextSize);
      each.limit = 1 + random() % kTextSize;
    }
    const int status = expectSameAsModel(each);
    EXPECT_EQ(status == kUncompressFailed || (isBounded && status == kStringUtf8TooLong), true)
        << i << ' ' << status;
  }
}

// Whole chunks are kept, since the target takes a chunk or refuses it.
TEST_F(Expansion, EndsWithTheLastChunkThatTheTargetTakes) {
  for (std::uint32_t chunks = 0; chunks <= 11; ++chunks) {
    for (const std::uint32_t more : {0u, 1u, 98u, 99u, kChunk - 1}) {
      const std::uint32_t room = chunks * kChunk + more;
      const int status =
          expectSameAsModel({_block, static_cast<std::uint32_t>(kBefore.size()) + room});
      EXPECT_EQ(status, room >= kTextSize ? 0 : 1124) << room;
      EXPECT_EQ(_expanded.size(), room >= kTextSize ? kTextSize : chunks * kChunk) << room;
    }
  }
}

TEST_F(Expansion, KeepsNothingBeyondTheLimit) {
  for (const std::uint64_t limit : {1u, 35u, kChunk - 1, kChunk, kChunk + 1, 5 * kChunk,
                                    8 * kChunk + 50, kTextSize - 1, kTextSize, kTextSize + 1}) {
    const bool isEnough = limit >= kTextSize;
    EXPECT_EQ(expectSameAsModel({_block, kKoraNoMaximum, limit}), isEnough ? 0 : 1410) << limit;
    EXPECT_EQ(_expanded.size(), isEnough ? kTextSize : limit);
    EXPECT_EQ(_log.find("the limit of " + std::to_string(limit)) == std::string::npos, isEnough);
  }
}

TEST_F(Expansion, ThatIsCutJustAtTheLimitIsNotBeyondIt) {
  _block.pop_back();
  EXPECT_EQ(expectSameAsModel({_block, kKoraNoMaximum, kTextSize}), kUncompressFailed);
  EXPECT_EQ(_expanded.size(), kTextSize);
  EXPECT_EQ(_log.substr(0, _log.find(',')), "ZlibUncompress: inflate failed - -5");
  EXPECT_EQ(_log.find("limit"), std::string::npos) << _log;
}

TEST_F(Expansion, ThatExceedsTheLimitLeavesATargetOfWiderCharacters) {
  nomtest::Recorder recorder;
  _block[0] = 1 + 2 * 8;
  HeldText target(DSKKORASTRING, kBefore);
  doSetUncompressLimit(kTextSize - 1);
  EXPECT_EQ(target.uncompress(_block, true), kUncompressFailed);
  EXPECT_EQ(target.text(), kBefore);
  doSetUncompressLimit(kTextSize);
  EXPECT_EQ(target.uncompress(_block, true), 0);
  EXPECT_EQ(target.text().size(), kTextSize / 2);
}

// A step in place that finds no memory is taken by chunks instead.
TEST_F(Expansion, WithoutMemoryFailsOrSucceedsAndLeaksNothing) {
  HeldText target(DSKKORABINARY);
  EXPECT_EQ(target.compress(_text.substr(0, 3000), 'z' + 256), 0);
  std::string wide = _block, wideShort = target.text();
  wide[0] = wideShort[0] = '\x11';
  const struct {
    std::string block;
    std::size_t size;
  } rows[] = {{_block, kTextSize}, {target.text(), 3000}, {wide, kTextSize / 2}, {wideShort, 1500}};
  const std::uint64_t before = nosAllocatedBlocks();
  for (const auto& [block, size] : rows) {
    bool hasFailed = false;
    for (std::uint64_t n = 1; n < 10; ++n) {
      HeldText each(DSKANY);
      nosFailAllocation(n);
      const int status = each.uncompress(block, true);
      nosFailAllocation(0);
      EXPECT_EQ(status, status == 0 ? 0 : kMemoryAllocationFailed) << n;
      EXPECT_EQ(status != 0 || each.text().size() == size, true) << n;
      hasFailed = hasFailed || status != 0;
    }
    EXPECT_EQ(hasFailed, size != kTextSize);
  }
  {
    HeldText each(DSKANY);
    nosFailAllocation(1);
    EXPECT_EQ(each.compress("", 'P'), kMemoryAllocationFailed) << "the handler says 0";
    nosFailAllocation(0);
  }
  EXPECT_EQ(nosAllocatedBlocks(), before);
}

TEST_F(Expansion, TakesTheLimitOfTheConfigurationOnce) {
  nomtest::Recorder recorder;
  const std::string path = nomtest::tempPath(".ini").string();
  nosSetGlbIniFileName(path.c_str());
  const struct {
    const char* line;
    int status;
  } rows[] = {{"UncompressLimit=300K", 1410},
              {"UncompressLimit=400k", 0},
              {"UncompressLimit=0", 0},
              {"", 0},
              {"UncompressLimit=1000", 1410}};
  for (const auto& [line, status] : rows) {
    doSetUncompressLimit(kUncompressLimitOfConfiguration);
    for (const char* configured : {line, ""}) {
      std::ofstream(path) << "[NomCompress]\n" << configured << '\n';
      HeldText target(DSKKORABINARY);
      EXPECT_EQ(target.uncompress(_block), status) << line;
    }
  }
  nosSetGlbIniFileName(nullptr);
  std::filesystem::remove(path);
}

}  // namespace
