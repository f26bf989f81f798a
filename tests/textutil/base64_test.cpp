// Base64 against the vectors of RFC 4648 and against plain implementations of both directions,
// which take the bits one group and one character at a time. Every set of inner loops that this
// processor can run is held to them.

#include "nomos/testhooks.h"
#include "sys/messages.h"
#include "sys/textutil.h"
#include "textutil/base64kernels.h"

#include "rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

using namespace nomutil::textutil;

namespace {

const std::string kCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string referenceEncode(const std::string& bytes, bool oneLine) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    if (!oneLine && i != 0 && i % 57 == 0) text += "\r\n";
    unsigned char group[3] = {};
    const std::size_t count = bytes.copy(reinterpret_cast<char*>(group), 3, i);
    const unsigned bits = group[0] * 65536u + group[1] * 256u + group[2];
    for (unsigned k = 0; k < 4; ++k)
      text += k > count ? '=' : kCharacters[bits >> (18 - 6 * k) & 63];
  }
  return text;
}

// "1420", or "0:" and the bytes.
std::string referenceDecode(const std::string& text) {
  const std::size_t end = std::min(text.find('='), text.size());
  std::string bytes = "0:";
  unsigned bits = 0, count = 0;
  for (std::size_t i = 0; i < end; ++i) {
    const std::size_t sextet = kCharacters.find(text[i]);
    if (sextet == std::string::npos) continue;
    bits = bits << 6 | static_cast<unsigned>(sextet);
    const unsigned place = count++ % 4;
    if (place != 0) bytes += static_cast<char>(bits >> (6 - 2 * place));
  }
  const unsigned padding = text.compare(end, 2, "==") == 0 ? 2 : end < text.size() ? 1 : 0;
  return count % 4 == 0 || count % 4 + padding >= 4 ? bytes : "1420";
}

std::string shown(int status, const std::uint8_t* bytes, std::uint32_t byteCount) {
  return status != 0 ? std::to_string(status) : "0:" + std::string(bytes, bytes + byteCount);
}

// Blocks of exactly the size, so that the sanitizers see what lies beyond.
using Bytes = std::vector<std::uint8_t>;
using Text = std::vector<char>;

std::string encode(const std::string& bytes, bool oneLine) {
  char* text;
  std::uint32_t length;
  const Bytes exact(bytes.begin(), bytes.end());
  const auto byteCount = static_cast<std::uint32_t>(exact.size());
  EXPECT_EQ(base64Encode(exact.data(), byteCount, text, length, oneLine), 0);
  EXPECT_EQ(std::strlen(text), length);
  const std::string all(text, length);
  base64Free(text);
  return all;
}

std::string decode(const std::string& text) {
  std::uint8_t* bytes;
  std::uint32_t byteCount = 0;
  const auto length = static_cast<std::uint32_t>(text.size());
  const int status = base64DecodeWithLength(text.data(), length, bytes, byteCount);
  const std::string all = shown(status, bytes, byteCount);
  base64Free(bytes);
  return all;
}

void expectDecoded(const Base64Kernels& kernels, const std::string& text) {
  const Text exact(text.begin(), text.end());
  Bytes bytes(text.size());
  std::uint32_t byteCount = 0;
  const int status = decodeBase64(kernels, exact.data(), exact.size(), bytes.data(), byteCount);
  ASSERT_EQ(shown(status, bytes.data(), byteCount), referenceDecode(text)) << text;
}

template <class Check>
void forUsableKernels(Check check) {
  for (const Base64Kernels* kernels : allBase64Kernels()) {
    SCOPED_TRACE(kernels->name);
    if (kernels->isUsable()) check(*kernels);
  }
}

std::string randomBytes(std::mt19937_64& random, std::size_t count) {
  std::string all(count, '\0');
  for (char& byte : all) byte = static_cast<char>(random());
  return all;
}

TEST(Base64Decode, IsLenientButForPadding) {
  const auto check = [](nomtest::Row row) {
    std::replace(row[0].begin(), row[0].end(), '_', '\n');
    EXPECT_EQ(referenceDecode(row[0]), row[1]);
    return decode(row[0]);
  };
  nomtest::expectRows(2, check,
                      "TWFu__TWFu 0:ManMan  .T*W-F,u 0:Man  TWFu=junk 0:Man  =TWFu 0:  _ 0: "
                      "TQ==TWFu 0:M  T_Q_== 0:M  TWE= 0:Ma  TWE== 0:Ma  TQ= 1420  TQ 1420 "
                      "TWE 1420  T 1420  TWFuT== 1420  TQ=_= 1420");
}

