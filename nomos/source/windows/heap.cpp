// The allocator behind XHeap: the heap of the process.

#include "platform.h"

#include <windows.h>

namespace nomos::platform {

void* allocate(std::size_t byteCount) {
  return HeapAlloc(GetProcessHeap(), 0, byteCount);
}
void release(void* block) {
  HeapFree(GetProcessHeap(), 0, block);
}

}  // namespace nomos::platform
