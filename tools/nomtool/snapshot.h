// Snapshots: tables of typed columns in compressed blocks of dynamic objects, one for each row.
// docs/formats/snapshot.md shows the bytes.
#ifndef NOMTOOL_SNAPSHOT_H
#define NOMTOOL_SNAPSHOT_H

#include "columnform.h"
#include "heldbytes.h"
#include "rowscanner.h"

#include "sys/dynaobj.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace nomtool {

// Bytes that are no part of a snapshot: what is wrong, and the text of a status, of 1002 when none
// is given.
class DamagedSnapshot : public std::runtime_error {
 public:
  explicit DamagedSnapshot(const char* what);
  DamagedSnapshot(const char* what, int status);
};

// The columns of a snapshot, and how its text is written.
class SnapshotSchema {
 public:
  SnapshotSchema() = default;
  // hasAbsent: some field of a column of a fixed form is empty. salt: of this file alone. Throws
  // std::length_error for columns that a header has no room for.
  SnapshotSchema(const TextForm& form, std::vector<std::string> names,
                 std::vector<ColumnForm> forms, bool hasAbsent, std::uint64_t salt);

  // The header of a file, or of its beginning: what bytes it takes altogether, nothing while they
  // are too few to tell. Throws DamagedSnapshot.
  static std::optional<std::size_t> headerLength(std::string_view bytes);
  // REQUIRES: bytes are a whole header.
  static SnapshotSchema fromHeader(std::string_view bytes);
  std::string header() const;
  // The names as they are written, without the end of the line.
  std::string firstLine() const;

  const TextForm& form() const { return _form; }
  const std::vector<std::string>& names() const { return _names; }  // of the first line's fields
  const std::vector<ColumnForm>& forms() const { return _forms; }
  bool hasAbsent() const { return _hasAbsent; }
  std::uint64_t salt() const { return _salt; }
  // The properties: the columns, and then, when there are any, the absent fields as a binary of a
  // bit for each column.
  const std::string& descriptions() const { return _descriptions; }
  const std::string& emptyValues() const { return _emptyValues; }

 private:
  void _describe();
  void _readDescriptions();

  TextForm _form;
  std::vector<std::string> _names;
  std::vector<ColumnForm> _forms;
  bool _hasAbsent = false;
  std::uint64_t _salt = 0;
  std::string _descriptions;
  std::string _emptyValues;
};

// What stands before a block's bytes.
struct SnapshotBlock {
  std::uint32_t number = 0;    // from 0
  std::uint64_t firstRow = 0;  // from 0
  std::uint32_t rowCount = 0;
  std::uint32_t expandedLength = 0;
  std::uint32_t length = 0;  // of the bytes that follow
  std::uint32_t checksum = 0;
};

// What stands behind the last block.
struct SnapshotTrailer {
  std::uint32_t blockCount = 0;
  std::uint64_t rowCount = 0;
  std::uint64_t sourceBytes = 0;
  std::uint64_t changedRows = 0;  // which come back written in another way
};

inline constexpr std::size_t kBlockHeaderSize = 40;
inline constexpr std::size_t kTrailerSize = 44;
inline constexpr std::uint32_t kMostHeaderText = 1u << 24;  // of the first line, of descriptions
inline constexpr std::uint32_t kMostBlockBytes = 1u << 28;  // of a block, expanded or not
// Where a writer ends a block. One row alone may have more, but is read from 80 MiB at most.
inline constexpr std::uint32_t kFullBlockBytes = 1u << 25;

// What a block and the trailer begin with: four letters and the salt of the file. A field may hold
// another snapshot; nothing in it begins so.
std::string blockMark(std::uint64_t salt);
std::string trailerMark(std::uint64_t salt);

// The row numbers of blocks are not known before all blocks before them are made; a block is
// therefore sealed, with its checksum, when it is written.
std::string sealedBlockHeader(std::uint64_t salt, SnapshotBlock block, std::string_view bytes);
std::string trailerBytes(std::uint64_t salt, const SnapshotTrailer& trailer);

// What the bytes from a mark on say. Both throw DamagedSnapshot.
SnapshotBlock blockFrom(std::string_view header);
SnapshotTrailer trailerFrom(std::string_view bytes);
// Whether the bytes are those of the block.
bool isIntact(std::string_view header, std::string_view bytes);

// The rows of one block, made by one thread.
class BlockBuilder {
 public:
  explicit BlockBuilder(const SnapshotSchema& schema, std::size_t fullBytes = kFullBlockBytes)
      : _schema(schema), _fullBytes(fullBytes) {}

  // False, with nothing added, when the block has rows and this one would take it beyond fullBytes.
  // Throws std::runtime_error when the fields are not of the columns' forms or memory runs out.
  bool add(std::uint64_t row, const std::vector<std::string_view>& fields);

  std::uint32_t rowCount() const { return _rowCount; }
  const std::string& bytes() const { return _bytes; }
  void clear();

 private:
  const SnapshotSchema& _schema;
  const std::size_t _fullBytes;
  std::string _bytes;
  std::string _absent;
  std::uint32_t _rowCount = 0;
};

// Calls what stands in the rows of an expanded block. Throws DamagedSnapshot.
class RowVisitor {
 public:
  virtual ~RowVisitor() = default;
  virtual void field(std::size_t column, bool isAbsent, std::string_view value) = 0;
  virtual void endRow() = 0;
};
void visitRows(const SnapshotSchema& schema, const SnapshotBlock& block, std::string_view bytes,
               RowVisitor& visitor);

// Both throw std::runtime_error with the message text when the library refuses.
void compressBlock(std::string_view bytes, HeldBytes& block);
// Throws DamagedSnapshot when the block does not give that many bytes.
void expandBlock(std::string_view block, std::uint32_t expandedLength, std::string& bytes);

}  // namespace nomtool

#endif  // NOMTOOL_SNAPSHOT_H
