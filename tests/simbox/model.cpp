// The rules of boxes once more, as plainly as they can be said: every list is a vector, every walk
// goes from one end to the other.
#include "model.h"

#include "boxes/boxesaccess.h"

#include <algorithm>
#include <numeric>

namespace simbox {

using Inside = nomutil::boxes::BoxesAccess;
using nomutil::boxes::OnlyThread;

std::string text(const Operation& operation) {
  static const char* const names[] = {"dispatch",         "updateDispatch",
                                      "dispatchMultiple", "updateDispatchMultiple",
                                      "schedule",         "cancel",
                                      "update",           "timerStart",
                                      "timerStop",        "getState",
                                      "receive",          "replace",
                                      "portDispatch",     "portDispatchMultiple",
                                      "portSchedule",     "portReschedule",
                                      "portCancel",       "portMark",
                                      "portReceive"};
  return std::string(names[static_cast<int>(operation.kind)]) + ' ' +
         std::to_string(operation.subject) + ": " + std::to_string(operation.a) + ' ' +
         std::to_string(operation.b) + ' ' + std::to_string(operation.c);
}

void Model::begin(const nomos::simulated::Simulation& simulation, const BoxManager& manager,
                  std::vector<Box*> boxes, unsigned boxThread) {
  _simulation = &simulation;
  _manager = &manager;
  _boxes = std::move(boxes);
  _queues.resize(_boxes.size());
  _removals.resize(_boxes.size() + 1);  // the port counts as a box without a queue
  _boxThread = boxThread;
}

void Model::addMemo(Memo* memo, unsigned box, unsigned priority, bool separate) {
  _numbers[memo] = static_cast<unsigned>(_memos.size());
  _memos.push_back({memo, box, ML_Idle, 0, 0, priority, separate, 0});
}

void Model::enters(const Operation& operation) {
  Running running{operation};
  running.begin = _simulation->now() / 1'000'000;
  if (operation.kind == Kind::Receive) running.removals = _removals[operation.subject];
  _running[_simulation->current()] = running;
}

void Model::returns(unsigned value, unsigned signalCount, MemoLocus locus) {
  const Running running = _running[_simulation->current()];
  _running.erase(_simulation->current());
  if (running.operation.kind == Kind::Receive) {
    checkReceived(running, value, signalCount);
  } else if (running.operation.kind == Kind::PortReschedule) {
    expect(value == running.value, "memoRescheduleUpdated gave another");
  } else if (running.operation.kind != Kind::PortReceive) {
    expect(running.isDone, "an operation took no lock");
    const bool isState = running.operation.kind == Kind::GetState;
    expect(!isState || locus == running.locus, "getState gave another place");
    expect(!isState || locus != ML_Box || signalCount == running.signalCount,
           "getState gave other signals");
  }
}

// Who returns with nothing has waited as long as it was to, or was woken for what another took.
void Model::checkReceived(const Running& running, unsigned value, unsigned signalCount) {
  expect(value == running.value && signalCount == running.signalCount, "a receive gave another");
  const auto [kind, box, timeout, b, c] = running.operation;
  const bool isOver = timeout != kNosInfinite &&
                      _simulation->now() / 1'000'000 >= running.begin + std::int64_t{timeout};
  expect(running.isDone || isOver || _removals[box] != running.removals,
         "a receive ended before its time");
}

void Model::isReplaced(unsigned memo, Memo* fresh) {
  Entry& entry = _memos[memo];
  entry = {fresh, entry.box};
  _numbers[fresh] = memo;
}

void Model::packetCame(unsigned memo) {
  ++_memos[memo].came;  // it may come before the post has given its lock back
}

void Model::checkQuiet() {
  for (const Entry& entry : _memos) {
    expect(entry.locus != ML_Calendar && entry.locus != ML_Wheel, "a memo was lost");
    expect(entry.posted == entry.came, "a packet was lost or made");
  }
}

void Model::acquired(const ThreadMutex& mutex) {
  if (_manager == nullptr || !Inside::isChangeLock(*_manager, mutex)) return;
  const auto running = _running.find(_simulation->current());
  if (running != _running.end()) running->second.now = clock();
}

void Model::relinquishing(const ThreadMutex& mutex) {
  if (_manager == nullptr || !Inside::isChangeLock(*_manager, mutex)) return;
  const auto running = _running.find(_simulation->current());
  if (running != _running.end()) {
    apply(running->second);
  } else if (_simulation->current() == _boxThread) {
    judgeBoxThread();
  }
  compare();
}

void Model::apply(Running& running) {
  const auto [kind, memo, a, b, c] = running.operation;
  if (kind == Kind::Receive) return receive(running);
  if (kind == Kind::Replace && running.isDone) return;  // the new memo is not in the model yet
  expect(!running.isDone, "an operation took its lock twice");
  running.isDone = true;
  if (kind > Kind::Replace) return applyToPort(running);
  Entry& entry = _memos[memo];
  const bool staysQueued = kind == Kind::Dispatch || kind == Kind::DispatchMultiple;
  if (kind != Kind::GetState && !(staysQueued && entry.locus == ML_Box)) withdraw(memo);
  switch (kind) {
    case Kind::Dispatch:
      enter(memo);
      break;
    case Kind::UpdateDispatch:
      set(memo, a, b, c != 0);
      enter(memo);
      break;
    case Kind::DispatchMultiple:
      enter(memo);
      entry.signals += a - 1;
      break;
    case Kind::UpdateDispatchMultiple:
      set(memo, a, b, true);
      enter(memo);
      entry.signals += c - 1;
      break;
    case Kind::Schedule:
      entry.signals = 0;
      schedule(memo, running.now + a);
      break;
    case Kind::Replace:
      _numbers.erase(entry.memo);
      entry.memo = nullptr;
      break;
    case Kind::GetState:
      running.locus = entry.locus;
      running.signalCount = entry.signals;
      break;
    case Kind::Cancel:
      entry.signals = 0;
      break;
    case Kind::Update:
      set(memo, a, b, c != 0);
      break;
    case Kind::TimerStart:
      entry.value = b;
      entry.priority = std::min(c, 15u);
      entry.locus = ML_Wheel;
      entry.due = running.now + a;
      break;
    default:
      break;
  }
}

void Model::schedule(unsigned memo, std::int64_t due) {
  _memos[memo].locus = ML_Calendar;
  _memos[memo].due = due;
  const auto later =
      std::ranges::find_if(_calendar, [&](unsigned other) { return _memos[other].due > due; });
  _calendar.insert(later, memo);
}

void Model::applyToPort(Running& running) {
  const auto [kind, memo, a, b, c] = running.operation;
  const MemoLocus locus = _memos[memo].locus;
  const bool isScheduled = locus == ML_Calendar;
  if (isScheduled && kind != Kind::PortMark) withdraw(memo);
  switch (kind) {
    case Kind::PortDispatch:
      enter(memo);
      break;
    case Kind::PortDispatchMultiple:
      if (isScheduled) _memos[memo].locus = ML_Port;
      for (unsigned i = 0; i < a; ++i) enter(memo);
      break;
    case Kind::PortSchedule:
      schedule(memo, running.now + a);
      break;
    case Kind::PortReschedule:
      running.value = !isScheduled;
      if (isScheduled && a == 0) enter(memo);
      if (isScheduled && a != 0) schedule(memo, running.now + a);
      break;
    case Kind::PortMark:
      if (locus == ML_Port) _memos[memo].locus = ML_Idle;
      break;
    default:
      break;
  }
}

void Model::set(unsigned memo, unsigned value, unsigned priority, bool separate) {
  Entry& entry = _memos[memo];
  entry.signals = 0;
  entry.value = value;
  entry.priority = std::min(priority, 15u);
  entry.separate = separate;
}

void Model::withdraw(unsigned memo) {
  const unsigned box = _memos[memo].box;
  if (box < _queues.size()) {
    _removals[box] += static_cast<unsigned>(std::erase(_queues[box], memo));
  }
  std::erase(_calendar, memo);
  _memos[memo].locus = ML_Idle;
}

void Model::enter(unsigned memo) {
  Entry& entry = _memos[memo];
  if (entry.box == _queues.size()) {
    entry.locus = ML_Port;
    ++entry.posted;
    return;
  }
  if (entry.locus == ML_Box) {
    ++entry.signals;
    return;
  }
  entry.locus = ML_Box;
  if (entry.signals == 0) entry.signals = 1;
  std::vector<unsigned>& queue = _queues[entry.box];
  auto place = queue.end();
  if (!queue.empty() && entry.priority > _memos[queue.front()].priority) {
    place = queue.begin();
  } else if (!queue.empty() && entry.priority != 0) {
    place = std::find_if(queue.begin() + 1, queue.end(),
                         [&](unsigned other) { return _memos[other].priority < entry.priority; });
    if (place != queue.end()) ++place;
  }
  queue.insert(place, memo);
}

// A receive may hold the lock twice; it takes a memo at most once.
void Model::receive(Running& running) {
  std::vector<unsigned>& queue = _queues[running.operation.subject];
  if (queue.empty() || running.isDone) return;
  running.isDone = true;
  const unsigned memo = queue.front();
  withdraw(memo);
  Entry& entry = _memos[memo];
  if (!entry.separate) entry.signals = 0;
  if (entry.signals != 0 && --entry.signals != 0) enter(memo);
  running.value = entry.value;
  running.signalCount = signalsOf(running.operation.subject);
}

// What is in a queue now and was in calendar or wheel has been moved: what was scheduled in the
// calendar's order. Timers come between in an order that only the wheel knows: where one came, the
// queue is taken as it is, but what was queued before keeps its order.
void Model::judgeBoxThread() {
  const OnlyThread only;
  constexpr std::int64_t kSure = 20'000;  // farther behind, slots of the wheel are not unique
  const std::int64_t now = clock();
  const bool isSure = now - static_cast<std::int64_t>(Inside::slotTime(*_manager)) <= kSure;
  std::vector<bool> movedTimer(_boxes.size() + 1);
  for (Entry& entry : _memos) {
    if (entry.memo == nullptr || Inside::locus(*entry.memo) == entry.locus) continue;
    expect(entry.locus == ML_Wheel || entry.locus == ML_Calendar, "an idle memo was moved");
    expect(entry.due <= now || (entry.locus == ML_Wheel && !isSure), "a memo came too early");
    expect(entry.due == now || !_isPunctual, "a memo came too late");
    if (entry.locus == ML_Wheel) movedTimer[entry.box] = true;
  }
  for (const unsigned memo : std::vector<unsigned>(_calendar)) {
    const Entry& entry = _memos[memo];
    if (Inside::locus(*entry.memo) == ML_Calendar) continue;
    withdraw(memo);
    if (!movedTimer[entry.box]) enter(memo);
  }
  for (Entry& entry : _memos) {
    if (entry.memo == nullptr || Inside::locus(*entry.memo) != ML_Box || entry.locus == ML_Box) {
      continue;
    }
    entry.locus = ML_Box;
    if (entry.signals == 0) entry.signals = 1;
  }
  for (unsigned box = 0; box < _boxes.size(); ++box) {
    if (!movedTimer[box]) continue;
    std::vector<unsigned> queue = queueOf(*_boxes[box]);
    std::vector<unsigned> before;
    for (const unsigned memo : queue) {
      if (std::ranges::find(_queues[box], memo) != _queues[box].end()) before.push_back(memo);
    }
    expect(before == _queues[box], "a move changed the order of what was queued");
    _queues[box] = std::move(queue);
  }
  if (!_calendar.empty()) expect(_memos[_calendar.front()].due > now, "a due memo was left");
}

void Model::compare() {
  const OnlyThread only;
  std::size_t running = 0;
  for (const Entry& entry : _memos) {
    if (entry.memo == nullptr) continue;
    expect(Inside::locus(*entry.memo) == entry.locus, "a memo is somewhere else");
    if (entry.locus == ML_Box || entry.separate) {
      expect(Inside::signals(*entry.memo) == entry.signals, "a memo has other signals");
    }
    running += entry.locus == ML_Wheel;
  }
  expect(Inside::armedCount(*_manager) == running + 2, "the wheel's count is wrong");
  for (unsigned box = 0; box < _boxes.size(); ++box) {
    expect(queueOf(*_boxes[box]) == _queues[box], "a queue has another order");
    expect(Inside::queueCount(*_boxes[box]) == _queues[box].size(), "a queue's count is wrong");
    expect(static_cast<std::uint32_t>(_boxes[box]->signalCount()) == signalsOf(box),
           "signals were lost or made");
  }
  const BoxManager::Calendar& calendar = Inside::calendar(*_manager);
  std::vector<unsigned> order;
  std::uint32_t count = 0;
  for (const Memo* memo = calendar.head(); memo != calendar.end(); ++count) {
    if (Inside::usage(*memo) != MU_TimerTick) {
      order.push_back(numberOf(memo));
      expect(static_cast<std::int64_t>(Inside::time(*memo)) == _memos[order.back()].due,
             "a scheduled memo has another time");
    }
    const Memo* const next = Inside::link(*memo).next;
    expect(Inside::link(*next).prev == memo && Inside::time(*memo) <= Inside::time(*next),
           "the calendar is not in order");
    memo = next;
  }
  expect(order == _calendar, "the calendar has other memos");
  expect(calendar.count() == count, "the calendar's count is wrong");
}

std::vector<unsigned> Model::queueOf(const Box& box) {
  const OnlyThread only;
  std::vector<unsigned> numbers;
  for (const Memo* memo = Inside::queueHead(box); memo != nullptr;
       memo = Inside::link(*memo).next) {
    numbers.push_back(numberOf(memo));
  }
  return numbers;
}

std::uint32_t Model::signalsOf(unsigned box) const {
  std::uint32_t sum = 0;
  for (const unsigned memo : _queues[box]) sum += _memos[memo].signals;
  return sum;
}

unsigned Model::numberOf(const Memo* memo) {
  return _numbers.at(memo);
}

std::int64_t Model::clock() const {
  return _simulation->lastReading() / 1'000'000;
}

void Model::expect(bool condition, const std::string& what) {
  if (!condition) _fail(what);
}

}  // namespace simbox
