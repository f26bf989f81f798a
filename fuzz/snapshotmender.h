// Makes of any bytes a snapshot that is damaged in fewer places, so that mutated ones get past the
// checksums: each header, block and trailer is sealed as it stands. Two short forms are filled in:
// - descriptions that are as many bytes as the first line has fields become those of columns of
//   these forms;
// - a block that does not begin with the mark of a compressed one is rows, and is stored as a zlib
//   stream.
// Blocks end at the next mark with the header's salt, whatever length they state.
#ifndef NOMUTIL_FUZZ_SNAPSHOTMENDER_H
#define NOMUTIL_FUZZ_SNAPSHOTMENDER_H

#include "checksum.h"
#include "snapshot.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace nomfuzz {

inline std::uint32_t numberAt(std::string_view bytes, std::size_t offset) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    number |= std::uint32_t{static_cast<unsigned char>(bytes[offset + i])} << 8 * i;
  }
  return number;
}

inline void setNumber(std::string& bytes, std::size_t offset, std::size_t number) {
  for (std::size_t i = 0; i < 4; ++i) bytes[offset + i] = static_cast<char>(number >> 8 * i & 255);
}

inline std::uint32_t checksumOf(std::string_view bytes) {
  nomtool::Checksum sum;
  sum.add(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
  return sum.value();
}

// The bytes as a zlib stream of one stored block (RFC 1950, RFC 1951). REQUIRES: fewer than 64 KiB.
inline std::string stored(std::string_view bytes) {
  std::uint32_t a = 1, b = 0;
  for (const char c : bytes) {
    a = (a + static_cast<unsigned char>(c)) % 65521;
    b = (b + a) % 65521;
  }
  std::string stream("\x09\x78\x01\x01....", 8);
  setNumber(stream, 4, bytes.size() | (~bytes.size() & 0xFFFF) << 16);
  stream += bytes;
  for (const std::uint32_t number : {b, a}) {
    stream += static_cast<char>(number >> 8);
    stream += static_cast<char>(number & 255);
  }
  return stream;
}

inline constexpr std::size_t kText = 77;  // where the first line begins

// The header that the bytes begin with; nothing when they do not begin with one.
inline std::string mendedHeader(std::string_view bytes) {
  if (bytes.size() < kText + 4) return {};
  std::uint64_t salt = 0;
  std::memcpy(&salt, bytes.data() + 24, sizeof salt);
  const std::size_t textLength = numberAt(bytes, 16);
  const std::size_t descriptionLength = numberAt(bytes, 20);
  const std::size_t rest = bytes.size() - kText - 4;
  if (textLength > rest || descriptionLength > rest - textLength) return {};
  const std::uint32_t flags = numberAt(bytes, 8);
  const nomtool::TextForm form = {bytes[12], (flags & 4) != 0, (flags & 1) != 0, (flags & 2) != 0};
  nomtool::RowScanner scanner(bytes.substr(kText, textLength), form);
  if (scanner.next() && scanner.fields().size() == descriptionLength) {
    std::vector<nomtool::ColumnForm> forms;
    for (std::size_t i = 0; i < descriptionLength; ++i) {
      const auto byte = static_cast<unsigned char>(bytes[kText + textLength + i]);
      forms.push_back(static_cast<nomtool::ColumnForm>(byte % nomtool::kColumnFormCount));
    }
    std::vector<std::string> names(scanner.fields().begin(), scanner.fields().end());
    return nomtool::SnapshotSchema(form, std::move(names), std::move(forms), (flags & 8) != 0, salt)
        .header();
  }
  std::string header(bytes.substr(0, kText + textLength + descriptionLength));
  header.resize(header.size() + 4);
  setNumber(header, header.size() - 4,
            checksumOf(std::string_view(header).substr(0, header.size() - 4)));
  return header;
}

// How many bytes of the input the header takes that mendedHeader gives.
inline std::size_t headerSize(std::string_view bytes) {
  return kText + numberAt(bytes, 16) + numberAt(bytes, 20) + 4;
}

inline void appendBlock(std::string& snapshot, std::string_view block) {
  std::string header(block.substr(0, 36));
  std::string rows(block.substr(nomtool::kBlockHeaderSize));
  if (rows.empty() || (rows[0] != 9 && rows.size() <= 0xFFFF)) {
    setNumber(header, 28, rows.size());
    rows = stored(rows);
  }
  setNumber(header, 32, rows.size());
  header.resize(nomtool::kBlockHeaderSize);
  setNumber(header, 36, checksumOf(header.substr(0, 36) + rows));
  snapshot += header + rows;
}

inline std::string mended(std::string_view bytes) {
  std::string snapshot = mendedHeader(bytes);
  if (snapshot.empty()) return snapshot;
  std::string_view rest = bytes.substr(headerSize(bytes));
  const std::string salt(bytes.substr(24, 8));
  const std::string blockMark = "NBLK" + salt;
  const std::string trailerMark = "NEND" + salt;
  while (rest.size() >= nomtool::kBlockHeaderSize && rest.starts_with(blockMark)) {
    const std::size_t end =
        std::min({rest.find(blockMark, nomtool::kBlockHeaderSize),
                  rest.find(trailerMark, nomtool::kBlockHeaderSize), rest.size()});
    appendBlock(snapshot, rest.substr(0, end));
    rest.remove_prefix(end);
  }
  std::string trailer(rest);
  if (trailer.size() >= nomtool::kTrailerSize)
    setNumber(trailer, 40, checksumOf(rest.substr(0, 40)));
  return snapshot + trailer;
}

}  // namespace nomfuzz

#endif  // NOMUTIL_FUZZ_SNAPSHOTMENDER_H
