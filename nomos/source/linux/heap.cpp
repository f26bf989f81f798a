// The allocator behind XHeap: the C library's. Its blocks are aligned for any object, to 16 bytes;
// null is seen only where the system does not promise more memory than it has.
//
// The C library leaves blocks of up to 1,032 bytes to the thread that released them; larger ones it
// joins with their neighbours and cuts out anew, which takes as long as copying what they hold. So
// a thread keeps some of those here, if their size is said when they are released.
// NOMOS_KEEPS_BLOCKS: 0 in a build that has to see every release, as a sanitizer does.

#include "platform.h"

#include <pthread.h>
#include <sys/mman.h>
#include <atomic>
#include <cstdlib>
#include <new>

#if !defined(NOMOS_KEEPS_BLOCKS)
#define NOMOS_KEEPS_BLOCKS 1
#endif

namespace {

constexpr std::size_t kSmallest = 1033;
constexpr std::size_t kLargest = 8192;
constexpr std::size_t kGrain = 256;       // sizes are rounded up, so that a block serves several
constexpr std::size_t kRoom = 64 * 1024;  // for all that a thread keeps

struct Kept {
  Kept* next;
};
struct ThreadBlocks {
  Kept* ofGrains[kLargest / kGrain + 1];
  std::size_t room;  // left of kRoom; 0 before the first release and after the thread's end
};
thread_local constinit ThreadBlocks threadBlocks{};

bool mayBeKept(std::size_t byteCount) {
  return NOMOS_KEEPS_BLOCKS && byteCount >= kSmallest && byteCount <= kLargest;
}
std::size_t grainsOf(std::size_t byteCount) {
  return (byteCount + kGrain - 1) / kGrain;
}

void giveBack() {
  for (Kept*& first : threadBlocks.ofGrains) {
    while (Kept* const block = first) {
      first = block->next;
      std::free(block);
    }
  }
  threadBlocks.room = kRoom;
}

// The key has endThread called at the end of a thread. To register the destructor of a thread_local
// object takes memory, and the process ends where there is none.
pthread_key_t threadEnd;
std::atomic<bool> isThreadEndSeen{false};  // while the library is loaded

void endThread(void* = nullptr) {
  giveBack();
  threadBlocks.room = 0;
}

struct Library {
  Library() { isThreadEndSeen = pthread_key_create(&threadEnd, endThread) == 0; }
  // What other threads keep is lost: they go on without a destructor that is no longer there.
  ~Library() {
    if (isThreadEndSeen.exchange(false)) pthread_key_delete(threadEnd);
    endThread();
  }
} library;

// For a block that there is no room for, if only since it is the first. What fills the room may be
// of sizes that nobody asks for any more: all of it goes, which costs no more than if none had been
// kept.
[[gnu::noinline]] void releaseAll(void* block) {
  std::free(block);
  if (isThreadEndSeen && pthread_setspecific(threadEnd, &threadBlocks) == 0) giveBack();
}

}  // namespace

namespace nomos::platform {

void* allocate(std::size_t byteCount) noexcept {
  if (!mayBeKept(byteCount)) return std::malloc(byteCount);
  const std::size_t grains = grainsOf(byteCount);
  Kept*& first = threadBlocks.ofGrains[grains];
  Kept* const block = first;
  if (block == nullptr) return std::malloc(grains * kGrain);
  first = block->next;
  threadBlocks.room += grains * kGrain;
  return block;
}

void release(void* block, std::size_t byteCount) noexcept {
  if (!mayBeKept(byteCount)) return std::free(block);
  const std::size_t grains = grainsOf(byteCount);
  if (threadBlocks.room < grains * kGrain) return releaseAll(block);
  threadBlocks.room -= grains * kGrain;
  Kept*& first = threadBlocks.ofGrains[grains];
  first = new (block) Kept{first};
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
