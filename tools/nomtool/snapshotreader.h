// The blocks of a snapshot file, one after another, and, where the file is damaged, what is left.
#ifndef NOMTOOL_SNAPSHOTREADER_H
#define NOMTOOL_SNAPSHOTREADER_H

#include "bytestream.h"
#include "snapshot.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nomtool {

// "FILE: block 3 at offset 81,920: the checksum differs: Invalid parameter value (1002)".
class RefusedSnapshot : public std::runtime_error {
 public:
  RefusedSnapshot(const std::string& name, const std::string& place, const std::string& what)
      : std::runtime_error(name + ": " + place + ": " + what) {}
};

// "block 3 at offset 81920"; "blocks 3 to 4 at offset 81920" for those before blockEnd.
std::string placeOf(std::uint32_t block, std::uint64_t offset);
std::string placeOf(std::uint32_t block, std::uint32_t blockEnd, std::uint64_t offset);

class SnapshotReader {
 public:
  // Reads the header, without which nothing can be read. salvage: blocks that are damaged are
  // skipped, and told in losses(). Throws StreamFault and RefusedSnapshot, as next() does.
  SnapshotReader(const std::string& path, bool salvage);

  // Takes the next block and its bytes; false behind the trailer, or at the end of what can be
  // salvaged. Throws RefusedSnapshot at the first damage unless it salvages.
  bool next(SnapshotBlock& block, std::string& bytes, std::uint64_t& offset);

  const SnapshotSchema& schema() const { return _schema; }
  const SnapshotTrailer& trailer() const { return _trailer; }  // behind the last block
  const std::string& fileName() const { return _reader.name(); }
  // Where the trailer of a whole file begins; nothing for a pipe.
  std::optional<std::uint64_t> blocksEnd() const;
  std::uint64_t offset() const { return _offset; }  // of what is not taken yet

  // What is lost, one line each.
  const std::vector<std::string>& losses() const { return _losses; }

 private:
  std::string_view _held() const { return std::string_view(_buffer).substr(_taken); }
  bool _hold(std::size_t count);
  void _drop(std::size_t count);
  bool _take(SnapshotBlock& block, std::string& bytes);
  void _takeTrailer();
  std::string _placeOfNext();
  bool _skipDamage();
  void _lose(std::uint32_t blockEnd, std::uint64_t rowEnd);
  void _loseRest();

  ByteReader _reader;
  const bool _salvage;
  SnapshotSchema _schema;
  SnapshotTrailer _trailer;
  std::string _blockMark;
  std::string _trailerMark;
  std::string _buffer;  // its bytes from _taken on are those of the file from _offset on
  std::size_t _taken = 0;
  std::uint64_t _offset = 0;
  bool _isAtEnd = false;
  std::uint32_t _blockNumber = 0;   // of the next block
  std::uint64_t _row = 0;           // its first row
  std::string _damage;              // what is wrong with what is being skipped, or empty
  std::uint64_t _damageOffset = 0;  // where it begins
  std::string _damagePlace;
  std::optional<SnapshotTrailer> _followed;  // an intact trailer that something follows
  std::uint64_t _followedOffset = 0;
  std::vector<std::string> _losses;
};

}  // namespace nomtool

#endif  // NOMTOOL_SNAPSHOTREADER_H
