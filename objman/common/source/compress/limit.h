// The process-wide limit on what a block may expand to.
#ifndef NOMUTIL_COMPRESS_LIMIT_H
#define NOMUTIL_COMPRESS_LIMIT_H

#include <cstdint>

namespace nomutil::compress {

// In bytes; 0 is none.
std::uint64_t uncompressLimit();

}  // namespace nomutil::compress

#endif  // NOMUTIL_COMPRESS_LIMIT_H
