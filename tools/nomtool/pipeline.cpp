// A slot is in one of three boxes, or with the thread that took it there:
//
//   free box --> reader --> work box --> workers --> done box --> writer --> free box
//
// Its memos carry its number, from 1, since 0 is nothing received. The reader announces its end,
// and a failing step the end of the run, by a memo of their own in the done box; the writer alone
// stops the others.
#include "pipeline.h"

#include "storednumber.h"

#include "nomos/relativetime.h"

#include "sys/boxes.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <exception>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

namespace nomtool {
namespace {

constexpr unsigned kStop = 0xFFFFFFFF;
constexpr unsigned kEnd = 0xFFFFFFFE;
constexpr unsigned kPiecePriority = 5;
constexpr unsigned kStopPriority = 15;  // before all pieces

void check(int status) {
  if (status != 0) throw std::runtime_error(messageText(status));
}

class Pipeline {
 public:
  Pipeline(unsigned workerCount, unsigned slotCount, const PipelineSteps& steps);
  void run();

 private:
  struct Slot {
    Memo* free = nullptr;
    Memo* work = nullptr;
    Memo* done = nullptr;
    std::uint64_t number = 0;  // of its piece, in the order of reading
  };

  static unsigned receive(Box* box);
  template <class Step>
  void guarded(Step step);
  void read();
  void work();
  void write();
  void stop();

  const PipelineSteps& _steps;
  const unsigned _workerCount;
  BoxManager _manager{"pipe"};
  Box* _freeBox = nullptr;
  Box* _workBox = nullptr;
  Box* _doneBox = nullptr;
  std::vector<Slot> _slots;
  Memo* _stopReader = nullptr;
  Memo* _stopWorkers = nullptr;
  Memo* _end = nullptr;
  std::atomic<std::uint64_t> _pieceCount{UINT64_MAX};  // known when the reader has come to the end
  std::mutex _failureLock;
  std::exception_ptr _failure;
};

Pipeline::Pipeline(unsigned workerCount, unsigned slotCount, const PipelineSteps& steps)
    : _steps(steps), _workerCount(workerCount), _slots(slotCount) {
  check(_manager.initialise(false));
  check(_manager.boxAllocate(_freeBox, false));
  check(_manager.boxAllocate(_workBox, true));
  check(_manager.boxAllocate(_doneBox, false));
  for (unsigned i = 0; i < slotCount; ++i) {
    check(_freeBox->memoAllocate(_slots[i].free, i + 1, kPiecePriority, false));
    check(_workBox->memoAllocate(_slots[i].work, i + 1, kPiecePriority, false));
    check(_doneBox->memoAllocate(_slots[i].done, i + 1, kPiecePriority, false));
  }
  check(_freeBox->memoAllocate(_stopReader, kStop, kStopPriority, false));
  check(_workBox->memoAllocate(_stopWorkers, kStop, kStopPriority, true));
  check(_doneBox->memoAllocate(_end, kEnd, kStopPriority, false));
}

// A wait may end with nothing, when another receiver was faster.
unsigned Pipeline::receive(Box* box) {
  unsigned value = 0;
  unsigned signals = 0;
  while (value == 0) box->receive(kNosInfinite, value, signals);
  return value;
}

// The first failure is kept, and ends the run.
template <class Step>
void Pipeline::guarded(Step step) {
  try {
    step();
  } catch (...) {
    {
      const std::lock_guard lock(_failureLock);
      if (!_failure) _failure = std::current_exception();
    }
    _end->dispatch();
  }
}

void Pipeline::read() {
  guarded([this] {
    for (std::uint64_t number = 0;; ++number) {
      const unsigned value = receive(_freeBox);
      if (value == kStop) return;
      Slot& slot = _slots[value - 1];
      if (!_steps.read(value - 1)) {
        _pieceCount = number;
        _end->dispatch();
        return;
      }
      slot.number = number;
      slot.work->dispatch();
    }
  });
}

void Pipeline::work() {
  guarded([this] {
    for (unsigned value = receive(_workBox); value != kStop; value = receive(_workBox)) {
      _steps.work(value - 1);
      _slots[value - 1].done->dispatch();
    }
  });
}

// The numbers of the pieces under way lie within slotCount of the next one to be written.
void Pipeline::write() {
  std::vector<unsigned> ready(_slots.size());  // slot + 1, by number modulo their count; 0: none
  for (std::uint64_t next = 0; next != _pieceCount;) {
    const unsigned value = receive(_doneBox);
    if (value == kEnd) {
      const std::lock_guard lock(_failureLock);
      if (_failure) return;
      continue;
    }
    ready[_slots[value - 1].number % ready.size()] = value;
    for (;;) {
      unsigned& first = ready[next % ready.size()];
      if (first == 0) break;
      const unsigned slot = first - 1;
      first = 0;
      ++next;
      if (!_steps.write(slot)) return;
      _slots[slot].free->dispatch();
    }
  }
}

void Pipeline::stop() {
  _stopReader->dispatch();
  _stopWorkers->dispatchMultiple(_workerCount);
}

void Pipeline::run() {
  for (const Slot& slot : _slots) slot.free->dispatch();
  std::vector<std::thread> threads;
  guarded([&] {
    threads.reserve(_workerCount + 1);
    threads.emplace_back(&Pipeline::read, this);
    for (unsigned i = 0; i < _workerCount; ++i) threads.emplace_back(&Pipeline::work, this);
  });
  guarded([this] { write(); });
  stop();
  for (std::thread& thread : threads) thread.join();
  if (_failure) std::rethrow_exception(_failure);
}

}  // namespace

void runPipeline(unsigned workerCount, unsigned slotCount, const PipelineSteps& steps) {
  Pipeline(workerCount, slotCount, steps).run();
}

unsigned defaultWorkerCount() {
  return std::clamp(std::thread::hardware_concurrency(), 1u, 64u);
}

}  // namespace nomtool
