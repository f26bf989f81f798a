// The allocator behind XHeap: the C library's. Its blocks are aligned for any object, to 16 bytes;
// null is seen only where the system does not promise more memory than it has.

#include "platform.h"

#include <cstdlib>

namespace nomos::platform {

void* allocate(std::size_t byteCount) noexcept {
  return std::malloc(byteCount);
}
void release(void* block) noexcept {
  std::free(block);
}

}  // namespace nomos::platform
