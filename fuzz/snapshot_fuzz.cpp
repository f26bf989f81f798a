// A snapshot file of any bytes, read with and without salvage, its rows turned into text; once as
// it is, and once with its checksums mended (snapshotmender.h). Laws:
// - It is read or refused; memory grows with the bytes that there are, not with those they promise,
//   also when more follows than one read takes.
// - Salvage gives what stands before the damage, then only blocks whose numbers ascend, and says
//   what is lost; of a whole file it gives all.
// - A whole file in which a byte is changed or which is cut is refused, and salvage gives none but
//   its blocks.
// - The header of a file that is read is the one that its schema writes. A value that has a text is
//   one of its form, and the text of the rows has the same fields when it is read again.
#include "nomos/testhooks.h"
#include "rowpieces.h"
#include "snapshotmender.h"
#include "snapshotreader.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace {

void require(bool holds) {
  if (!holds) __builtin_trap();
}

void ignoreLine(void*, NosLogLevel, const char*) {}
void ignoreAssertion(void*, const char*, const char*, const char*, const char*, unsigned) {}

constexpr std::size_t kFirstRead = 1u << 16;

// What the readers read instead of a file.
std::string_view input;
std::size_t taken = 0;

}  // namespace

namespace nomtool {

ByteReader::ByteReader(const std::string& path) : _name(path) {
  taken = 0;
}

std::size_t ByteReader::read(void* buffer, std::size_t byteCount) {
  require(byteCount <= std::max(kFirstRead, taken));
  const std::size_t count = input.copy(static_cast<char*>(buffer), byteCount, taken);
  taken += count;
  return count;
}

std::optional<std::uint64_t> ByteReader::size() const {
  return input.size();
}

}  // namespace nomtool

namespace {

using namespace nomtool;

struct Block {
  SnapshotBlock head;
  std::string bytes;

  friend bool operator==(const Block& a, const Block& b) {
    return a.head.number == b.head.number && a.head.firstRow == b.head.firstRow &&
           a.head.rowCount == b.head.rowCount && a.bytes == b.bytes;
  }
};

struct Contents {
  bool hasHeader = false;
  bool isWhole = false;  // up to the trailer, with nothing lost
  SnapshotSchema schema;
  SnapshotTrailer trailer;
  std::vector<Block> blocks;
};

Contents read(std::string_view bytes, bool salvage) {
  Contents contents;
  input = bytes;
  try {
    SnapshotReader reader("input", salvage);
    contents.hasHeader = true;
    contents.schema = reader.schema();
    Block block;
    std::uint64_t offset = 0;
    while (reader.next(block.head, block.bytes, offset)) contents.blocks.push_back(block);
    contents.trailer = reader.trailer();
    contents.isWhole = reader.losses().empty();
  } catch (const RefusedSnapshot&) {
    require(!salvage || !contents.hasHeader);
  }
  return contents;
}

// The rows of a block as text. Each has an end, whatever the file says of the last one.
class Renderer final : public RowVisitor {
 public:
  Renderer(const SnapshotSchema& schema, std::string& text) : _schema(schema), _text(text) {}

  void field(std::size_t column, bool isAbsent, std::string_view value) override {
    const char delimiter = _schema.form().delimiter;
    const ColumnForm form = _schema.forms()[column];
    if (column != 0) _text += delimiter;
    std::string field;
    if (!isAbsent) {
      if (!appendValue(field, form, value)) throw DamagedSnapshot("a wrong value");
      require(compareValues(form, value, value) == 0);
      if (isFixed(form)) require(formsOf(field, 1u << static_cast<unsigned>(form)) != 0);
    }
    appendField(_text, field, delimiter);
    _fields.push_back(field);
  }
  void endRow() override {
    _text += _schema.form().lineEnd();
    ++_rowCount;
  }

  std::uint32_t rowCount() const { return _rowCount; }
  const std::vector<std::string>& fields() const { return _fields; }

