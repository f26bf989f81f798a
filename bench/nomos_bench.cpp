// The operating-system layer beside what it stands on, with a second thread alive throughout, since
// the C library leaves atomics out of a process with one thread:
//   mutexpair     lock and unlock of a free mutex
//   eventpair     set and wait of an event that nobody waits for; the standard's is a flag with a
//                 mutex and a condition variable
//   pingpong      one round between two threads that block for each other; futex is the bare call
//   portpair      post and get of one packet; the standard's is a deque with a mutex
//   relativetime  one reading of the clock

#include "nomos/completionport.h"
#include "nomos/event.h"
#include "nomos/mutex.h"
#include "nomos/relativetime.h"

#include <benchmark/benchmark.h>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <thread>

namespace {

// A thread that sleeps for as long as the program runs.
class SecondThread {
 public:
  SecondThread() : _thread([this] { _end.wait(); }) {}
  ~SecondThread() {
    _end.set();
    _thread.join();
  }

 private:
  Event _end{false};
  std::thread _thread;
} secondThread;

class StandardEvent {
 public:
  void set() {
    {
      std::lock_guard hold(_mutex);
      _signalled = true;
    }
    _changed.notify_one();
  }
  bool wait() {
    std::unique_lock hold(_mutex);
    _changed.wait(hold, [this] { return _signalled; });
    _signalled = false;
    return true;
  }

 private:
  std::mutex _mutex;
  std::condition_variable _changed;
  bool _signalled = false;
};

class BareFutex {
 public:
  void set() {
    _word.store(1, std::memory_order_release);
    syscall(SYS_futex, &_word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
  }
  bool wait() {
    while (_word.exchange(0, std::memory_order_acquire) == 0) {
      syscall(SYS_futex, &_word, FUTEX_WAIT_PRIVATE, 0, nullptr, nullptr, 0);
    }
    return true;
  }

 private:
  std::atomic<std::uint32_t> _word{0};
};

struct OurEvent : Event {
  OurEvent() : Event(false) {}
};

void mutexPairOurs(benchmark::State& state) {
  static ThreadMutex mutex("Bench");
  for (auto _ : state) {
    mutex.acquire();
    mutex.relinquish();
  }
}

void mutexPairStandard(benchmark::State& state) {
  static std::mutex mutex;
  for (auto _ : state) {
    mutex.lock();
    mutex.unlock();
  }
}

template <class SomeEvent>
void eventPair(benchmark::State& state) {
  SomeEvent event;
  for (auto _ : state) {
    event.set();
    event.wait();
  }
}

template <class SomeEvent>
void pingPong(benchmark::State& state) {
  SomeEvent ping, pong;
  std::atomic<bool> running{true};
  std::thread other([&] {
    while (ping.wait() && running.load(std::memory_order_relaxed)) pong.set();
  });
  for (auto _ : state) {
    ping.set();
    pong.wait();
  }
  running = false;
  ping.set();
  other.join();
}

void portPairOurs(benchmark::State& state) {
  CompletionPort port;
  NomULong bytes = 0;
  std::uint64_t key = 0;
  void* overlapped = nullptr;
  for (auto _ : state) {
    port.post(1, 2, nullptr);
    benchmark::DoNotOptimize(port.get(bytes, key, overlapped));
  }
}

void portPairStandard(benchmark::State& state) {
  struct Packet {
    NomULong bytes;
    std::uint64_t key;
    void* overlapped;
  };
  std::mutex mutex;
  std::condition_variable posted;
  std::deque<Packet> packets;
  for (auto _ : state) {
    {
      std::lock_guard hold(mutex);
      packets.push_back({1, 2, nullptr});
    }
    posted.notify_one();
    std::unique_lock hold(mutex);
    posted.wait(hold, [&] { return !packets.empty(); });
    benchmark::DoNotOptimize(packets.front());
    packets.pop_front();
  }
}

void relativeTimeOurs(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(nosGetRelativeTime());
}

void relativeTimeStandard(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(std::chrono::steady_clock::now());
}

BENCHMARK(mutexPairOurs)->Name("mutexpair/ours");
BENCHMARK(mutexPairStandard)->Name("mutexpair/std");
BENCHMARK(eventPair<OurEvent>)->Name("eventpair/ours");
BENCHMARK(eventPair<StandardEvent>)->Name("eventpair/std");
BENCHMARK(pingPong<OurEvent>)->Name("pingpong/ours")->UseRealTime();
BENCHMARK(pingPong<BareFutex>)->Name("pingpong/futex")->UseRealTime();
BENCHMARK(pingPong<StandardEvent>)->Name("pingpong/std")->UseRealTime();
BENCHMARK(portPairOurs)->Name("portpair/ours");
BENCHMARK(portPairStandard)->Name("portpair/std");
BENCHMARK(relativeTimeOurs)->Name("relativetime/ours");
BENCHMARK(relativeTimeStandard)->Name("relativetime/std");

}  // namespace

BENCHMARK_MAIN();
