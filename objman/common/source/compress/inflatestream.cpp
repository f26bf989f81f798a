// Expansion into a target: chunk by chunk, or in place. From how the first bytes expand, the size
// of the result is guessed: a short one goes through the chunk, so that it takes no more memory
// than it needs; a longer one is written where it stays, in steps of whole chunks that the target
// is sure to take. So a target that refuses does so at the same chunk either way.

#include "stream.h"
#include "zlibcodes.h"

#include "nomos/lasterror.h"
#include "nomos/log.h"
#include "sys/compress.h"
#include "sys/messages.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <limits>

namespace nomutil::compress {
namespace {

class Inflation {
 public:
  Inflation(const Target& target, std::uint64_t limit)
      : _target(target), _limit(limit != 0 ? limit : std::numeric_limits<std::uint64_t>::max()) {}

  int run(const unsigned char* stream, unsigned length);

 private:
  void _peek();
  bool _stepInPlace();
  void _stepByChunk();
  void _exceedLimit();
  unsigned _chunksInPlace() const;
  unsigned char* _extend(unsigned room);
  unsigned _fill(unsigned char* to, unsigned room);
  void _append();
  void _fail(const char* operation);

  ZLibDesc& _zlib = ZLibDesc::processWide();
  const Target& _target;
  const std::uint64_t _limit;
  KoraBytes* _held = nullptr;   // the target's object while it may be written in place
  unsigned _length = 0;         // of the stream
  std::uint64_t _expanded = 0;  // bytes that came out
  unsigned _pending = 0;        // of these, at the beginning of the chunk
  int _code = kZOk;             // zlib's; anything else ends the expansion
  int _status = kNoError;       // likewise
  ZLibStream _stream{};
  unsigned char _chunk[kChunkSize];
};

void Inflation::_fail(const char* operation) {
  nomLog("ZlibUncompress: %s failed - %d, GLE=%d", operation, _code,
         static_cast<int>(nosGetLastError()));
  _status = kUncompressFailed;
}

// Expands until there is no more room or zlib ends; returns the number of bytes. An error other
// than the end of the stream is reported here, so that nothing can change the last error before.
unsigned Inflation::_fill(unsigned char* to, unsigned room) {
  _stream.nextOut = to;
  _stream.availableOut = room;
  do {
    _code = _zlib.inflate(&_stream, kZNoFlush);
  } while (_code == kZOk && _stream.availableOut != 0);
  if (_code != kZOk && _code != kZStreamEnd) _fail("inflate");
  const unsigned length = room - _stream.availableOut;
  _expanded += length;
  return length;
}

// Hands what the chunk holds over.
void Inflation::_append() {
  const int status = _target.append(_chunk, _pending);
  if (_status == kNoError) _status = status;
  _pending = 0;
}

void Inflation::_stepByChunk() {
  const std::uint64_t allowed = _limit - (_expanded - _pending);
  const auto room = static_cast<unsigned>(std::min<std::uint64_t>(kChunkSize, allowed));
  if (room == 0) return _exceedLimit();
  _pending += _fill(_chunk + _pending, room - _pending);
  _append();
}

// With as many bytes as the limit allows, only a stream that ends here is good.
void Inflation::_exceedLimit() {
  if (_fill(_chunk, 1) == 0 || _status != kNoError) return;
  nomLog("ZlibUncompress: expands to more than the limit of %I64u bytes",
         static_cast<unsigned long long>(_limit));
  _status = kUncompressFailed;
}

// How many chunks are likely still to come, as far as the target and the limit allow and never many
// times what has come: a bomb begins like any other stream.
unsigned Inflation::_chunksInPlace() const {
  constexpr std::uint64_t kFewest = 29;  // 1 MB
  const std::uint64_t consumed = std::max<std::uint64_t>(_length - _stream.availableIn, 1);
  const std::uint64_t guess =
      _pending + static_cast<std::uint64_t>(static_cast<double>(_expanded) * 1.03 *
                                            _stream.availableIn / static_cast<double>(consumed));
  if (guess < kChunkSize) return 0;
  const std::uint64_t wanted =
      std::min(guess / kChunkSize + 1, std::max(kFewest, _expanded / kChunkSize));
  const std::uint64_t allowed =
      std::min<std::uint64_t>(_held->maximum() - _held->length(), _limit - (_expanded - _pending));
  return static_cast<unsigned>(std::min(wanted, allowed / kChunkSize));
}

// Null without memory; the chunk needs less.
unsigned char* Inflation::_extend(unsigned room) {
  try {
    return static_cast<unsigned char*>(_held->extendBytes(room));
  } catch (const std::exception&) {
    return nullptr;
  }
}

// False, and nothing done, when a chunk is better or the only way.
bool Inflation::_stepInPlace() {
  const unsigned room = _chunksInPlace() * kChunkSize;
  const unsigned before = _held->length();
  unsigned char* const text = room != 0 ? _extend(room) : nullptr;
  if (text == nullptr) return false;
  std::memcpy(text, _chunk, _pending);
  const unsigned length = _pending + _fill(text + _pending, room - _pending);
  _pending = 0;
  if (length != room) _held->resizeBytes(before + length);
  return true;
}

// For a target that may be written in place, the first bytes, into the chunk.
void Inflation::_peek() {
  constexpr unsigned kPeek = 4096;
  if (_limit < kChunkSize) return;
  _held = _target.held();
  if (_held != nullptr) _pending = _fill(_chunk, kPeek);
}

int Inflation::run(const unsigned char* stream, unsigned length) {
  _stream.nextIn = stream;
  _stream.availableIn = _length = length;
  _code = _zlib.inflateInit_(&_stream, kZVersion, sizeof _stream);
  if (_code != kZOk) {
    _fail("inflateInit");
    return _status;
  }
  _peek();
  if (_code != kZOk) _append();
  while (_code == kZOk && _status == kNoError) {
    if (_held == nullptr || !_stepInPlace()) _stepByChunk();
  }
  _code = _zlib.inflateEnd(&_stream);
  if (_status == kNoError && _code != kZOk) _fail("inflateEnd");
  return _status;
}

}  // namespace

int inflateInto(const Target& target, const unsigned char* stream, unsigned length,
                std::uint64_t limit) {
  return Inflation(target, limit).run(stream, length);
}

}  // namespace nomutil::compress