 private:
  const SnapshotSchema& _schema;
  std::string& _text;
  std::uint32_t _rowCount = 0;
  std::vector<std::string> _fields;
};

std::string firstLine(const SnapshotSchema& schema) {
  std::string line(schema.form().hasMark ? kTextMark : "");
  line += schema.firstLine();
  line += schema.form().lineEnd();
  return line;
}

// The text that a block gives is a table of the same columns and fields.
void readAgain(const SnapshotSchema& schema, const std::string& text,
               const std::vector<std::string>& fields) {
  const std::string table = firstLine(schema) + text;
  input = table;
  RowPieces pieces("table", schema.form().delimiter, 64);
  require(pieces.isHeaderCanonical() && pieces.names() == schema.names());
  require(pieces.form().hasMark == schema.form().hasMark);
  auto expected = fields.begin();
  for (std::string piece; pieces.next(piece);) {
    RowScanner scanner(piece, schema.form());
    while (scanner.next()) {
      require(scanner.fault() == nullptr && scanner.isCanonical());
      require(scanner.fields().size() == schema.names().size());
      for (const std::string_view field : scanner.fields()) require(field == *expected++);
    }
  }
  require(expected == fields.end());
}

void render(const SnapshotSchema& schema, const Block& block) {
  constexpr std::uint64_t kMostOfOne = 1032;  // bytes that one of a deflate stream can give
  std::string rows;
  std::string text;
  Renderer renderer(schema, text);
  try {
    expandBlock(block.bytes, block.head.expandedLength, rows);
    visitRows(schema, block.head, rows, renderer);
    require(renderer.rowCount() == block.head.rowCount);
    readAgain(schema, text, renderer.fields());
  } catch (const DamagedSnapshot&) {
  }
  require(rows.size() <= kMostOfOne * block.bytes.size());
}

void requireAscending(const std::vector<Block>& blocks) {
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    const SnapshotBlock& head = blocks[i].head;
    require(head.firstRow + head.rowCount >= head.firstRow);
    if (i == 0) continue;
    const SnapshotBlock& before = blocks[i - 1].head;
    require(head.number > before.number && head.firstRow >= before.firstRow + before.rowCount);
  }
}

// What is damaged gives nothing that the whole file does not have.
void requireHarmless(const Contents& whole, std::string_view damaged) {
  require(!read(damaged, false).isWhole);
  const Contents salvaged = read(damaged, true);
  require(!salvaged.isWhole);
  for (const Block& block : salvaged.blocks) {
    require(std::find(whole.blocks.begin(), whole.blocks.end(), block) != whole.blocks.end());
  }
}

void damage(const Contents& whole, std::string_view bytes) {
  // The places depend on the input, so that mutated inputs are damaged anywhere.
  std::uint32_t place = nomfuzz::checksumOf(bytes);
  for (int i = 0; i < 4; ++i) {
    std::string damaged(bytes);
    char& byte = damaged[place % bytes.size()];
    byte = static_cast<char>(static_cast<unsigned char>(byte) ^ (1u << place % 8));
    requireHarmless(whole, damaged);
    requireHarmless(whole, bytes.substr(0, place / 8 % bytes.size()));
    place = place * 1664525 + 1013904223;
  }
}

void take(std::string_view bytes) {
  const Contents strict = read(bytes, false);
  const Contents salvaged = read(bytes, true);
  if (!strict.isWhole) read(std::string(bytes) + std::string(2 * kFirstRead, '\0'), true);
  require(strict.hasHeader == salvaged.hasHeader && strict.isWhole == salvaged.isWhole);
  if (!strict.hasHeader) return;
  const std::string header = strict.schema.header();
  require(bytes.substr(0, header.size()) == header);
  require(salvaged.blocks.size() >= strict.blocks.size());
  require(std::equal(strict.blocks.begin(), strict.blocks.end(), salvaged.blocks.begin()));
  requireAscending(salvaged.blocks);
  for (const Block& block : salvaged.blocks) render(strict.schema, block);
  if (!strict.isWhole) return;
  require(salvaged.blocks.size() == strict.blocks.size());
  require(strict.trailer.blockCount == strict.blocks.size());
  damage(strict, bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  nosSetLogSink(ignoreLine, nullptr);
  nosSetAssertSink(ignoreAssertion, nullptr);
  const std::string bytes(data, data + size);
  take(bytes);
  take(nomfuzz::mended(bytes));
  return 0;
}
