// The allocator behind XHeap: the C library's. Its blocks are aligned for any object, to 16 bytes;
// null is seen only where the system does not promise more memory than it has.

#include "platform.h"

#include <sys/mman.h>
#include <cstdlib>

namespace nomos::platform {

void* allocate(std::size_t byteCount) noexcept {
  return std::malloc(byteCount);
}
void release(void* block) noexcept {
  std::free(block);
}

char* guardedPage() noexcept {
  constexpr std::size_t kPage = 4096;
  void* const pages =
      mmap(nullptr, 2 * kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) return nullptr;
  char* const page = static_cast<char*>(pages);
  return mprotect(page + kPage, kPage, PROT_NONE) == 0 ? page : nullptr;
}

}  // namespace nomos::platform
