// The loader of zlib, and what the functions do while the library or an entry of it is missing.

#include "compress/standby.h"
#include "sys/compress.h"
#include "sys/messages.h"

#include "nomos/lasterror.h"
#include "nomos/testhooks.h"

#include "heldtext.h"
#include "support/threads.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using nomtest::HeldText;

constexpr const char* kEntries[] = {"uncompress",   "deflate",      "inflate",
                                    "inflateInit_", "deflateInit_", "compress2",
                                    "inflateEnd",   "deflateEnd",   "zlibVersion"};

// zlib is loaded anew when a test begins and when it ends.
class ZLib : public testing::Test {
 protected:
  ZLib() { reload(); }
  ~ZLib() override {
    reload();
    EXPECT_EQ(doZlibInit(), 0);
  }

  static void reload(const char* deniedLibrary = nullptr, const char* deniedEntry = nullptr) {
    nosDenyLibrary(deniedLibrary);
    nosDenyEntry(deniedEntry);
    ZLibDesc::processWide().allowLibReload();
  }

  std::string takeLines() { return nomtest::takeLines(_recorder); }

  nomtest::Recorder _recorder;
};

TEST_F(ZLib, ThatIsNotFoundFailsOnceAndThenByOperation) {
  HeldText target(DSKKORABINARY);
  reload("zlib1");
  EXPECT_EQ(target.compress("abc", 'z'), kLibraryNotFound);
  EXPECT_EQ(nosGetLastError(), 1006u);
  EXPECT_EQ(target.text() + takeLines(), "");
  EXPECT_EQ(doZlibInit(), 0) << "the failure has been told";

  EXPECT_EQ(target.compress("abc", 'z'), kCompressFailed);
  EXPECT_EQ(target.text(), "\x09");
  EXPECT_EQ(takeLines(), "ZlibCompress: deflateInit failed - -1, GLE=1008\n");
  EXPECT_EQ(target.uncompress("\x09x"), kUncompressFailed);
  EXPECT_EQ(takeLines(), "ZlibUncompress: inflateInit failed - -1, GLE=1008\n");

  ZLibDesc& zlib = ZLibDesc::processWide();
  ZLibStream stream{};
  unsigned char room[20] = {};
  unsigned length = sizeof room;
  const auto expectMissing = [](int code) {
    EXPECT_EQ(code, -1);
    EXPECT_EQ(nosGetLastError(), 1008u);
    nosSetLastError(0);
  };
  expectMissing(doZlibCompress(room, &length, room, 3, 9));
  expectMissing(doZlibUncompress(room, &length, room, 3));
  expectMissing(zlib.deflate(&stream, 0));
  expectMissing(zlib.inflate(&stream, 0));
  expectMissing(zlib.inflateInit_(&stream, "1.2.8", sizeof stream));
  expectMissing(zlib.deflateInit_(&stream, 9, "1.2.8", sizeof stream));
  expectMissing(zlib.inflateEnd(&stream));
  expectMissing(zlib.deflateEnd(&stream));
  expectMissing(zlib.zlibVersion() == nullptr ? -1 : 0);
  EXPECT_EQ(length, sizeof room);

  reload("zlib1");
  EXPECT_EQ(doZlibCompress(room, &length, room, 3, 9), kLibraryNotFound);
  reload("zlib1");
  EXPECT_EQ(doZlibUncompress(room, &length, room, 3), kLibraryNotFound);
  reload();
  EXPECT_EQ(doZlibCompress(room, &length, room, 3, 9), 0);
  EXPECT_EQ(std::string(zlib.zlibVersion(), 2), "1.");
}

TEST_F(ZLib, ThatLacksAnEntryIsRefusedEveryTime) {
  for (const char* entry : kEntries) {
    reload(nullptr, entry);
    EXPECT_EQ(doZlibInit(), kEntryPointNotInLibrary) << entry;
    EXPECT_EQ(nosGetLastError(), 1008u);
    EXPECT_EQ(takeLines(), std::string("ZLibDesc: Unable to get address of '") + entry +
                               "' in 'zlib1', O/S Error 127.\n");
    HeldText target(DSKKORABINARY);
    EXPECT_EQ(target.compress("abc", 'z'), kEntryPointNotInLibrary) << entry;
    EXPECT_EQ(target.uncompress("\x09x"), kEntryPointNotInLibrary) << entry;
    EXPECT_EQ(target.text(), "");
    EXPECT_EQ(takeLines(), "") << "it is logged once";
    ZLibDesc silent(false);
    EXPECT_FALSE(silent.isProcLoaded());
    EXPECT_EQ(takeLines(), "");
    EXPECT_EQ(silent.zlibVersion() == nullptr, std::strcmp(entry, "zlibVersion") == 0);
  }
}

