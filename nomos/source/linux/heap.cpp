// The allocator behind XHeap: the C library's.

#include "platform.h"

#include <cstdlib>

namespace nomos::platform {

void* allocate(std::size_t byteCount) {
  return std::malloc(byteCount);
}
void release(void* block) {
  std::free(block);
}

}  // namespace nomos::platform
