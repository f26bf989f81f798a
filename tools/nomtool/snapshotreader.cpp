// Damage is skipped to the next mark of a block or a trailer whose checksum is right. Rows are lost
// between the last block before it and the first one behind it, as their row numbers tell. A block
// may itself hold the bytes of a snapshot, in a field; its marks have another salt.
#include "snapshotreader.h"

#include <algorithm>

namespace nomtool {
namespace {

constexpr std::size_t kReadSize = 1u << 16;
constexpr const char* kCut = "the file is cut";
constexpr const char* kFollowed = "something follows the trailer";

std::string at(std::uint64_t offset) {
  return "offset " + std::to_string(offset);
}

}  // namespace

std::string placeOf(std::uint32_t block, std::uint64_t offset) {
  return "block " + std::to_string(block) + " at " + at(offset);
}

std::string placeOf(std::uint32_t block, std::uint32_t blockEnd, std::uint64_t offset) {
  if (blockEnd == block + 1) return placeOf(block, offset);
  return "blocks " + std::to_string(block) + " to " + std::to_string(blockEnd - 1) + " at " +
         at(offset);
}

SnapshotReader::SnapshotReader(const std::string& path, bool salvage)
    : _reader(path), _salvage(salvage) {
  try {
    std::optional<std::size_t> length;
    for (std::size_t held = 1; !length; held = _held().size() + 1) {
      const bool isHeld = _hold(held);
      length = SnapshotSchema::headerLength(_held());
      if (!isHeld && !length) throw DamagedSnapshot(kCut);
    }
    if (!_hold(*length)) throw DamagedSnapshot(kCut);
    _schema = SnapshotSchema::fromHeader(_held().substr(0, *length));
    _blockMark = blockMark(_schema.salt());
    _trailerMark = trailerMark(_schema.salt());
    _drop(*length);
  } catch (const DamagedSnapshot& damage) {
    throw RefusedSnapshot(_reader.name(), "header", damage.what());
  }
}

std::optional<std::uint64_t> SnapshotReader::blocksEnd() const {
  const std::optional<std::uint64_t> size = _reader.size();
  return size && *size > kTrailerSize ? std::optional(*size - kTrailerSize) : size;
}

// Reads until so many bytes are held; false when the file has fewer. However many that are, the
// room at most doubles with each read, so that a length that is wrong takes no more than the file
// has.
bool SnapshotReader::_hold(std::size_t count) {
  while (_held().size() < count && !_isAtEnd) {
    _buffer.erase(0, _taken);
    _taken = 0;
    const std::size_t length = _buffer.size();
    const std::size_t wanted = std::max(kReadSize, std::min(count - length, length));
    _buffer.resize(length + wanted);
    const std::size_t read = _reader.read(_buffer.data() + length, wanted);
    _buffer.resize(length + read);
    _isAtEnd = read < wanted;
  }
  return _held().size() >= count;
}

// What is held behind them stays in its place until more is read: it may be much, and the next
// blocks small.
void SnapshotReader::_drop(std::size_t count) {
  _taken += count;
  _offset += count;
}

bool SnapshotReader::next(SnapshotBlock& block, std::string& bytes, std::uint64_t& offset) {
  for (;;) {
    try {
      offset = _offset;
      return _take(block, bytes);
    } catch (const DamagedSnapshot& damage) {
      if (_damage.empty()) {
        _damage = damage.what();
        _damageOffset = _offset;
        _damagePlace = _placeOfNext();
      }
      if (!_salvage) throw RefusedSnapshot(_reader.name(), _damagePlace, _damage);
      if (!_skipDamage()) {
        _loseRest();
        return false;
      }
    }
  }
}

// The next block or, false, the trailer. Throws DamagedSnapshot.
bool SnapshotReader::_take(SnapshotBlock& block, std::string& bytes) {
  if (!_hold(kBlockHeaderSize)) throw DamagedSnapshot(kCut);
  if (_held().starts_with(_trailerMark)) {
    _takeTrailer();
    return false;
  }
  if (!_held().starts_with(_blockMark)) throw DamagedSnapshot("no block begins here");
  const SnapshotBlock found = blockFrom(_held());
  if (!_hold(kBlockHeaderSize + found.length)) throw DamagedSnapshot(kCut);
  const std::string_view held = _held().substr(0, kBlockHeaderSize + found.length);
  if (!isIntact(held.substr(0, kBlockHeaderSize), held.substr(kBlockHeaderSize))) {
    throw DamagedSnapshot("the checksum differs");
  }
  const bool isNext = found.number == _blockNumber && found.firstRow == _row;
  const bool isLater = found.number > _blockNumber && found.firstRow >= _row;
  if (!isNext && !(_salvage && isLater)) throw DamagedSnapshot("the block is not in its place");
  _lose(found.number, found.firstRow);
  block = found;
  bytes = held.substr(kBlockHeaderSize);
  _blockNumber = found.number + 1;
  _row = found.firstRow + found.rowCount;
  _drop(held.size());
  return true;
}

void SnapshotReader::_takeTrailer() {
  if (!_hold(kTrailerSize)) throw DamagedSnapshot(kCut);
  const SnapshotTrailer trailer = trailerFrom(_held().substr(0, kTrailerSize));
  const bool isWhole = trailer.blockCount == _blockNumber && trailer.rowCount == _row;
  if (!isWhole && (!_salvage || trailer.rowCount < _row || trailer.blockCount < _blockNumber)) {
    throw DamagedSnapshot("the trailer counts other rows");
  }
  if (_hold(kTrailerSize + 1)) {
    _followed = trailer;
    _followedOffset = _offset;
    throw DamagedSnapshot(kFollowed);
  }
  _lose(trailer.blockCount, trailer.rowCount);
  _trailer = trailer;
  _drop(kTrailerSize);
}

// The next mark becomes what is held first; false when there is none.
bool SnapshotReader::_skipDamage() {
  if (!_hold(1)) return false;
  _drop(1);
  for (;;) {
    const std::size_t block = _held().find(_blockMark);
    const std::size_t at = std::min(block, _held().substr(0, block).find(_trailerMark));
    if (at != std::string_view::npos) {
      _drop(at);
      return true;
    }
    _drop(_held().size() - std::min(_held().size(), _blockMark.size() - 1));
    if (!_hold(_held().size() + 1)) return false;
  }
}

// What is held first, as far as one can tell: a trailer without its mark is all that is left.
std::string SnapshotReader::_placeOfNext() {
  const bool isMore = _hold(kTrailerSize + 1);
  const std::string_view mark = _held().substr(0, _trailerMark.size());
  const bool isTrailer = mark.size() > 1 && std::string_view(_trailerMark).starts_with(mark);
  if (isTrailer || (!isMore && _held().size() == kTrailerSize)) return "trailer at " + at(_offset);
  return mark.size() > 1 ? placeOf(_blockNumber, _offset) : at(_offset);
}

// Notes the damage that was skipped, or the gap, and the blocks and rows up to what follows.
void SnapshotReader::_lose(std::uint32_t blockEnd, std::uint64_t rowEnd) {
  if (_damage.empty()) {
    if (blockEnd == _blockNumber && rowEnd == _row) return;
    _damage = "missing";
    _damageOffset = _offset;
  }
  _losses.push_back((blockEnd == _blockNumber ? at(_damageOffset)
                                              : placeOf(_blockNumber, blockEnd, _damageOffset)) +
                    ": " + _damage +
                    (rowEnd == _row ? ": no row is lost"
                                    : ": rows " + std::to_string(_row + 1) + " to " +
                                          std::to_string(rowEnd) + " are lost"));
  _damage.clear();
}

// Notes the damage behind which nothing more is found.
void SnapshotReader::_loseRest() {
  const bool isCounted =
      _followed && _followed->rowCount >= _row && _followed->blockCount >= _blockNumber;
  if (!isCounted) {
    _losses.push_back(_damagePlace + ": " + _damage + ": rows " + std::to_string(_row + 1) +
                      " and following are lost, if there were any");
    return;
  }
  _offset = _followedOffset;
  if (_damageOffset == _followedOffset) _damage.clear();
  _lose(_followed->blockCount, _followed->rowCount);
  _losses.push_back("trailer at " + at(_followedOffset) + ": " + DamagedSnapshot(kFollowed).what() +
                    ": no row is lost");
  _trailer = *_followed;
}

}  // namespace nomtool