TEST_F(ZLib, KeepsItsVersionWhileThereIsMemoryAndTheEntry) {
  const std::uint64_t blocks = nosAllocatedBlocks();
  {
    ZLibDesc zlib(false);
    EXPECT_EQ(zlib.loadEntryPoints(), kLibraryNotFound) << "it is not loaded yet";
    nosFailAllocation(1);
    EXPECT_TRUE(zlib.isProcLoaded());
    nosFailAllocation(0);
    EXPECT_STREQ(zlib.zlibVersion(), "");
    for (const char* denied : {static_cast<const char*>(nullptr), "zlibVersion", ""}) {
      nosDenyEntry(denied);
      zlib.allowLibReload();
      const bool isDenied = denied != nullptr && *denied != '\0';
      EXPECT_EQ(zlib.isProcLoaded(), !isDenied);
      EXPECT_EQ(nosAllocatedBlocks(), blocks + (isDenied ? 0 : 1));
    }
  }
  EXPECT_EQ(nosAllocatedBlocks(), blocks);
}

// A length is 32 bits wide here and has zlib's own width there.
TEST_F(ZLib, OneShotFunctionsWriteTheLengthAlone) {
  struct {
    unsigned length, canary = 0xCAFEF00D;
  } packed, plain;
  const std::vector<unsigned char> text(1000, 'a');
  std::vector<unsigned char> block(100), again(1000);
  packed.length = 100;
  ASSERT_EQ(doZlibCompress(block.data(), &packed.length, text.data(), 1000, 9), 0);
  EXPECT_LT(packed.length, 30u);
  EXPECT_EQ(block[1], 0xDA) << "the best compression";
  const auto expand = [&](unsigned length) {
    plain.length = length;
    return doZlibUncompress(again.data(), &plain.length, block.data(), packed.length);
  };
  EXPECT_EQ(expand(1000), 0);
  EXPECT_EQ(plain.length, 1000u);
  EXPECT_EQ(again, text);
  EXPECT_EQ(expand(999), -5);
  block[5] ^= 0xFF;
  EXPECT_EQ(expand(1000), -3);
  EXPECT_EQ(packed.canary + plain.canary, 2 * 0xCAFEF00Du);

  EXPECT_EQ(doZlibCompress(block.data(), nullptr, text.data(), 1, 9), kInvalidParameterValue);
  EXPECT_EQ(doZlibUncompress(block.data(), nullptr, text.data(), 1), kInvalidParameterValue);
  EXPECT_EQ(_recorder.takeExpressions(), "destLength != nullptr");
}

TEST_F(ZLib, IsLoadedByThreadsThatRaceForIt) {
  for (int round = 0; round < 20; ++round) {
    ZLibDesc zlib(false);
    constexpr int kThreads = 4;
    std::vector<int> lengths(kThreads);
    nomtest::inThreads(kThreads, [&](unsigned thread) {
      unsigned char block[20];
      unsigned length = sizeof block;
      const bool isGood = zlib.isProcLoaded() && zlib.compress2(block, &length, block, 0, 9) == 0;
      lengths[thread] = isGood ? static_cast<int>(length + std::strlen(zlib.zlibVersion())) : -1;
    });
    for (const int each : lengths) EXPECT_GT(each, 8) << "the stream of nothing has 8 bytes";
  }
}

TEST(StandBy, RoutinesHandTheirInputOver) {
  nomtest::Recorder recorder;
  std::string written;
  const auto write = [](void* context, const unsigned char* bytes, unsigned length) {
    static_cast<std::string*>(context)->append(bytes, bytes + length);
  };
  const auto* const input = reinterpret_cast<const unsigned char*>("ab\0c");
  EXPECT_EQ(nomutil::compress::fakeImplode(input, 4, write, &written), 0);
  EXPECT_EQ(nomutil::compress::fakeExplode(input, 3, write, &written), 0);
  EXPECT_EQ(written, std::string("ab\0cab\0", 7));
  std::string all;
  for (const nomtest::LogLine& line : recorder.takeLines()) {
    all += (line.level == NosLogLevel::Information ? "|" : "?") + line.text;
  }
  EXPECT_EQ(all, "|compress: faking implode|compress: faking explode");
}

}  // namespace
