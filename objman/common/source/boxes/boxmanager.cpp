// The manager gives the calendar and the wheel their lock, their clock and their thread.

#include "calendarindex.h"
#include "memory.h"
#include "source.h"
#include "timerwheel.h"

#include "nomos/intl.h"
#include "nomos/log.h"
#include "nomos/relativetime.h"

#include "sys/boxes.h"
#include "sys/messages.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace boxes = nomutil::boxes;

BoxManager::BoxManager(const char* name) {
  if (name != nullptr) std::strncpy(_name, name, sizeof _name - 1);
}

int BoxManager::initialise(bool timers) {
  _grabChangeLock();
  int status = _calendarInitialise();
  if (status == 0 && timers) status = _timerInitialise();
  _dropChangeLock();
  if (status != 0 || _thread) return status;
  char name[32];
  intlSnprintf(name, sizeof name, "BoxThread%s", _name);
  _thread = ThreadManager::createThread(name, _boxThreadJacket, this, true, false,
                                        ThreadPriority::AboveNormal);
  if (_thread) return 0;
  nomInfo("[BoxManager::initialise]%s cannot allocate box thread", _name);
  return kInsufficientSystemResources;
}

// Callers are gone and the thread has ended, or has been given up: nobody needs the lock.
BoxManager::~BoxManager() NOMOS_NO_THREAD_SAFETY_ANALYSIS {
  constexpr std::uint32_t kThreadEndMillis = 60'000;
  _running.store(false, std::memory_order_relaxed);
  _wakeup.set();
  _thread.wait(kThreadEndMillis);
  while (BoxCommon* const box = _boxes) {
    _clean(box);
    boxes::destroy(box);
  }
  boxes::destroy(_calendar.end());
  boxes::destroy(_calendarIndex);
  boxes::destroy(_timerTick);
  boxes::destroy(_keepAliveA);
  boxes::destroy(_keepAliveB);
  boxes::destroy(_wheel);
  if (_behind != 0) {
    // The underscore is part of the line that operators look for.
    nomInfo("BoxManager %s: timer management fell _behind %d times", _name,
            static_cast<int>(_behind));
  }
}

int BoxManager::boxAllocate(Box*& box, bool serialised) {
  box = boxes::create<Box>(this);
  if (box == nullptr) return kDatabaseMemoryAllocationFailed;
  box->_serialised = serialised;
  _enlist(box);
  return 0;
}

int BoxManager::boxIOCPAllocate(BoxIOCP*& box, NosCompletionPort port) {
  box = boxes::create<BoxIOCP>(this, port);
  if (box == nullptr) return kDatabaseMemoryAllocationFailed;
  _enlist(box);
  return 0;
}

void BoxManager::boxDeallocate(Box*& box) {
  if (box == nullptr) return;
  NOMUTIL_REQUIRE(boxes::kSource, box->_manager == this);
  _deallocate(std::exchange(box, nullptr));
}

void BoxManager::boxIOCPDeallocate(BoxIOCP*& boxiocp) {
  if (boxiocp == nullptr) return;
  NOMUTIL_REQUIRE(boxes::kSource, boxiocp->_manager == this);
  _deallocate(std::exchange(boxiocp, nullptr));
}

// By the manager that the box belongs to.
void BoxManager::_deallocate(BoxCommon* box) {
  BoxManager* const manager = box->_manager;
  manager->_grabChangeLock();
  manager->_clean(box);
  manager->_dropChangeLock();
  boxes::destroy(box);
}

void BoxManager::_clean(BoxCommon* box) {
  box->_cleanup();
  _forget(box);
}

void BoxManager::_enlist(BoxCommon* box) {
  _grabChangeLock();
  _remember(box);
  _dropChangeLock();
}

void BoxManager::_remember(BoxCommon* box) {
  box->_link = {nullptr, _boxes};
  if (_boxes != nullptr) _boxes->_link.prev = box;
  _boxes = box;
  ++_boxTotal;
}

void BoxManager::_forget(BoxCommon* box) {
  const BoxLinkage link = box->_link;
  (link.prev != nullptr ? link.prev->_link.next : _boxes) = link.next;
  if (link.next != nullptr) link.next->_link.prev = link.prev;
  box->_link = BoxLinkage();
  --_boxTotal;
}

void BoxManager::_nailPriority(unsigned& priority) {
  constexpr unsigned kHighest = 15;
  priority = std::min(priority, kHighest);
}

