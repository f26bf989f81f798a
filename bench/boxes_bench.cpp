// Event boxes beside queues, a raw futex and the timers of event loops. Every program of several
// threads pays for its atomics, so that a second thread is alive in each measurement.

#include "sys/boxes.h"

#include "nomos/relativetime.h"
#include "nomos/testhooks.h"

#include <benchmark/benchmark.h>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <uv.h>
#include <atomic>
#include <barrier>
#include <boost/asio.hpp>
#include <boost/lockfree/queue.hpp>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

namespace {

namespace asio = boost::asio;

using Clock = std::chrono::steady_clock;

double seconds(Clock::time_point from) {
  return std::chrono::duration<double>(Clock::now() - from).count();
}

// A manager with one box, and with its thread the second that is alive.
struct Boxes {
  Boxes() {
    manager.initialise(true);
    manager.boxAllocate(box, false);
  }
  Memo* memo() {
    Memo* made = nullptr;
    box->memoAllocate(made, 1, 1, false);
    return made;
  }
  Memo* timer() {
    Memo* made = nullptr;
    box->timerAllocate(made);
    return made;
  }
  BoxManager manager{"bench"};
  Box* box = nullptr;
};

// A dispatch that only counts, and the lock pair that it cannot do without.
void dispatchQueued(benchmark::State& state) {
  Boxes boxes;
  Memo* const memo = boxes.memo();
  memo->dispatch();
  for (auto _ : state) memo->dispatch();
}
BENCHMARK(dispatchQueued)->Name("dispatchQueued/ours");

void lockPair(benchmark::State& state) {
  Boxes boxes;
  static ThreadMutex mutex("bench");
  for (auto _ : state) {
    mutex.acquire();
    benchmark::ClobberMemory();
    mutex.relinquish();
  }
}
BENCHMARK(lockPair)->Name("dispatchQueued/lockpair");

// Dispatch of an idle memo and its receipt, in one thread.
void dispatchReceive(benchmark::State& state) {
  Boxes boxes;
  Memo* const memo = boxes.memo();
  unsigned value = 0;
  unsigned left = 0;
  for (auto _ : state) {
    memo->dispatch();
    boxes.box->receive(0, value, left);
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(dispatchReceive)->Name("dispatchReceive/ours");

struct LockedDeque {
  void push(unsigned value) {
    {
      const std::lock_guard hold(mutex);
      values.push_back(value);
    }
    arrived.notify_one();
  }
  unsigned pop() {
    std::unique_lock hold(mutex);
    arrived.wait(hold, [&] { return !values.empty(); });
    const unsigned value = values.front();
    values.pop_front();
    return value;
  }
  std::mutex mutex;
  std::condition_variable arrived;
  std::deque<unsigned> values;
};

void dequeReceive(benchmark::State& state) {
  Boxes boxes;
  LockedDeque queue;
  for (auto _ : state) {
    queue.push(1);
    benchmark::DoNotOptimize(queue.pop());
  }
}
BENCHMARK(dequeReceive)->Name("dispatchReceive/deque");

// Producers that each send so many events of their own kind to one consumer: seconds until the
// consumer has had them all, counted per event.
constexpr unsigned kEvents = 100'000;

template <class Send, class Consume>
void produce(benchmark::State& state, Send send, Consume consume) {
  const auto producers = static_cast<unsigned>(state.range(0));
  for (auto _ : state) {
    std::barrier start(static_cast<std::ptrdiff_t>(producers) + 1);
    std::vector<std::jthread> threads;
    for (unsigned i = 0; i < producers; ++i) {
      threads.emplace_back([&, i] {
        start.arrive_and_wait();
        for (unsigned event = 0; event < kEvents; ++event) send(i);
      });
    }
    start.arrive_and_wait();
    const auto from = Clock::now();
    consume(producers * kEvents, threads);
    state.SetIterationTime(seconds(from) / (producers * kEvents));
  }
}

void coalesceOurs(benchmark::State& state) {
  Boxes boxes;
  std::vector<Memo*> memos;
  for (int i = 0; i < state.range(0); ++i) memos.push_back(boxes.memo());
  constexpr unsigned kLast = 2;
  Memo* const last = boxes.memo();
  produce(
      state, [&](unsigned i) { memos[i]->dispatch(); },
      [&](unsigned, std::vector<std::jthread>& threads) {
        // A last memo, behind all others, ends it.
        std::jthread joiner([&] {
          for (std::jthread& thread : threads) thread.join();
          last->updateDispatch(kLast, 0, false);
        });
        unsigned value = 0;
        unsigned left = 0;
        while (value != kLast) boxes.box->receive(0xFFFFFFFF, value, left);
      });
}
BENCHMARK(coalesceOurs)->Name("coalesce/ours")->Arg(1)->Arg(3)->UseManualTime()->Iterations(5);

void coalesceDeque(benchmark::State& state) {
  LockedDeque queue;
  produce(
      state, [&](unsigned i) { queue.push(i); },
      [&](unsigned events, auto&) {
        for (; events != 0; --events) benchmark::DoNotOptimize(queue.pop());
      });
}
BENCHMARK(coalesceDeque)->Name("coalesce/deque")->Arg(1)->Arg(3)->UseManualTime()->Iterations(5);

void coalesceLockfree(benchmark::State& state) {
  boost::lockfree::queue<unsigned> queue(1024);
  produce(
      state,
      [&](unsigned i) {
        while (!queue.push(i)) std::this_thread::yield();
      },
      [&](unsigned events, auto&) {
        for (unsigned value = 0; events != 0;) {
          if (queue.pop(value)) {
            --events;
          } else {
            std::this_thread::yield();
          }
        }
      });
}
BENCHMARK(coalesceLockfree)
    ->Name("coalesce/lockfree")
    ->Arg(1)
    ->Arg(3)
    ->UseManualTime()
    ->Iterations(5);

void coalesceAsio(benchmark::State& state) {
  asio::io_context context;
  const auto work = asio::make_work_guard(context);
  unsigned received = 0;
  produce(
      state, [&](unsigned) { asio::post(context, [&] { ++received; }); },
      [&](unsigned events, auto&) {
        for (received = 0; received < events;) context.run_one();
      });
}
BENCHMARK(coalesceAsio)->Name("coalesce/asio")->Arg(1)->Arg(3)->UseManualTime()->Iterations(5);

// Two threads that wake each other in turn; a round is two wake-ups.
template <class Wait, class Wake>
void pingPong(benchmark::State& state, Wait wait, Wake wake) {
  std::atomic<bool> ends{false};
  std::jthread other([&] {
    for (;;) {
      wait(1);
      if (ends) return;
      wake(0);
    }
  });
  for (auto _ : state) {
    wake(1);
    wait(0);
  }
  ends = true;
  wake(1);
}

void pingPongOurs(benchmark::State& state) {
  Boxes pair[2];
  Memo* const memos[] = {pair[0].memo(), pair[1].memo()};
  pingPong(
      state,
      [&](int side) {
        unsigned value = 0;
        unsigned left = 0;
        while (value == 0) pair[side].box->receive(0xFFFFFFFF, value, left);
      },
      [&](int side) { memos[side]->dispatch(); });
}
BENCHMARK(pingPongOurs)->Name("pingPong/ours")->UseRealTime();

// Bare futex words, as the kernel has them.
void pingPongFutex(benchmark::State& state) {
  std::atomic<std::uint32_t> words[2] = {0, 0};
  const auto futex = [](std::atomic<std::uint32_t>& word, int operation, std::uint32_t value) {
    syscall(SYS_futex, &word, operation, value, nullptr, nullptr, 0);
  };
  pingPong(
      state,
      [&](int side) {
        while (words[side].exchange(0) == 0) futex(words[side], FUTEX_WAIT_PRIVATE, 0);
      },
      [&](int side) {
        words[side] = 1;
        futex(words[side], FUTEX_WAKE_PRIVATE, 1);
      });
}
BENCHMARK(pingPongFutex)->Name("pingPong/futex")->UseRealTime();

void pingPongDeque(benchmark::State& state) {
  LockedDeque queues[2];
  pingPong(
      state, [&](int side) { queues[side].pop(); }, [&](int side) { queues[side].push(1); });
}
BENCHMARK(pingPongDeque)->Name("pingPong/deque")->UseRealTime();

// Timers of 20 to 60 seconds: none ends while it is measured.
unsigned longInterval(std::mt19937& random) {
  return 20'000 + static_cast<unsigned>(random() % 40'000);
}

void timerOurs(benchmark::State& state) {
  Boxes boxes;
  std::mt19937 random(1);
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    boxes.timer()->start(longInterval(random), 1, 1);
  }
  Memo* const timer = boxes.timer();
  for (auto _ : state) {
    timer->start(longInterval(random), 1, 1);
    timer->stop();
  }
}
BENCHMARK(timerOurs)->Name("timer/ours")->Arg(10)->Arg(10'000)->Arg(1'000'000);

void timerAsio(benchmark::State& state) {
  asio::io_context context;
  std::mt19937 random(1);
  std::deque<asio::steady_timer> timers;
  const auto start = [&](asio::steady_timer& timer) {
    timer.expires_after(std::chrono::milliseconds(longInterval(random)));
    timer.async_wait([](const boost::system::error_code&) {});
  };
  for (std::int64_t i = 0; i < state.range(0); ++i) start(timers.emplace_back(context));
  asio::steady_timer timer(context);
  for (auto _ : state) {
    start(timer);
    timer.cancel();
    context.poll();  // runs the handler of the cancelled wait
  }
}
BENCHMARK(timerAsio)->Name("timer/asio")->Arg(10)->Arg(10'000)->Arg(1'000'000);

void timerUv(benchmark::State& state) {
  uv_loop_t loop;
  uv_loop_init(&loop);
  std::mt19937 random(1);
  std::deque<uv_timer_t> timers;
  const auto start = [&](uv_timer_t& timer) {
    uv_timer_start(
        &timer, [](uv_timer_t*) {}, longInterval(random), 0);
  };
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    uv_timer_init(&loop, &timers.emplace_back());
    start(timers.back());
  }
  uv_timer_t timer;
  uv_timer_init(&loop, &timer);
  for (auto _ : state) {
    uv_update_time(&loop);
    start(timer);
    uv_timer_stop(&timer);
  }
  for (uv_timer_t& each : timers) uv_close(reinterpret_cast<uv_handle_t*>(&each), nullptr);
  uv_close(reinterpret_cast<uv_handle_t*>(&timer), nullptr);
  uv_run(&loop, UV_RUN_DEFAULT);
  uv_loop_close(&loop);
}
BENCHMARK(timerUv)->Name("timer/libuv")->Arg(10)->Arg(10'000)->Arg(1'000'000);

// The ending of 200,000 timers of 1 to 1,000 ms that are all overdue, per timer.
constexpr int kEndings = 200'000;

std::atomic<std::int64_t> stoppedClock{0};

void endingOurs(benchmark::State& state) {
  for (auto _ : state) {
    stoppedClock = 1'000'000;
    nosSetRelativeClock([]() noexcept { return stoppedClock.load(std::memory_order_relaxed); });
    {
      Boxes boxes;
      std::mt19937 random(1);
      for (int i = 0; i < kEndings; ++i) {
        boxes.timer()->start(1 + static_cast<unsigned>(random() % 1000), 1, 1);
      }
      Memo* const waker = boxes.memo();
      stoppedClock += 2'000;
      const auto from = Clock::now();
      waker->schedule(0);  // a new first memo wakes the thread
      while (boxes.box->signalCount() < kEndings) std::this_thread::yield();
      state.SetIterationTime(seconds(from) / kEndings);
    }
    nosSetRelativeClock(nullptr);
  }
}
BENCHMARK(endingOurs)->Name("ending/ours")->UseManualTime()->Iterations(3);

void endingUv(benchmark::State& state) {
  for (auto _ : state) {
    uv_loop_t loop;
    uv_loop_init(&loop);
    std::mt19937 random(1);
    std::deque<uv_timer_t> timers(kEndings);
    unsigned ended = 0;
    for (uv_timer_t& timer : timers) {
      uv_timer_init(&loop, &timer);
      timer.data = &ended;
      uv_timer_start(
          &timer, [](uv_timer_t* each) { ++*static_cast<unsigned*>(each->data); },
          1 + random() % 1000, 0);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1'100));
    const auto from = Clock::now();
    uv_run(&loop, UV_RUN_NOWAIT);
    state.SetIterationTime(seconds(from) / kEndings);
    if (ended != kEndings) state.SkipWithError("timers are missing");
    for (uv_timer_t& each : timers) uv_close(reinterpret_cast<uv_handle_t*>(&each), nullptr);
    uv_run(&loop, UV_RUN_DEFAULT);
    uv_loop_close(&loop);
  }
}
BENCHMARK(endingUv)->Name("ending/libuv")->UseManualTime()->Iterations(3);

// Schedule and cancel beside so many scheduled memos with random delays.
void schedule(benchmark::State& state) {
  Boxes boxes;
  std::mt19937 random(1);
  const auto delay = [&] { return 60'000 + static_cast<unsigned>(random() % 3'600'000); };
  std::vector<Memo*> memos;
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    memos.push_back(boxes.memo());
    memos.back()->schedule(delay());
  }
  std::size_t next = 0;
  for (auto _ : state) {
    Memo* const memo = memos[next];
    next = (next + 7919) % memos.size();
    memo->cancel();
    memo->schedule(delay());
  }
}
BENCHMARK(schedule)
    ->Name("schedule/ours")
    ->Arg(100)
    ->Arg(1'000)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Arg(1'000'000);

}  // namespace

BENCHMARK_MAIN();