TEST(Base64Encode, BreaksLinesBeforeGroupsAlone) {
  nomtest::expectRows(
      2, [](const nomtest::Row& row) { return encode(row[0], false); },
      "f Zg==  fo Zm8=  foo Zm9v  foob Zm9vYg==  fooba Zm9vYmE=  foobar Zm9vYmFy");
  EXPECT_EQ(encode(std::string(114, 'x'), false).size(), 76u + 2 + 76);
  EXPECT_EQ(encode(std::string(115, 'x'), false).size(), 76u + 2 + 76 + 2 + 4);
  std::mt19937_64 random(20240105);
  for (std::size_t length = 0; length < 400; ++length) {
    const std::string bytes = randomBytes(random, length);
    for (const bool oneLine : {false, true}) {
      const std::string text = encode(bytes, oneLine);
      EXPECT_EQ(text, referenceEncode(bytes, oneLine));
      EXPECT_EQ(decode(text), "0:" + bytes);
    }
  }
}

TEST(Base64Kernels, EncodeGroupsAndLines) {
  std::mt19937_64 random(20240105);
  forUsableKernels([&](const Base64Kernels& kernels) {
    for (std::size_t count = 0; count < 70; ++count) {
      std::string bytes = randomBytes(random, 3 * count), text(4 * count, '\0');
      kernels.encode(Bytes(bytes.begin(), bytes.end()).data(), count, text.data());
      EXPECT_EQ(text, referenceEncode(bytes, true));
      bytes = randomBytes(random, 57 * count);
      text.assign(78 * count, '\0');
      kernels.encodeLines(Bytes(bytes.begin(), bytes.end()).data(), count, text.data());
      EXPECT_EQ(text, referenceEncode(bytes, false) + (count > 0 ? "\r\n" : ""));
    }
  });
}

TEST(Base64Kernels, DecodeEveryCharacterAtEveryPlace) {
  const std::string line = referenceEncode(std::string(57, '\x6D'), true) + "\r\n";
  forUsableKernels([&](const Base64Kernels& kernels) {
    for (int character = 0; character < 256; ++character) {
      for (std::size_t place = 0; place < line.size(); ++place) {
        std::string text = line + line;
        text[place] = static_cast<char>(character);
        expectDecoded(kernels, text);
      }
    }
  });
}

// Lines of every kind, with more junk or less, some cut.
TEST(Base64Kernels, DecodeAnyText) {
  std::mt19937_64 random(20240105);
  for (int round = 0; round < 3000; ++round) {
    const std::size_t byteCount = 1 + random() % (round % 50 != 0 ? 300 : 9000);
    const std::string clean = referenceEncode(randomBytes(random, byteCount), true);
    const std::size_t width = (random() % 3 + 17) * 4;
    const std::size_t spacing = std::size_t{1} << random() % 12;
    const std::string junk = randomBytes(random, 8) + " \t-_\x80\xFF";
    std::string text;
    for (std::size_t i = 0; i < clean.size(); ++i) {
      if (i != 0 && i % width == 0) text += round % 2 != 0 ? "\r\n" : "\n";
      text += clean[i];
      while (random() % (2 * spacing) == 0) text += junk[random() % junk.size()];
    }
    if (random() % 3 == 0) text.resize(1 + random() % text.size());
    forUsableKernels([&](const Base64Kernels& kernels) { expectDecoded(kernels, text); });
  }
}

TEST(Base64, LeavesNoBlockBehindButThatOfAMalformedText) {
  char* text;
  std::uint8_t* bytes;
  std::uint32_t length = 7;
  const std::uint64_t before = nosAllocatedBlocks();
  nosFailAllocation(1);
  EXPECT_EQ(base64Encode(nullptr, 0, text, length, false), kNoRoom);
  EXPECT_EQ(text, nullptr);
  nosFailAllocation(1);
  EXPECT_EQ(base64Decode("TWFu", bytes, length), kNoRoom);
  EXPECT_EQ(bytes, nullptr);
  nosFailAllocation(0);
  length = 77;
  EXPECT_EQ(base64Decode("TWFuTQ", bytes, length), kBase64DecodingFailed);
  EXPECT_EQ(length, 77u);
  EXPECT_EQ(nosAllocatedBlocks(), before + 1);
  base64Free(bytes);
  EXPECT_EQ(bytes, nullptr);
  EXPECT_EQ(base64Decode("", bytes, length), 0);
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(nosAllocatedBlocks(), before);
}

}  // namespace
