// The heap from which the libraries take memory that their callers release, each block through the
// function of the same family: so both ends meet here, whatever runtime the caller has. Tests can
// make any allocation fail and count the blocks that are out (nomos/testhooks.h).
#ifndef NOMOS_HEAP_H
#define NOMOS_HEAP_H

#include "nomos/export.h"

#include <cstddef>

class NOMOS_API XHeap {
 public:
  // The process-wide heap. Safe from any thread at any time, also before main.
  static XHeap& library() noexcept;

  // byteCount bytes, aligned for any object; null when the memory is exhausted.
  // A byteCount of 0 gives a distinct block. The caller hands the block to release.
  void* allocate(std::size_t byteCount) noexcept;

  // Releases a block that allocate gave; null is accepted.
  void release(void* block) noexcept;

  // The same, and on Linux quicker for blocks of one to eight KiB, of which the thread keeps some
  // for its next requests. REQUIRES: byteCount is what allocate was asked for.
  void release(void* block, std::size_t byteCount) noexcept;

 private:
  XHeap() = default;
};

#endif  // NOMOS_HEAP_H
