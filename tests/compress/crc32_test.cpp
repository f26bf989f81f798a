// CRC-32 by the definition, bit by bit, beside every kernel, over every length and alignment that
// takes another path through one of them.

#include "compress/crc32kernels.h"
#include "sys/compress.h"

#include "recorder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

using namespace nomutil::compress;

namespace {

using Bytes = std::vector<std::uint8_t>;

std::uint32_t addByte(std::uint32_t crc, std::uint8_t byte) {
  crc ^= byte;
  for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc % 2 != 0 ? 0xEDB88320u : 0);
  return crc;
}

unsigned compute(std::string text, unsigned crc) {
  auto length = static_cast<unsigned>(text.size());
  const unsigned before = crc;
  const unsigned result = compute_CRC32(text.data(), &length, &crc);
  EXPECT_EQ(crc, before);
  return result;
}

TEST(ComputeCrc32, GivesThePublishedValues) {
  const struct {
    const char* text;
    unsigned crc;
  } rows[] = {
      {"", 0},
      {"123456789", 0xCBF43926},
      {"The quick brown fox jumps over the lazy dog", 0x414FA339},
  };
  for (const auto& [text, crc] : rows) EXPECT_EQ(~compute(text, 0xFFFFFFFF), crc) << text;
  EXPECT_EQ(compute("", 0x12345678), 0x12345678u);
  EXPECT_EQ(compute("6789", compute("12345", 0xFFFFFFFF)), ~0xCBF43926);
  EXPECT_EQ(compute("123456789", 0), 0x2DFD2D88u) << "nothing is inverted";
}

TEST(ComputeCrc32, ReportsNullPointersAndIsSafe) {
  nomtest::Recorder recorder;
  unsigned one = 1;
  EXPECT_EQ(compute_CRC32(nullptr, &one, &one), 1u);
  EXPECT_EQ(compute_CRC32(&one, nullptr, &one) + compute_CRC32(&one, &one, nullptr), 0u);
  EXPECT_EQ(recorder.takeAssertions().size(), 3u);
}

TEST(Crc32Kernels, AgreeWithTheDefinitionAtEveryLength) {
  constexpr std::size_t kMost = 1700;
  std::mt19937_64 random(20240105);
  for (const Crc32Kernel* kernel : allCrc32Kernels()) {
    if (!kernel->isUsable()) continue;
    for (std::size_t shift = 0; shift < 3; ++shift) {
      const auto start = static_cast<std::uint32_t>(random());
      Bytes bytes(kMost);
      for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
      std::uint32_t expected = start;
      for (std::size_t length = 0; length < kMost; ++length) {
        // A block that ends with the bytes, so that the sanitizers see what lies beyond.
        Bytes exact(shift, 0xEE);
        exact.insert(exact.end(), bytes.begin(),
                     bytes.begin() + static_cast<std::ptrdiff_t>(length));
        exact.shrink_to_fit();
        ASSERT_EQ(kernel->update(start, exact.data() + shift, length), expected)
            << kernel->name << ' ' << length;
        expected = addByte(expected, bytes[length]);
      }
    }
  }
}

}  // namespace
