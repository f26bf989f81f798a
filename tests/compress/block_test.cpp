// Compressed blocks. Streams that are not made by the code under test are in stored form (RFC 1951,
// 3.2.4), which can be written by hand.

#include "sys/compress.h"
#include "sys/messages.h"

#include "heldtext.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>

namespace {

using nomtest::ForeignText;
using nomtest::HeldText;

constexpr std::uint32_t kChunk = 36312;
constexpr PFormat kHeldFormats[] = {DSKANY, DSKKORASTRING, DSKKORABINARY, DSKKORASTRINGUTF8};

// A zlib stream that holds up to 65,535 bytes as they are.
std::string stored(const std::string& bytes) {
  std::string stream = "\x78\x01\x01";
  const auto put = [&stream](std::size_t first, std::size_t second) {
    stream += static_cast<char>(first);
    stream += static_cast<char>(second);
  };
  put(bytes.size(), bytes.size() >> 8);
  put(~bytes.size(), ~bytes.size() >> 8);
  std::uint32_t low = 1, high = 0;
  for (const char each : bytes) {
    stream += each;
    low = (low + static_cast<unsigned char>(each)) % 65521;
    high = (high + low) % 65521;
  }
  put(high >> 8, high);
  put(low >> 8, low);
  return stream;
}

std::string randomBytes(std::size_t count) {
  std::mt19937_64 random(count);
  std::string all(count, '\0');
  for (char& byte : all) byte = static_cast<char>(random());
  return all;
}

// The status, and what a target then holds behind what it held before.
std::string expanded(const std::string& block, bool isString = false,
                     const std::string& before = "") {
  HeldText target(isString ? DSKKORASTRING : DSKKORABINARY, before);
  const int status = target.uncompress(block, isString);
  return std::to_string(status) + ":" + target.text();
}

TEST(CompressedBlock, HasTheBytesOfItsPage) {
  const std::string block("\x09\x78\x01\x01\x03\x00\xFC\xFF\x61\x62\x63\x02\x4D\x01\x27", 15);
  HeldText target(DSKKORABINARY);
  EXPECT_EQ(target.compress("abc", 'z'), 0);
  EXPECT_EQ(target.text(), block);
  EXPECT_EQ("\x09" + stored("abc"), block);
  EXPECT_EQ(expanded(block), "0:abc");
  EXPECT_EQ(expanded(block + "more"), "0:abc") << "what follows the stream does not count";
}

// Sizes around the chunk's, of what is compressed and of the result, through every kind of target.
TEST(CompressedBlock, GivesBackWhatWentIn) {
  const std::size_t sizes[] = {0,          1,          1000,           kChunk - 17, kChunk - 16,
                               kChunk,     kChunk + 1, 2 * kChunk - 1, 2 * kChunk,  3 * kChunk + 1,
                               9 * kChunk, 700'000};
  for (const std::size_t size : sizes) {
    for (const std::string& text : {randomBytes(size), std::string(size, 'x')}) {
      for (const int level : {0, 1, 9}) {
        for (const PFormat format : kHeldFormats) {
          HeldText block(format), again(format, "before");
          ASSERT_EQ(block.compress(text, 'z' + 256 * level), 0) << size;
          EXPECT_EQ(block.text()[0], '\x09');
          ASSERT_EQ(again.uncompress(block.text(), format == DSKKORASTRING), 0) << size;
          ASSERT_EQ(again.text() == (format == DSKANY ? text : "before" + text), true) << size;
        }
      }
    }
  }
}

// Through code 38, or 23 for characters.
TEST(CompressedBlock, ReachesAForeignHandlerInChunks) {
  const std::string text = randomBytes(2 * kChunk + 10);
  ForeignText block, bytes, characters;
  block.refused = bytes.refused = 23;
  characters.refused = 38;
  ASSERT_EQ(block.compress(text, 'z'), 0);
  ASSERT_EQ(block.appends.size(), 4u);
  block.appends.pop_back();
  EXPECT_EQ(block.appends, (std::vector<std::uint32_t>{1, kChunk, kChunk})) << "first the header";
  ForeignText packed;
  ASSERT_EQ(packed.compress(std::string(1000, 'x'), 'z' + 256 * 9), 0);
  EXPECT_EQ(packed.appends.size(), 2u) << "a chunk is filled first";
  for (ForeignText* again : {&bytes, &characters}) {
    ASSERT_EQ(again->uncompress(block.text(), again == &characters), 0);
    EXPECT_EQ(again->appends, (std::vector<std::uint32_t>{kChunk, kChunk, 10}));
    EXPECT_EQ(again->text() == text, true);
  }
}

TEST(DoAltCompress, TakesLetterAndLevelFromTheMethod) {
  nomtest::Recorder recorder;
  const struct {
    int method, status;
    std::string block, log;
  } rows[] = {
      {'z' + 256 * 9, 0, std::string("\x09\x78\xDA\x03\0\0\0\0\x01", 9), ""},
      {'z', 0, "\x09" + stored(""), ""},
      {'z' + 256 * 12, 1409, "\x09", "ZlibCompress: deflateInit failed - -2\n"},
      {'P', 1112, "\x0A", ""},
      {'P' + 256 * 3, 1112, "\x0A", ""},
      {'Z', 1002, "", ""},
      {0, 1002, "", ""},
      {'z' - 256, 1002, "", ""},
      {-'z', 1002, "", ""},
  };
  for (const auto& [method, status, block, log] : rows) {
    HeldText target(DSKKORABINARY);
    EXPECT_EQ(target.compress("", method), status) << method;
    EXPECT_EQ(target.text(), block) << method;
    EXPECT_EQ(nomtest::takeLines(recorder, ", GLE"), log) << method;
  }
  unsigned char nothing = 9;
  EXPECT_EQ(doAltUncompress(false, &nothing, 0, nullptr), 1002);
  EXPECT_EQ(doCompress(false, nullptr, 0, nullptr), 1112);
  EXPECT_EQ(doUncompress(false, nullptr, 0, nullptr, nullptr), 1112);
}

TEST(DoAltUncompress, RefusesByHeaderAndStream) {
  nomtest::Recorder recorder;
  const std::string stream = stored("abc");
  const std::string wrongSum = stream.substr(0, stream.size() - 1) + "?";
  const std::string needsDictionary("\x78\x20\0\0\0\1", 6);
  const std::string failed = "ZlibUncompress: inflate failed - ";
  const struct {
    std::string block, result, log;
  } rows[] = {
      {"", "1002:", ""},
      {"\x0A" + stream, "1112:", ""},
      {"\x0B" + stream, "1002:", ""},
      {"\x08" + stream, "1002:", ""},
      {"\x0F" + stream, "1002:", ""},
      {"\x09", "1410:", failed + "-5\n"},
      {"\x09" + stream.substr(0, 9), "1410:ab", failed + "-5\n"},
      {"\x09" + stream.substr(0, stream.size() - 1), "1410:abc", failed + "-5\n"},
      {"\x09" + wrongSum, "1410:abc", failed + "-3\n"},
      {"\x09" + needsDictionary, "1410:", failed + "2\n"},
      {"\x09not zlib", "1410:", failed + "-3\n"},
      {"\xFF" + stream, "1002:", ""},
      {"\xD1" + stream, "0:abc", ""},  // wider and otherwise ordered bytes are bytes all the same
  };
  for (const auto& [block, result, log] : rows) {
    EXPECT_EQ(expanded(block), result) << testing::PrintToString(block);
    EXPECT_EQ(nomtest::takeLines(recorder, ", GLE"), log) << testing::PrintToString(block);
  }
}

// Wider characters replace the text of the target, narrowed; plain ones are appended.
TEST(DoAltUncompress, NarrowsCharacters) {
  const auto bytes = [](const char* text, std::size_t size) { return std::string(text, size); };
  const auto header = [](int width, int order) {
    return std::string(1, static_cast<char>(1 + 8 * width + 64 * order));
  };
  const std::string little2 = stored(bytes("h\0\xE9\x03", 4)),
                    big2 = stored(bytes("\0h\x03\xE9", 4));
  const std::string little4 = stored(bytes("h\0\0\0\xE9\0\1\0", 8));
  const std::string big4 = stored(bytes("\0\0\0h\0\1\0\xE9", 8));
  const struct {
    std::string block, before, result;
  } rows[] = {
      {header(1, 0) + stored("hi"), "abc", "0:abchi"},
      {header(1, 1) + stored("hi"), "abc", "0:hi"},
      {header(2, 1) + little2, "abc", "0:h\xE9"},
      {header(2, 1) + little2, "", "0:h\xE9"},
      {header(2, 0) + big2, "abc", "0:h\xE9"},
      {header(2, 2) + big2, "abc", "0:h\xE9"},
      {header(2, 3) + big2, "abc", "0:h\xE9"},
      {header(4, 1) + little4, "abc", "0:h\xE9"},
      {header(4, 0) + big4, "abc", "0:h\xE9"},
      {header(2, 1) + stored(bytes("h\0i\0?", 5)), "abc", "0:hi"},
      {header(2, 1) + stored(""), "abc", "0:"},
      {header(2, 1) + "not zlib", "abc", "1410:abc"},
      {header(0, 0) + stored("hi"), "abc", "1002:abc"},
      {header(3, 0) + stored("hi"), "abc", "1002:abc"},
      {header(7, 1) + stored("hi"), "abc", "1002:abc"},
  };
  nomtest::Recorder recorder;
  for (const auto& [block, before, result] : rows) {
    EXPECT_EQ(expanded(block, true, before), result) << testing::PrintToString(block);
    ForeignText foreign(before);
    const int status = foreign.uncompress(block, true);
    EXPECT_EQ(std::to_string(status) + ":" + foreign.text(), result);
  }
}

TEST(CompressedBlock, NeedsATargetWithAHandler) {
  std::string block = "\x09" + stored("abc"), wide = "\x11" + stored("abc");
  DskParam target = DskParam::allZero(), handlerless = DskParam::allZero();
  handlerless.header.format = DSKKORABINARY;
  for (DskParam* each : {static_cast<DskParam*>(nullptr), &target, &handlerless}) {
    for (const int method : {'z', 'P'}) {
      EXPECT_EQ(doAltCompress(false, nullptr, 0, method, each), kInvalidParameterType);
    }
    for (std::string* source : {&block, &wide}) {
      auto* const bytes = reinterpret_cast<unsigned char*>(source->data());
      const auto length = static_cast<unsigned>(source->size());
      EXPECT_EQ(doAltUncompress(true, bytes, length, each), kInvalidParameterType);
    }
  }
}

// Format 5 with an object is what the library's handler refuses.
TEST(CompressedBlock, LeavesATargetThatTheHandlerRefuses) {
  nomtest::Recorder recorder;
  const std::string text = randomBytes(3 * kChunk);
  HeldText block(DSKKORABINARY), target(DSKKORASTRING, "abc");
  ASSERT_EQ(block.compress(text, 'z'), 0);
  target.parameter().header.format = DSKANY;
  EXPECT_EQ(target.uncompress(block.text(), true), kInvalidParameterType);
  target.parameter().header.format = DSKKORASTRING;
  EXPECT_EQ(target.text(), "abc");
}

TEST(CompressedBlock, EndsWithTheStatusOfTheHandler) {
  for (const int code : {16, 19, 20}) {
    ForeignText target;
    target.refused = code;
    EXPECT_EQ(target.uncompress("\x51" + stored("hi"), true), ForeignText::kRefusal) << code;
  }
  const std::string text = randomBytes(2 * kChunk);
  for (const std::uint32_t chunks : {0u, 1u, 2u}) {
    ForeignText target("", 1 + chunks * kChunk, kStringTooLong);
    EXPECT_EQ(target.compress(text, 'z'), kStringTooLong) << chunks;
    EXPECT_EQ(target.appends.size(), chunks + 2) << "nothing follows the refusal";
  }
  ForeignText full("", 0);
  EXPECT_EQ(full.compress(text, 'z'), kBinaryTooLong);
  EXPECT_EQ(full.appends.size(), 1u);
  EXPECT_EQ(ForeignText("", 0).compress("", 'P'), kBinaryTooLong);
}

}  // namespace
