// The commands over blocks: crc, compress, uncompress, and the file of compressed blocks.
#include "toolfiles.h"

#include "nomos/testhooks.h"
#include "sys/compress.h"
#include "sys/params.h"

#include "recorder.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <system_error>
#include <utility>

namespace {

class CrcCommand : public nomtest::ToolFiles {};
class BlockCommands : public nomtest::ToolFiles {};

constexpr std::size_t kBlock = std::size_t{1} << 20;

std::string number(std::size_t value) {
  std::string bytes;
  for (int i = 0; i < 4; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
  return bytes;
}

std::string header(std::size_t first, std::size_t second) {
  return number(first) + number(second);
}

// The byte 9, and what python3 -c 'import zlib; print(zlib.compress(b"hello hello hello").hex())'
// shows.
const std::string kBlockOfHello(
    "\x09\x78\x9c\xcb\x48\xcd\xc9\xc9\x57\xc8\x40\x90\x00\x3a\x2e\x06\x7d", 17);
const std::string kSignature = "NOMBLK1\n";
// printf 'hello hello hello' | gzip | tail -c 8 | xxd shows the checksum at the end.
const std::string kFileOfHello =
    kSignature + header(17, 17) + kBlockOfHello + header(0, 0xE5F98880);

TEST_F(CrcCommand, IsThatOfOtherProgramsInAnyNumberOfPieces) {
  write("check", "123456789");
  write("none", "");
  write("long", std::string(600'000, 'a'));  // zlib.crc32(b"a" * 600000) of Python
  EXPECT_EQ(runTool("crc @check @none @nothing @long"),
            Outcome(2, "cbf43926  9  @check\n00000000  0  @none\nb8e3e871  600000  @long\n",
                    "@nothing: " + std::system_category().message(2) + "\n"));
  EXPECT_EQ(std::get<1>(runTool("crc --json @check")),
            "[\n  {\n    \"file\": \"@check\",\n    \"bytes\": 9,\n    \"crc32\": \"cbf43926\"\n"
            "  }\n]\n");
  EXPECT_EQ(piped("crc -", "123456789").substr(0, 14), "cbf43926  9  -");
}

TEST_F(BlockCommands, WriteAndReadTheBytesOfTheForm) {
  EXPECT_EQ(made("uncompress", kFileOfHello), "hello hello hello");
  EXPECT_EQ(made("uncompress", kSignature + header(0, 0)), "");
  EXPECT_EQ(made("compress", ""), kSignature + header(0, 0));
  // zlib.compress(b"hello", 0), zlib.crc32(b"hello")
  const std::string stored("\x09\x78\x01\x01\x05\x00\xfa\xffhello\x06\x2c\x02\x15", 17);
  EXPECT_EQ(made("compress --level 0", "hello"),
            kSignature + header(5, stored.size()) + stored + header(0, 0x3610A686));
  // RFC 1950 has the level in the second byte of a stream.
  EXPECT_EQ(made("compress", "hello").substr(16, 3), "\x09\x78\x9C");
  EXPECT_EQ(made("compress -l 9", "hello").substr(16, 3), "\x09\x78\xDA");
}

TEST_F(BlockCommands, KeepBytesOfAnySize) {
  std::mt19937_64 random(20240105);
  for (const std::size_t size : {kBlock - 1, kBlock, kBlock + 1, 3 * kBlock + 5}) {
    std::string bytes(size, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    const std::string compressed = made("compress", bytes);
    EXPECT_LE(compressed.size(), size + size / 100 + 100);
    EXPECT_TRUE(made("uncompress", compressed) == bytes) << size;
  }
  EXPECT_TRUE(piped("uncompress", piped("compress", "\r\n\x1A")) == "\r\n\x1A");
}

// Damage that does no harm is that of the bits between the end of the deflate data and its byte's.
TEST_F(BlockCommands, RefuseWhatIsCutOrDamagedOrReadItAsItWas) {
  nomtest::Recorder log;
  for (std::size_t size = 0; size < kFileOfHello.size(); ++size) {
    EXPECT_EQ(refusal("uncompress", kFileOfHello.substr(0, size)),
              std::to_string(size) + ": the file is cut: Uncompress operation failed (1410)\n");
    for (const unsigned flipped : {1u, 0x10u, 0x80u, 0xFFu}) {
      std::string damaged = kFileOfHello;
      damaged[size] = static_cast<char>(static_cast<unsigned char>(damaged[size]) ^ flipped);
      write("in", damaged);
      const int status = std::get<0>(runTool("uncompress @in -o @out"));
      EXPECT_EQ(status, size == 28 && status == 0 ? 0 : 1) << size << ' ' << flipped;
      EXPECT_EQ(read("out"), status == 0 ? "hello hello hello" : "before");
      write("out", "before");
    }
  }
}

TEST_F(BlockCommands, SayWhatIsWrong) {
  nomtest::Recorder log;
  const std::string zeros(2 * kBlock, '\0');
  DskParam bomb;
  paramCreateKoraBinary(&bomb, nullptr, 0, kKoraNoMaximum, 2);
  doAltCompress(false, reinterpret_cast<const unsigned char*>(zeros.data()), 2 * kBlock, 'z' + 256,
                &bomb);
  unsigned char* bytes = nullptr;
  std::uint32_t length = 0;
  DerefBinary(&bomb, &bytes, &length);
  const std::string begin = kSignature + header(17, 17);
  const std::string failed = "Uncompress operation failed (1410)\n";
  const std::pair<std::string, std::string> kRows[] = {
      {"no such file of blocks", "0: no file of compressed blocks: " + failed},
      {begin + '\x0A' + kBlockOfHello, "16: a wrong block: Feature has been deprecated (1112)\n"},
      {begin + '\x0B' + kBlockOfHello, "16: a wrong block: Invalid parameter value (1002)\n"},
      {kSignature + header(kBlock, length) + std::string(bytes, bytes + length),
       "16: a wrong block: Binary too long (1091)\n"},
      {kSignature + header(18, 17) + kBlockOfHello, "8: a wrong length: " + failed},
      {kSignature + header(kBlock + 1, 17), "8: a wrong length: " + failed},
      {kSignature + header(1, 0xFFFFFFFF), "8: a wrong length: " + failed},
      {begin + kBlockOfHello + header(0, 1), "33: the checksum differs: " + failed},
      {kFileOfHello + '\0', "41: something follows the end: " + failed}};
  for (const auto& [file, text] : kRows) EXPECT_EQ(refusal("uncompress", file), text);
  paramDeleteKoraBinary(&bomb);

  nosDenyLibrary("zlib1");
  ZLibDesc::processWide().allowLibReload();
  for (const char* const line : {"compress @in -o @out", "uncompress @in -o @out"}) {
    EXPECT_EQ(runTool(line),
              Outcome(1, "", "@in: zlib: Library not found (1006); see nomtool doctor\n"));
  }
  nosDenyLibrary(nullptr);
  ZLibDesc::processWide().allowLibReload();
}

}  // namespace
