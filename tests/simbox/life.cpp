// Every operation is announced to the model before it begins, and its results after it.
#include "life.h"

#include "nomos/relativetime.h"
#include "nomos/testhooks.h"
#include "nomos/thread.h"

#include <random>

namespace simbox {

namespace {

using nomos::simulated::Simulation;

struct Life {
  const Scenario& scenario;
  Simulation& simulation;
  Model& model;
  const std::function<void(bool)>& duty;
  const nomos::simulated::Failure& fail;
  Box* boxes[kBoxes] = {};
  Memo* memos[kMemos + kTimers] = {};

  void expect(bool condition, const char* what) const {
    if (!condition) fail(what);
  }
  void run();
  void open(BoxManager& manager);
  void runThreads();
  void perform(const Operation& operation);
  static int runThread(void* thread);
};

struct ThreadArgument {
  Life* life;
  const std::vector<Operation>* operations;
};

void Life::open(BoxManager& manager) {
  expect(manager.initialise(true) == 0, "no manager");
  for (unsigned i = 0; i < kBoxes; ++i) {
    expect(manager.boxAllocate(boxes[i], i == 1) == 0, "no box");
  }
  constexpr unsigned kBoxThread = 1;  // the fiber that the manager has started
  model.begin(simulation, manager, {boxes, boxes + kBoxes}, kBoxThread);
  for (unsigned i = 0; i < kMemos + kTimers; ++i) {
    Box* const box = boxes[i % kBoxes];
    const bool separate = i == 2 || i == 3;
    model.end();  // what is being allocated is not in the model yet
    expect((i < kMemos ? box->memoAllocate(memos[i], 0, 1, separate)
                       : box->timerAllocate(memos[i])) == 0,
           "no memo");
    model.begin(simulation, manager, {boxes, boxes + kBoxes}, kBoxThread);
    model.addMemo(memos[i], i % kBoxes, i < kMemos ? 1 : 0, separate);
  }
}

void Life::perform(const Operation& operation) {
  const auto [kind, subject, a, b, c] = operation;
  simulation.note(text(operation));
  model.enters(operation);
  unsigned value = 0;
  unsigned count = 0;
  MemoLocus locus = ML_None;
  switch (kind) {
    case Kind::Dispatch:
      memos[subject]->dispatch();
      break;
    case Kind::UpdateDispatch:
      memos[subject]->updateDispatch(a, b, c != 0);
      break;
    case Kind::DispatchMultiple:
      memos[subject]->dispatchMultiple(a);
      break;
    case Kind::UpdateDispatchMultiple:
      memos[subject]->updateDispatchMultiple(a, b, c);
      break;
    case Kind::Schedule:
      memos[subject]->schedule(a);
      break;
    case Kind::Cancel:
      memos[subject]->cancel();
      break;
    case Kind::Update:
      memos[subject]->update(a, b, c != 0);
      break;
    case Kind::TimerStart:
      memos[subject]->start(a, b, c);
      break;
    case Kind::TimerStop:
      memos[subject]->stop();
      break;
    case Kind::GetState:
      memos[subject]->getState(locus, count);
      break;
    case Kind::Receive:
      boxes[subject]->receive(a, value, count);
      break;
  }
  model.returns(value, count, locus);
  simulation.note("had " + std::to_string(value) + ' ' + std::to_string(count));
}

int Life::runThread(void* thread) {
  const auto& argument = *static_cast<ThreadArgument*>(thread);
  for (const Operation& operation : *argument.operations) argument.life->perform(operation);
  return 0;
}

void Life::runThreads() {
  duty(true);
  std::vector<ThreadArgument> arguments;
  for (const auto& operations : scenario.threads) arguments.push_back({this, &operations});
  std::vector<Thread> threads;
  for (ThreadArgument& argument : arguments) {
    threads.push_back(ThreadManager::createThread("simbox", runThread, &argument, true, false,
                                                  ThreadPriority::Normal));
  }
  for (Thread& thread : threads) expect(thread.wait(), "a thread does not end");
  duty(false);
}

void Life::run() {
  const std::uint64_t blocks = nosAllocatedBlocks();
  {
    BoxManager manager("simbox");
    open(manager);
    nosSleep(1);  // the box thread goes to sleep
    runThreads();
    // Longer than any delay: all that was scheduled or started comes.
    constexpr std::uint32_t kQuietMillis = 60'000;
    nosSleep(kQuietMillis);
    model.checkQuiet();
    model.end();
    boxes[0]->memoDeallocate(memos[0]);
    boxes[0]->timerDeallocate(memos[kMemos]);
    manager.boxDeallocate(boxes[0]);
  }
  expect(nosAllocatedBlocks() == blocks, "memory is left");
}

}  // namespace

Scenario randomScenario(std::uint32_t seed) {
  std::mt19937 random(seed);
  const auto below = [&](unsigned end) { return static_cast<unsigned>(random() % end); };
  const auto delay = [&] {
    const unsigned most[] = {1, 3, 40, 3'400, 26'000};
    return below(most[below(5)]);
  };
  Scenario scenario;
  scenario.threads.resize(2 + below(2));
  for (auto& operations : scenario.threads) {
    for (unsigned count = 1 + below(6); count != 0; --count) {
      Operation operation{static_cast<Kind>(below(11)), below(kMemos)};
      const unsigned priorities[] = {0, 1, 5, 5, 10, 15, 99};
      const unsigned priority = priorities[below(7)];
      const unsigned value = 1 + below(1000);
      switch (operation.kind) {
        case Kind::DispatchMultiple:
          operation.a = below(4);
          break;
        case Kind::Schedule:
          operation.a = delay();
          break;
        case Kind::TimerStart:
          operation.subject = kMemos + below(kTimers);
          operation.a = delay();
          operation.b = value;
          operation.c = priority;
          break;
        case Kind::TimerStop:
          operation.subject = kMemos + below(kTimers);
          break;
        case Kind::GetState:
          operation.subject = below(kMemos + kTimers);
          break;
        case Kind::Receive:
          operation.subject = below(kBoxes);
          operation.a = below(3) == 0 ? 0 : delay();
          break;
        default:
          operation.a = value;
          operation.b = priority;
          operation.c = operation.kind == Kind::UpdateDispatchMultiple ? below(4) : below(2);
      }
      operations.push_back(operation);
    }
  }
  return scenario;
}

void live(const Scenario& scenario, bool isPunctual, nomos::simulated::Chooser& chooser,
          const std::function<void(bool)>& duty, const nomos::simulated::Failure& fail,
          std::string* trace) {
  Model model(isPunctual, fail);
  Simulation simulation(chooser, model, fail);
  simulation.traceTo(trace);
  Life life{scenario, simulation, model, duty, fail};
  simulation.run([&] { life.run(); });
}

}  // namespace simbox
