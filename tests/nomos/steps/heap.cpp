// The blocks that a thread keeps, over a C library that is told apart from the system's: it knows
// how large each of its blocks is, and which are out.

#include "platform.h"
#include "support/threads.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <map>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

namespace {

std::mutex blocksMutex;
std::map<void*, std::size_t> blocks;  // that the C library has given
unsigned given = 0;
bool isKeyRefused = false;

std::size_t sizeOf(void* block) {
  const std::lock_guard hold(blocksMutex);
  const auto found = blocks.find(block);
  return found == blocks.end() ? 0 : found->second;
}
std::size_t bytesOut() {
  const std::lock_guard hold(blocksMutex);
  std::size_t sum = 0;
  for (const auto& [block, size] : blocks) sum += size;
  return sum;
}

}  // namespace

// The linker puts these in the place of malloc, free and pthread_setspecific, the C library's own
// under the names with __real.
extern "C" void* __real_malloc(std::size_t size);
extern "C" void __real_free(void* block);
extern "C" void* __wrap_malloc(std::size_t size) {
  void* const block = __real_malloc(size);
  const std::lock_guard hold(blocksMutex);
  blocks.emplace(block, size);
  given += 1;
  return block;
}
extern "C" void __wrap_free(void* block) {
  {
    const std::lock_guard hold(blocksMutex);
    EXPECT_EQ(blocks.erase(block), 1u) << "no block, or twice";
  }
  __real_free(block);
}
extern "C" int __real_pthread_setspecific(pthread_key_t key, const void* value);
extern "C" int __wrap_pthread_setspecific(pthread_key_t key, const void* value) {
  return isKeyRefused ? ENOMEM : __real_pthread_setspecific(key, value);
}

namespace {

using namespace nomos::platform;

template <class Work>
void inThread(Work work) {
  std::thread(work).join();
}

// The first block that a thread releases opens its store, and is not kept.
void openStore() {
  release(allocate(2000), 2000);
}

TEST(KeptBlocks, AreThoseAboveTheLibrarysOwnUpTo8KiBWhoseSizeIsSaid) {
  const struct {
    std::size_t size;
    bool isKept;
  } rows[] = {{1, false},   {1032, false}, {1033, true}, {1280, true},  {1281, true},
              {2400, true}, {8191, true},  {8192, true}, {8193, false}, {100000, false}};
  inThread([&rows] {
    openStore();
    for (const auto& row : rows) {
      void* const block = allocate(row.size);
      EXPECT_GE(sizeOf(block), row.size);
      release(block, row.size);
      EXPECT_EQ(sizeOf(block) != 0, row.isKept) << row.size;
      void* const next = allocate(row.size);
      if (row.isKept) {
        EXPECT_EQ(next, block) << row.size;
      }
      release(next);
      EXPECT_EQ(sizeOf(next), 0u) << "no size, not kept: " << row.size;
    }
  });
  EXPECT_EQ(bytesOut(), 0u);
}

TEST(KeptBlocks, TakeUpTo64KiBOfAThreadAndGoWithIt) {
  inThread([] {
    openStore();
    for (const std::size_t size : {1033u, 8192u, 2560u}) {
      std::vector<void*> out(100);
      for (void*& block : out) block = allocate(size);
      const std::size_t whole = sizeOf(out.front());
      for (std::size_t left = out.size(); left != 0; --left) {
        release(out[left - 1], size);
        EXPECT_LE(bytesOut() - (left - 1) * whole, 65536u) << size;
      }
    }
    // Room that has been left is free again.
    void* const rare = allocate(5000);
    release(rare, 5000);
    for (unsigned round = 0; round < 100; ++round) release(allocate(2560), 2560);
    void* const next = allocate(5000);
    EXPECT_EQ(next, rare);
    release(next);
  });
  EXPECT_EQ(bytesOut(), 0u);
}

// Keys of the system's made after the store's own go after it, thread_local objects before it.
TEST(KeptBlocks, AreGivenBackHoweverLateTheyAreReleased) {
  struct Late {
    void* blocks[2] = {};
    void make() {
      for (void*& block : blocks) block = allocate(3000);
    }
    ~Late() {
      for (void* const block : blocks) release(block, 3000);
    }
  };
  pthread_key_t key;
  ASSERT_EQ(pthread_key_create(&key, [](void* late) { delete static_cast<Late*>(late); }), 0);
  inThread([key] {
    thread_local Late late;
    late.make();
    Late* const later = new Late;
    later->make();
    ASSERT_EQ(pthread_setspecific(key, later), 0);
    openStore();
    release(allocate(5000), 5000);
    EXPECT_GE(bytesOut(), 17000u);
  });
  EXPECT_EQ(bytesOut(), 0u);
  pthread_key_delete(key);
}

TEST(KeptBlocks, AreNoneWhereTheThreadsEndCannotBeTold) {
  inThread([] {
    isKeyRefused = true;
    for (int i = 0; i < 3; ++i) openStore();
    isKeyRefused = false;
    EXPECT_EQ(bytesOut(), 0u);
  });
}

// Two threads hand blocks of all sizes to each other. A block that was out twice, or too small,
// would lose its marks.
TEST(KeptBlocks, ServeRequestsOfOtherSizesAndThreads) {
  struct Block {
    unsigned char* bytes = nullptr;
    std::size_t size = 0;
  };
  std::mutex mutex;
  std::vector<Block> shared(40);
  given = 0;
  constexpr unsigned kSteps = 20000;
  const auto work = [&](unsigned seed) {
    std::mt19937 random(seed);
    for (unsigned step = 0; step < kSteps; ++step) {
      Block block;
      block.size = 900 + random() % 2000;
      block.bytes = static_cast<unsigned char*>(allocate(block.size));
      ASSERT_GE(sizeOf(block.bytes), block.size);
      std::memset(block.bytes, static_cast<int>(block.size % 251), block.size);
      {
        const std::lock_guard hold(mutex);
        std::swap(block, shared[random() % shared.size()]);
      }
      if (block.bytes == nullptr) continue;
      for (const std::size_t at : {std::size_t{0}, block.size / 2, block.size - 1}) {
        ASSERT_EQ(block.bytes[at], block.size % 251);
      }
      release(block.bytes, block.size);
    }
  };
  nomtest::inThreads(2, work);
  EXPECT_LT(given, kSteps) << "of 2 * kSteps requests most are served from what was kept";
  inThread([&shared] {
    for (const Block& block : shared) release(block.bytes, block.size);
  });
  EXPECT_EQ(bytesOut(), 0u);
}

}  // namespace
