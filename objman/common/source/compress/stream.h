// zlib streams from a block of memory into a target. Both directions keep their state on the stack,
// a chunk of kChunkSize bytes included, and report a failure of zlib with one line in the log.
#ifndef NOMUTIL_COMPRESS_STREAM_H
#define NOMUTIL_COMPRESS_STREAM_H

#include "target.h"

#include <cstdint>

namespace nomutil::compress {

inline constexpr unsigned kChunkSize = 36'312;

// Appends the stream of source to the target. 0, 1409, or a status of the target.
int deflateInto(const Target& target, const unsigned char* source, unsigned length, int level);

// Appends what a stream expands to, at most limit bytes unless that is 0. 0, 1410, or a status of
// the target. What was expanded before a failure is appended as far as the target takes it, always
// whole chunks and then the rest. Into a target of the library's own, zlib writes in place where it
// can; the target holds the same afterwards as if every chunk had been appended.
int inflateInto(const Target& target, const unsigned char* stream, unsigned length,
                std::uint64_t limit);

}  // namespace nomutil::compress

#endif  // NOMUTIL_COMPRESS_STREAM_H
