// CRC-32 for any processor, eight bytes at a time (slicing by eight, Kounavis and Berry 2005): a
// table for each place of a byte among them holds what that byte adds to the CRC behind all eight.

#include "crc32kernels.h"

#include <array>
#include <cstring>

namespace nomutil::compress {
namespace {

constexpr std::size_t kSlices = 8;
using Table = std::array<std::uint32_t, 256>;

// kTables[k][b]: the CRC of the byte b and k bytes of 0 behind it.
constexpr std::array<Table, kSlices> kTables = [] {
  std::array<Table, kSlices> tables{};
  for (std::uint32_t byte = 0; byte < 256; ++byte) {
    std::uint32_t crc = byte;
    for (Table& table : tables) {
      for (int bit = 0; bit < 8; ++bit) crc = timesX(crc);
      table[byte] = crc;
    }
  }
  return tables;
}();

bool isUsable() {
  return true;
}

std::uint32_t update(std::uint32_t crc, const std::uint8_t* bytes, std::size_t length) {
  for (; length >= kSlices; length -= kSlices, bytes += kSlices) {
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    word ^= crc;
    crc = 0;
    for (std::size_t i = 0; i < kSlices; ++i) {
      crc ^= kTables[kSlices - 1 - i][word >> (8 * i) & 0xFF];
    }
  }
  for (; length != 0; --length, ++bytes) crc = kTables[0][(crc ^ *bytes) & 0xFF] ^ crc >> 8;
  return crc;
}

}  // namespace

constinit const Crc32Kernel kPortableCrc32 = {"portable", isUsable, update};

}  // namespace nomutil::compress
