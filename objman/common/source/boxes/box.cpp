// A box's queue, its receivers, and the operations on its memos and timers. An operation given a
// memo of another box leaves it to that box, whose lock it is that guards the memo.

#include "memoqueue.h"
#include "memory.h"
#include "source.h"
#include "timerwheel.h"

#include "nomos/relativetime.h"

#include "sys/boxes.h"
#include "sys/messages.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace boxes = nomutil::boxes;

namespace {

// Deadlines are times of the relative clock, or one of these.
constexpr std::int64_t kNoDeadline = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLookOnly = std::numeric_limits<std::int64_t>::min();

std::int64_t deadlineOf(unsigned timeoutMillis) {
  if (timeoutMillis == kNosInfinite) return kNoDeadline;
  return timeoutMillis != 0 ? nosGetRelativeTime() + timeoutMillis : kLookOnly;
}

}  // namespace

Box::Box(BoxManager* manager) : BoxCommon(manager) {}

Box::~Box() = default;

int Box::_allocate(Memo*& memo, MemoUsage usage, unsigned value, unsigned priority, bool separate) {
  memo = boxes::create<Memo>(this);
  if (memo == nullptr) return kDatabaseMemoryAllocationFailed;
  memo->_usage = usage;
  _grabChangeLock();
  _memoUpdate(memo, value, priority, separate);
  _remember(memo);
  _dropChangeLock();
  return 0;
}

int Box::memoAllocate(Memo*& memo, unsigned value, unsigned priority, bool separate) {
  return _allocate(memo, MU_Memo, value, priority, separate);
}

int Box::timerAllocate(Memo*& memo) {
  return _allocate(memo, MU_Timer, 0, 0, false);
}

void Box::memoDeallocate(Memo*& memo) {
  if (memo == nullptr) return;
  NOMUTIL_REQUIRE(boxes::kSource, memo->_usage == MU_Memo);
  NOMUTIL_REQUIRE(boxes::kSource, memo->_box == this);
  _release(memo);
}

void Box::timerDeallocate(Memo*& memo) {
  if (memo == nullptr) return;
  NOMUTIL_REQUIRE(boxes::kSource, memo->_usage == MU_Timer);
  NOMUTIL_REQUIRE(boxes::kSource, memo->_box == this);
  _release(memo);
}

// A broken contract is reported, and the operation done; but a memo that no box allocated is left
// alone, since its maker may end it where a box still holds it.
bool Box::_isMemo(const Memo* memo) {
  if (memo->_usage == MU_Memo) return true;
  NOMUTIL_REQUIRE(boxes::kSource, memo->_usage == MU_Memo);
  return memo->_usage == MU_Timer;
}

bool Box::_isTimer(const Memo* memo) {
  if (memo->_usage == MU_Timer) return true;
  NOMUTIL_REQUIRE(boxes::kSource, memo->_usage == MU_Timer);
  return memo->_usage == MU_Memo;
}

void Box::memoDispatch(Memo* memo) {
  if (memo->_box != this) return memo->dispatch();
  _grabChangeLock();
  if (_isMemo(memo)) {
    if (memo->_locus != ML_Box) _withdraw(memo);
    _enter(memo);
  }
  _dropAndWake();
}

void Box::memoUpdateDispatch(Memo* memo, unsigned value, unsigned priority, bool separate) {
  if (memo->_box != this) return memo->updateDispatch(value, priority, separate);
  _grabChangeLock();
  if (_isMemo(memo)) {
    _withdraw(memo);
    _memoUpdate(memo, value, priority, separate);
    _enter(memo);
  }
  _dropAndWake();
}

void Box::memoDispatchMultiple(Memo* memo, unsigned count) {
  if (memo->_box != this) return memo->dispatchMultiple(count);
  _grabChangeLock();
  if (_isMemo(memo)) {
    if (memo->_locus != ML_Box) _withdraw(memo);
    _enter(memo);
    _update(memo, count - 1);
  }
  _dropAndWake();
}

void Box::memoUpdateDispatchMultiple(Memo* memo, unsigned value, unsigned priority,
                                     unsigned count) {
  if (memo->_box != this) return memo->updateDispatchMultiple(value, priority, count);
  _grabChangeLock();
  if (_isMemo(memo)) {
    _withdraw(memo);
    _memoUpdate(memo, value, priority, true);
    _enter(memo);
    _update(memo, count - 1);
  }
  _dropAndWake();
}

void Box::memoSchedule(Memo* memo, unsigned delayMillis) {
  if (memo->_box != this) return memo->schedule(delayMillis);
  const std::int64_t now = nosGetRelativeTime();
  _grabChangeLock();
  if (_isMemo(memo)) {
    _withdraw(memo);
    memo->_signals = 0;
    _calendarEnter(memo, delayMillis, now);
  }
  _dropChangeLock();
}

void Box::memoCancel(Memo* memo) {
  if (memo->_box != this) return memo->cancel();
  _grabChangeLock();
  if (_isMemo(memo)) {
    _withdraw(memo);
    memo->_signals = 0;
  }
  _dropChangeLock();
}

void Box::memoUpdate(Memo* memo, unsigned value, unsigned priority, bool separate) {
  if (memo->_box != this) return memo->update(value, priority, separate);
  _grabChangeLock();
  if (_isMemo(memo)) {
    _withdraw(memo);
    _memoUpdate(memo, value, priority, separate);
  }
  _dropChangeLock();
}