int BoxManager::_boxThreadJacket(void* manager) {
  static_cast<BoxManager*>(manager)->_boxThread();
  return 0;
}

void BoxManager::_boxThread() {
  constexpr std::int64_t kLongestWait = 3'600'000;
  nosUseFinestTimerSlack();
  while (_running.load(std::memory_order_relaxed)) {
    _grabChangeLock();
    const std::int64_t now = nosGetRelativeTime();
    const std::int64_t due = _calendar.due();
    if (due > now) {
      _dropChangeLock();
      _wakeup.waitUntil(std::min(due, now + kLongestWait));
      _grabChangeLock();
    }
    if (_running.load(std::memory_order_relaxed)) _moveDue();
    _dropChangeLock();
  }
}

// Moves every memo that has come due to where it is due.
void BoxManager::_moveDue() {
  for (;;) {
    const std::int64_t now = nosGetRelativeTime();
    if (_calendar.count() == 0 || _calendar.due() > now) return;
    Memo* const memo = _calendar.head();
    _calendarRemove(memo);
    if (memo->_usage == MU_TimerTick) {
      _dispatchExpiredTimers(now);
    } else {
      memo->_boxEnter();
    }
  }
}

int BoxManager::_calendarInitialise() {
  if (_calendarIndex == nullptr) _calendarIndex = boxes::create<boxes::CalendarIndex>();
  if (_calendarIndex == nullptr) return kDatabaseMemoryAllocationFailed;
  if (_calendar.end() != nullptr) return 0;
  Memo* const end = boxes::create<Memo>(nullptr);
  if (end == nullptr) return kDatabaseMemoryAllocationFailed;
  end->_usage = MU_CalendarEnd;
  _calendar.begin(end);
  return 0;
}

void BoxManager::_calendarEnter(Memo* memo, std::uint32_t delayMillis, std::int64_t now) {
  if (_calendar.end() == nullptr) return;  // not initialised: the memo stays idle
  const std::uint64_t due = static_cast<std::uint64_t>(now) + delayMillis;
  if (_calendar.enter(memo, due, _calendarIndex)) _wakeup.set();
}

void BoxManager::_calendarRemove(Memo* memo) {
  _calendar.remove(memo, _calendarIndex);
}

int BoxManager::_timerInitialise() {
  if (_hasTimers()) return 0;
  const auto make = [](Memo*& memo, MemoUsage usage) {
    if (memo == nullptr) memo = boxes::create<Memo>(nullptr);
    if (memo != nullptr) memo->_usage = usage;
    return memo != nullptr;
  };
  if (_wheel == nullptr) _wheel = boxes::create<boxes::WheelSlots>();
  if (_wheel == nullptr || !make(_timerTick, MU_TimerTick) || !make(_keepAliveA, MU_KeepAlive) ||
      !make(_keepAliveB, MU_KeepAlive)) {
    return kDatabaseMemoryAllocationFailed;
  }
  const std::int64_t now = nosGetRelativeTime();
  _calendarEnter(_timerTick, _timerWheel().begin(_keepAliveA, _keepAliveB, now), now);
  return 0;
}

// The third memo is the last that _timerInitialise makes.
bool BoxManager::_hasTimers() const {
  return _keepAliveB != nullptr;
}

boxes::TimerWheel BoxManager::_timerWheel() {
  return {*_wheel, _slotTime, _armedCount, _currentSlot, _behind};
}

// Without a wheel, the timer stays idle.
void BoxManager::_timerArm(Memo* memo, std::int64_t now) {
  if (_hasTimers()) _timerTickAgain(_timerWheel().arm(memo, now), now);
}

void BoxManager::_timerDisarm(Memo* memo) {
  if (!_timerWheel().disarm(memo)) return;
  const std::int64_t now = nosGetRelativeTime();
  _timerTickAgain(_timerWheel().advance(now), now);
}

void BoxManager::_timerTickAgain(std::optional<std::uint32_t> tick, std::int64_t now) {
  if (!tick) return;
  if (_timerTick->_locus == ML_Calendar) _calendarRemove(_timerTick);
  _calendarEnter(_timerTick, *tick, now);
}

void BoxManager::_dispatchExpiredTimers(std::int64_t now) {
  Memo* next = nullptr;
  _calendarEnter(_timerTick, _timerWheel().expire(next, now), now);
  while (Memo* const memo = next) {
    next = memo->_linkA.next;
    if (_timerWheel().endLeg(memo)) {
      memo->_boxEnter();
    } else {
      _timerArm(memo, now);
    }
  }
}
