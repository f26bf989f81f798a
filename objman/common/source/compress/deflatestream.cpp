// Compression into a target, chunk by chunk.

#include "stream.h"
#include "zlibcodes.h"

#include "nomos/lasterror.h"
#include "nomos/log.h"
#include "sys/compress.h"
#include "sys/messages.h"

namespace nomutil::compress {
namespace {

class Deflation {
 public:
  explicit Deflation(const Target& target) : _target(target) {}

  int run(const unsigned char* source, unsigned length, int level);

 private:
  int _consume();
  int _finish();
  void _startChunk();
  int _appendChunk();
  static int _fail(const char* operation, int code);

  ZLibDesc& _zlib = ZLibDesc::processWide();
  const Target& _target;
  ZLibStream _stream{};
  unsigned char _chunk[kChunkSize];
};

int Deflation::_fail(const char* operation, int code) {
  nomLog("ZlibCompress: %s failed - %d, GLE=%d", operation, code,
         static_cast<int>(nosGetLastError()));
  return kCompressFailed;
}

void Deflation::_startChunk() {
  _stream.nextOut = _chunk;
  _stream.availableOut = kChunkSize;
}

int Deflation::_appendChunk() {
  const unsigned length = kChunkSize - _stream.availableOut;
  const int status = length != 0 ? _target.append(_chunk, length) : kNoError;
  _startChunk();
  return status;
}

int Deflation::_consume() {
  while (_stream.availableIn != 0) {
    const int code = _zlib.deflate(&_stream, kZNoFlush);
    if (code != kZOk) return _fail("deflate", code);
    if (_stream.availableOut != 0) continue;
    if (const int status = _appendChunk(); status != kNoError) return status;
  }
  return kNoError;
}

int Deflation::_finish() {
  int code;
  bool hasRoom;
  do {
    code = _zlib.deflate(&_stream, kZFinish);
    hasRoom = _stream.availableOut != 0;
    if (const int status = _appendChunk(); status != kNoError) return status;
  } while (!hasRoom);
  return code == kZStreamEnd ? kNoError : _fail("deflate", code);
}

int Deflation::run(const unsigned char* source, unsigned length, int level) {
  int code = _zlib.deflateInit_(&_stream, level, kZVersion, sizeof _stream);
  if (code != kZOk) return _fail("deflateInit", code);
  _stream.nextIn = source;
  _stream.availableIn = length;
  _startChunk();
  int status = _consume();
  if (status == kNoError) status = _finish();
  code = _zlib.deflateEnd(&_stream);
  if (status == kNoError && code != kZOk) status = _fail("deflateEnd", code);
  return status;
}

}  // namespace

int deflateInto(const Target& target, const unsigned char* source, unsigned length, int level) {
  return Deflation(target).run(source, length, level);
}

}  // namespace nomutil::compress
