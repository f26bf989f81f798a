// Threads that begin together.
#ifndef NOMUTIL_TESTS_THREADS_H
#define NOMUTIL_TESTS_THREADS_H

#include <atomic>
#include <thread>
#include <vector>

namespace nomtest {

// Calls work(i) in `count` threads, i from 0, and returns when all have ended. They yield until the
// last is there: where the system cannot wait on a word, std::barrier of GCC 12 loses wake-ups.
template <class Work>
void inThreads(unsigned count, Work work) {
  std::atomic<unsigned> missing{count};
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < count; ++i) {
    threads.emplace_back([&missing, &work, i] {
      missing.fetch_sub(1);
      while (missing.load() != 0) std::this_thread::yield();
      work(i);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace nomtest

#endif  // NOMUTIL_TESTS_THREADS_H
