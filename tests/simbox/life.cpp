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
  BoxIOCP* portBox = nullptr;
  CompletionPort port{};
  Memo* memos[kAll] = {};

  void expect(bool condition, const char* what) const {
    if (!condition) fail(what);
  }
  void run();
  void open(BoxManager& manager);
  void allocate(unsigned i);
  unsigned receiveFromPort(unsigned timeout);
  void runThreads();
  void perform(const Operation& operation);
  static int runThread(void* thread);
};

struct ThreadArgument {
  Life* life;
  const std::vector<Operation>* operations;
};

bool isSeparate(unsigned memo) {
  return memo == 2 || memo == 3;
}

void Life::allocate(unsigned i) {
  Box* const box = boxes[i % kBoxes];
  int status = 0;
  if (i >= kFirstPort) {
    status = portBox->memoAllocate(memos[i], 0, i, nullptr);
  } else if (i >= kMemos && i < kFirstOwn) {
    status = box->timerAllocate(memos[i]);
  } else {
    status = box->memoAllocate(memos[i], 0, i < kMemos ? 1 : 0, isSeparate(i));
  }
  expect(status == 0, "no memo");
}

void Life::open(BoxManager& manager) {
  expect(manager.initialise(true) == 0, "no manager");
  for (unsigned i = 0; i < kBoxes; ++i) {
    expect(manager.boxAllocate(boxes[i], i == 1) == 0, "no box");
  }
  constexpr unsigned kBoxThread = 1;  // the fiber that the manager has started
  model.begin(simulation, manager, {boxes, boxes + kBoxes}, kBoxThread);
  model.end();  // what is being allocated is not in the model yet
  expect(manager.boxIOCPAllocate(portBox, port.handle()) == 0, "no box");
  for (unsigned i = 0; i < kAll; ++i) allocate(i);
  model.begin(simulation, manager, {boxes, boxes + kBoxes}, kBoxThread);
  for (unsigned i = 0; i < kAll; ++i) {
    model.addMemo(memos[i], i < kFirstPort ? i % kBoxes : kBoxes, i < kMemos ? 1 : 0,
                  isSeparate(i));
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
    case Kind::Replace:
      boxes[subject % kBoxes]->memoDeallocate(memos[subject]);
      allocate(subject);
      model.isReplaced(subject, memos[subject]);
      break;
    case Kind::PortDispatch:
      portBox->memoDispatch(memos[subject]);
      break;
    case Kind::PortDispatchMultiple:
      portBox->memoDispatchMultiple(memos[subject], a);
      break;
    case Kind::PortSchedule:
      portBox->memoSchedule(memos[subject], a);
      break;
    case Kind::PortReschedule:
      value = portBox->memoRescheduleUpdated(memos[subject], a, b, subject, nullptr);
      break;
    case Kind::PortCancel:
      portBox->memoCancel(memos[subject]);
      break;
    case Kind::PortMark:
      portBox->markMemoReceived(memos[subject]);
      break;
    case Kind::PortReceive:
      value = receiveFromPort(a);
      break;
  }
  model.returns(value, count, locus);
  simulation.note("had " + std::to_string(value) + ' ' + std::to_string(count));
}

unsigned Life::receiveFromPort(unsigned timeout) {
  NomULong bytes = 0;
  std::uint64_t key = 0;
  OVERLAPPED* overlapped = nullptr;
  const int result = portBox->receive(bytes, key, overlapped, static_cast<int>(timeout));
  if (result != 0) model.packetCame(static_cast<unsigned>(key));
  return static_cast<unsigned>(result);
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
    while (receiveFromPort(0) != 0) {
    }
    model.checkQuiet();
    model.end();
    boxes[0]->memoDeallocate(memos[0]);
    boxes[0]->timerDeallocate(memos[kMemos]);
    manager.boxDeallocate(boxes[0]);
    port.close();
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
    const auto own = kFirstOwn + static_cast<unsigned>(&operations - scenario.threads.data());
    for (unsigned count = 1 + below(6); count != 0; --count) {
      Operation operation{static_cast<Kind>(below(kKinds)), below(5) == 0 ? own : below(kMemos)};
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
        case Kind::Replace:
          operation.subject = own;
          break;
        case Kind::PortDispatch:
        case Kind::PortDispatchMultiple:
        case Kind::PortSchedule:
        case Kind::PortReschedule:
        case Kind::PortCancel:
        case Kind::PortMark:
          operation.subject = kFirstPort + below(kPortMemos);
          operation.a = operation.kind == Kind::PortDispatchMultiple ? below(4) : delay();
          break;
        case Kind::PortReceive:
          operation.a = delay();
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