void Box::timerStart(Memo* memo, unsigned intervalMillis, unsigned value, unsigned priority) {
  if (memo->_box != this) return memo->start(intervalMillis, value, priority);
  const std::int64_t now = nosGetRelativeTime();
  _grabChangeLock();
  if (_isTimer(memo)) {
    _withdraw(memo);
    BoxManager::_nailPriority(priority);
    memo->_content._value = value;
    memo->_content._priority = priority;
    boxes::TimerWheel::setLegs(memo, intervalMillis);
    _manager->_timerArm(memo, now);
  }
  _dropChangeLock();
}

void Box::timerStop(Memo* memo) {
  if (memo->_box != this) return memo->stop();
  _grabChangeLock();
  if (_isTimer(memo)) {
    _withdraw(memo);
  }
  _dropChangeLock();
}

void Box::getMemoState(Memo* memo, MemoLocus& locus, unsigned& remaining) {
  if (memo->_box != this) return memo->getState(locus, remaining);
  _grabChangeLock();
  NOMUTIL_REQUIRE(boxes::kSource, memo->_usage == MU_Memo || memo->_usage == MU_Timer);
  locus = memo->_locus;
  switch (locus) {
    case ML_Box:
      remaining = memo->_signals;
      break;
    case ML_Calendar:
    case ML_Wheel:
      remaining = _remaining(memo);
      break;
    default:
      remaining = 0;
  }
  _dropChangeLock();
}

void Box::receive(unsigned timeoutMillis, unsigned& value, unsigned& signalCount) {
  value = 0;
  signalCount = 0;
  const std::int64_t deadline = deadlineOf(timeoutMillis);
  if (!_serialised) {
    _receive(deadline, value, signalCount);
  } else if (_admit(deadline)) {
    _receive(deadline, value, signalCount);
    _receiveLock.relinquish();
  }
}

// Waits, until the deadline, to be the one receiver of a serialised box.
bool Box::_admit(std::int64_t deadline) {
  constexpr std::int64_t kPollMillis = 15;
  if (deadline == kNoDeadline) {
    _receiveLock.acquire();
    return true;
  }
  while (!_receiveLock.tryAcquire()) {
    if (deadline == kLookOnly) return false;
    const std::int64_t left = deadline - nosGetRelativeTime();
    if (left > 0) nosSleep(static_cast<std::uint32_t>(std::min(left, kPollMillis)));
    if (nosGetRelativeTime() >= deadline) return false;
  }
  return true;
}

// There is exactly one wait: who finds the queue empty behind it goes away with nothing.
void Box::_receive(std::int64_t deadline, unsigned& value, unsigned& signalCount) {
  _grabChangeLock();
  if (_boxCount == 0 && deadline != kLookOnly) {
    _dropChangeLock();
    if (deadline == kNoDeadline) {
      _arrival.wait();
    } else {
      _arrival.waitUntil(deadline);
    }
    _grabChangeLock();
  }
  if (_boxCount != 0) _take(value, signalCount);
  _dropAndWake();
}

void Box::_take(unsigned& value, unsigned& signalCount) {
  Memo* const memo = _boxHead;
  _remove(memo);
  if (!memo->_separate) {
    memo->_signals = 0;
  } else if (memo->_signals != 0 && --memo->_signals != 0) {
    _enter(memo);
  }
  value = memo->_content._value;
  signalCount = _signalCount.load(std::memory_order_relaxed);
}

void Box::_enter(Memo* memo) {
  if (memo->_locus == ML_Box) {
    // A queued memo keeps its place: only its signal count grows.
    _update(memo, 1);
    return;
  }
  memo->_clearLinkA();
  memo->_locus = ML_Box;
  _queue().enter(memo);
  if (memo->_signals == 0) memo->_signals = 1;
  _count(memo->_signals);
  if (_boxCount == 1 && _arrival.signal()) _wakes = true;
}

void Box::_remove(Memo* memo) {
  const Memo* const prev = memo->_linkA.prev;
  const Memo* const next = memo->_linkA.next;
  const bool isQueued =
      (prev != nullptr || next != nullptr) || (_boxHead == memo && _boxCount == 1);
  NOMUTIL_ASSERT_TEXT(boxes::kSource, isQueued,
                      "(prev != 0 || next != 0) || (_boxHead == memo && _boxCount == 1)");
  memo->_locus = ML_Idle;
  if (!isQueued) return;
  _queue().remove(memo);
  _count(0 - memo->_signals);
  if (_boxCount == 0) _arrival.reset();
}

// Behind the lock nothing of the box is read: who received may have ended it.
void Box::_dropAndWake() {
  const bool wakes = std::exchange(_wakes, false);
  _dropChangeLock();
  if (wakes) Event::wakeAll(&_arrival);
}

void Box::_wake() {
  if (std::exchange(_wakes, false)) Event::wakeAll(&_arrival);
}

void Box::_cleanup() {
  _releaseAll();
}

boxes::MemoQueue Box::_queue() {
  return {_boxHead, _boxTail, _boxCount, _marks};
}

// Signals are counted modulo 2^32, and taken away by adding their negative.
void Box::_update(Memo* memo, std::uint32_t signals) {
  memo->_signals += signals;
  _count(signals);
}

void Box::_count(std::uint32_t signals) {
  _signalCount.store(_signalCount.load(std::memory_order_relaxed) + signals,
                     std::memory_order_relaxed);
}

void Box::_memoUpdate(Memo* memo, unsigned value, unsigned priority, bool separate) {
  BoxManager::_nailPriority(priority);
  memo->_separate = separate;
  memo->_signals = 0;
  memo->_content._value = value;
  memo->_content._priority = priority;
}
