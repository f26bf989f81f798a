// Eight threads with random operations on the memos and timers of two boxes; then everything that
// was sent has to have been received or taken back.

#include "boxes/boxscript.h"

#include <functional>
#include <random>
#include <thread>

namespace {

using namespace nomtest;

constexpr unsigned kThreads = 8;
constexpr unsigned kSteps = 20'000;

// The memos by number, which is their value less 1, each in the one box or the other.
constexpr unsigned kWild = 4;     // up to here received separately, never taken back: all count
constexpr unsigned kOwnMemo = 8;  // up to here under all operations; then one of each thread
constexpr unsigned kOwnTimer = kOwnMemo + kThreads;
constexpr unsigned kCount = kOwnTimer + kThreads;

struct Field {
  Field() {
    for (const unsigned i : {0u, 1u}) EXPECT_EQ(manager.boxAllocate(boxes[i], i == 1), 0);
    for (unsigned i = 0; i < kCount; ++i) make(i);
  }

  void make(unsigned i) {
    i < kOwnTimer ? boxes[i % 2]->memoAllocate(memos[i], i + 1, i % 3, i < kWild)
                  : boxes[i % 2]->timerAllocate(memos[i]);
  }

  bool receive(unsigned box, unsigned timeout) {
    unsigned value = 0, left = 0;
    boxes[box]->receive(timeout, value, left);
    if (value != 0) ++received[value - 1];
    return value != 0;
  }

  void send(unsigned i, unsigned signals) {
    sent[i] += signals;
    signals == 1 ? memos[i]->dispatch() : memos[i]->dispatchMultiple(signals);
  }

  void disturb(unsigned i, unsigned what, unsigned number) {
    Memo* const memo = memos[i];
    const std::function<void()> operations[] = {
        [&] { memo->dispatch(); },
        [&] { memo->updateDispatch(i + 1, number, number % 2 == 0); },
        [&] { memo->dispatchMultiple(number + 1); },
        [&] { memo->updateDispatchMultiple(i + 1, number, number + 1); },
        [&] { memo->schedule(number); },
        [&] { memo->cancel(); },
        [&] { memo->update(i + 1, number, number % 2 == 0); },
        [&] { stateOf(memo); }};
    operations[what]();
  }

  // What is idle has been received, and no other thread sends it.
  void useOwn(unsigned i, unsigned what, unsigned number) {
    if (stateOf(memos[i]) != "idle:0") return;
    if (what == 0) {
      i < kOwnTimer ? boxes[i % 2]->memoDeallocate(memos[i])
                    : boxes[i % 2]->timerDeallocate(memos[i]);
      return make(i);
    }
    if (what == 1 && i < kOwnTimer) return send(i, 1);
    ++sent[i];
    i < kOwnTimer ? memos[i]->schedule(number) : memos[i]->start(number, i + 1, what);
  }

  void work(unsigned thread) {
    std::mt19937 random(thread);
    for (unsigned step = 0; step < kSteps; ++step) {
      const auto dice = static_cast<unsigned>(random());
      const unsigned kind = dice % 8, what = dice / 8 % 8, number = dice / 64 % 4;
      if (kind < 3) receive(what % 2, number / 3);
      if (kind == 3 || kind == 4) send(number, what % 3 + 1);
      if (kind == 5) disturb(number + kWild, what, dice >> 30);
      if (kind == 6) useOwn(kOwnMemo + thread, what, number);
      if (kind == 7) useOwn(kOwnTimer + thread, what, number);
    }
  }

  bool isEven(unsigned i) const { return sent[i] == received[i] || (i >= kWild && i < kOwnMemo); }

  // Receives until all is even; nothing may be on its way for ever.
  void settle() {
    for (unsigned i = kWild; i < kOwnMemo; ++i) memos[i]->cancel();
    for (unsigned i = 0, vain = 0; i < kCount && vain < 10'000; i += isEven(i) ? 1 : 0, ++vain) {
      while (receive(0, 0) || receive(1, 1)) vain = 0;
    }
    for (unsigned i = 0; i < kCount; ++i) {
      EXPECT_EQ(stateOf(memos[i]), "idle:0") << i;
      EXPECT_TRUE(isEven(i)) << i << ": " << received[i] << " of " << sent[i];
      EXPECT_GT(received[i], 0u) << i;
    }
    for (const Box* const box : boxes) EXPECT_EQ(box->signalCount(), 0);
  }

  Manager manager{"stress"};
  Box* boxes[2] = {};
  Memo* memos[kCount] = {};
  std::atomic<unsigned> sent[kCount] = {}, received[kCount] = {};
};

TEST(BoxStress, LosesAndInventsNothing) {
  Recorder recorder;
  const NoLeak noLeak;
  Field field;
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < kThreads; ++i) threads.emplace_back(&Field::work, &field, i);
  for (std::thread& thread : threads) thread.join();
  field.settle();
  EXPECT_EQ(recorder.takeExpressions(), "");
}

}  // namespace
