// The signature, then for each block two lengths and the block, then a length of 0 and the CRC-32
// of everything. All numbers are 32 bits, little-endian. The file of no bytes is
//   4E 4F 4D 42 4C 4B 31 0A  00 00 00 00 00 00 00 00
// Lengths are checked before anything of that length is read or expanded.
#include "blockfile.h"

#include "checksum.h"
#include "heldbytes.h"

#include "sys/compress.h"
#include "sys/messages.h"

#include <cstring>
#include <vector>

namespace nomtool {
namespace {

constexpr std::string_view kSignature = "NOMBLK1\n";
constexpr std::uint32_t kMostBytes = 1u << 20;  // of a block before it is compressed
// zlib adds some bytes to each 16 KiB that it cannot compress.
constexpr std::uint32_t kMostBlock = kMostBytes + kMostBytes / 16;
constexpr std::size_t kHeaderSize = 8;
constexpr char kBlockOfBytes = 9;  // its first byte: zlib, and characters of one byte

void putNumber(char* to, std::uint32_t number) {
  for (unsigned i = 0; i < 4; ++i) to[i] = static_cast<char>(number >> (8 * i) & 0xFF);
}

std::uint32_t numberAt(const char* from) {
  std::uint32_t number = 0;
  for (unsigned i = 0; i < 4; ++i) {
    number |= std::uint32_t{static_cast<unsigned char>(from[i])} << (8 * i);
  }
  return number;
}

void writeHeader(Transfer& transfer, std::uint32_t first, std::uint32_t second) {
  char header[kHeaderSize];
  putNumber(header, first);
  putNumber(header + 4, second);
  transfer.write({header, sizeof header});
}

// Reads all of byteCount bytes, or refuses the input as cut.
void readWhole(Transfer& transfer, char* to, std::size_t byteCount) {
  const bool isWhole = transfer.read(to, byteCount) == byteCount;
  if (!isWhole) transfer.check(kUncompressFailed, transfer.offset(), "the file is cut");
}

void refuseUnless(bool isRight, const Transfer& transfer, std::uint64_t offset, const char* what) {
  if (!isRight) transfer.check(kUncompressFailed, offset, what);
}

}  // namespace

void compressStream(Transfer& transfer, int level) {
  transfer.write(kSignature);
  std::vector<unsigned char> piece(kMostBytes);
  HeldBytes block(kMostBlock);
  Checksum sum;
  for (;;) {
    const std::uint64_t offset = transfer.offset();
    const auto count = static_cast<std::uint32_t>(transfer.read(piece.data(), piece.size()));
    if (count == 0) break;
    sum.add(piece.data(), count);
    block.clear();
    const int method = kCompressZlib + kCompressLevelUnit * level;
    transfer.check(doAltCompress(false, piece.data(), count, method, block.parameter()), offset,
                   "the block is not compressed");
    writeHeader(transfer, count, static_cast<std::uint32_t>(block.view().size()));
    transfer.write(block.view());
  }
  writeHeader(transfer, 0, sum.value());
}

void uncompressStream(Transfer& transfer) {
  char header[kHeaderSize];
  readWhole(transfer, header, sizeof header);
  refuseUnless(std::string_view(header, sizeof header) == kSignature, transfer, 0,
               "no file of compressed blocks");
  std::vector<char> block(kMostBlock);
  HeldBytes expanded(kMostBlock);
  Checksum sum;
  for (;;) {
    const std::uint64_t offset = transfer.offset();
    readWhole(transfer, header, sizeof header);
    const std::uint32_t count = numberAt(header);
    const std::uint32_t length = numberAt(header + 4);
    if (count == 0) {
      refuseUnless(length == sum.value(), transfer, offset, "the checksum differs");
      refuseUnless(transfer.read(header, 1) == 0, transfer, offset + kHeaderSize,
                   "something follows the end");
      return;
    }
    refuseUnless(count <= kMostBytes && length <= kMostBlock, transfer, offset, "a wrong length");
    readWhole(transfer, block.data(), length);
    expanded.clear();
    auto* const bytes = reinterpret_cast<unsigned char*>(block.data());
    transfer.check(doAltUncompress(false, bytes, length, expanded.parameter()),
                   offset + kHeaderSize, "a wrong block");
    refuseUnless(expanded.view().size() == count, transfer, offset, "a wrong length");
    refuseUnless(block[0] == kBlockOfBytes, transfer, offset + kHeaderSize, "a wrong block");
    sum.add(expanded.view().data(), count);
    transfer.write(expanded.view());
  }
}

}  // namespace nomtool
