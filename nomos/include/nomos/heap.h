// The heap from which the libraries take memory that their callers release.
#ifndef NOMOS_HEAP_H
#define NOMOS_HEAP_H

#include "nomos/export.h"

#include <cstddef>

class NOMOS_API XHeap {
 public:
  // The process-wide heap. Safe from any thread at any time, also before main.
  static XHeap& library();

  // byteCount bytes, aligned for any object; null when the memory is exhausted. Never throws.
  // A byteCount of 0 gives a distinct block. The caller hands the block to release.
  void* allocate(std::size_t byteCount);

  // Releases a block that allocate gave; null is accepted.
  void release(void* block);

 private:
  XHeap() = default;
};

#endif  // NOMOS_HEAP_H
