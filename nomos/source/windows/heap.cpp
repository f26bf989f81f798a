// The allocator behind XHeap: the heap of the process, which every module of it shares. Its blocks
// are aligned for any object, to 16 bytes.

#include "platform.h"

#include <windows.h>

namespace nomos::platform {

void* allocate(std::size_t byteCount) noexcept {
  return HeapAlloc(GetProcessHeap(), 0, byteCount);
}
void release(void* block, std::size_t) noexcept {
  HeapFree(GetProcessHeap(), 0, block);
}

char* guardedPage() noexcept {
  constexpr std::size_t kPage = 4096;
  void* const pages = VirtualAlloc(nullptr, 2 * kPage, MEM_RESERVE, PAGE_NOACCESS);
  if (pages == nullptr) return nullptr;
  return static_cast<char*>(VirtualAlloc(pages, kPage, MEM_COMMIT, PAGE_READWRITE));
}

}  // namespace nomos::platform
