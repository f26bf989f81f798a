// The CRC-32 of bytes that come in pieces, as other programs show it: all ones before the first
// byte, and inverted behind the last. "123456789" has CBF43926.
#ifndef NOMTOOL_CHECKSUM_H
#define NOMTOOL_CHECKSUM_H

#include "sys/compress.h"

#include <cstdint>

namespace nomtool {

class Checksum {
 public:
  void add(const void* bytes, std::uint32_t byteCount) {
    // The bytes are only read.
    _crc = compute_CRC32(const_cast<void*>(bytes), &byteCount, &_crc);
  }
  std::uint32_t value() const { return ~_crc; }

 private:
  std::uint32_t _crc = 0xFFFFFFFF;
};

}  // namespace nomtool

#endif  // NOMTOOL_CHECKSUM_H
