// The books of a box's memos, and the operations that a kind of box does not have.

#include "memory.h"
#include "source.h"

#include "nomos/dlldesc.h"
#include "nomos/exception.h"
#include "nomos/relativetime.h"

#include "sys/boxes.h"

#include <algorithm>
#include <utility>

namespace boxes = nomutil::boxes;

namespace {

// What a call of an operation that only a complete box has comes to: the process is dumped, by a
// function of nomos that older ones lack, and the call thrown back.
[[noreturn]] void pureCall() {
  constexpr int kPureCallDump = 2;
  using ProcessDump = void (*)(int kind);
  if (void* const dump = nosFindExport("nosProcessDump")) {
    reinterpret_cast<ProcessDump>(dump)(kPureCallDump);
  }
  throw NomException(0);
}

void reportMissing() {
  NOMUTIL_ASSERT_TEXT("include/sys/boxes", BoxCommon::noVirtualFunction, "noVirtualFunction");
}

}  // namespace

BoxCommon::BoxCommon(BoxManager* manager) : _manager(manager), _memos(nullptr), _memoCount(0) {}

BoxCommon::~BoxCommon() = default;

void BoxCommon::_enter(Memo*) {
  pureCall();
}
void BoxCommon::_cleanup() {
  pureCall();
}

void BoxCommon::memoDispatch(Memo*) {
  reportMissing();
}
void BoxCommon::memoUpdateDispatch(Memo*, unsigned, unsigned, bool) {
  reportMissing();
}
void BoxCommon::memoDispatchMultiple(Memo*, unsigned) {
  reportMissing();
}
void BoxCommon::memoUpdateDispatchMultiple(Memo*, unsigned, unsigned, unsigned) {
  reportMissing();
}
void BoxCommon::memoSchedule(Memo*, unsigned) {
  reportMissing();
}
void BoxCommon::memoCancel(Memo*) {
  reportMissing();
}
void BoxCommon::memoUpdate(Memo*, unsigned, unsigned, bool) {
  reportMissing();
}
void BoxCommon::timerStart(Memo*, unsigned, unsigned, unsigned) {
  reportMissing();
}
void BoxCommon::timerStop(Memo*) {
  reportMissing();
}
void BoxCommon::getMemoState(Memo*, MemoLocus&, unsigned&) {
  reportMissing();
}

void BoxCommon::_remember(Memo* memo) {
  memo->_linkZ = {nullptr, _memos};
  if (_memos != nullptr) _memos->_linkZ.prev = memo;
  _memos = memo;
  ++_memoCount;
}

bool BoxCommon::_isRemembered(const Memo* memo) const {
  return memo == _memos || memo->_linkZ.prev != nullptr;
}

void BoxCommon::_forget(Memo* memo) {
  if (!_isRemembered(memo)) return;
  const MemoLinkage link = memo->_linkZ;
  (link.prev != nullptr ? link.prev->_linkZ.next : _memos) = link.next;
  if (link.next != nullptr) link.next->_linkZ.prev = link.prev;
  memo->_clearLinkZ();
  --_memoCount;
}

void BoxCommon::_withdraw(Memo* memo) {
  switch (memo->_locus) {
    case ML_Box:
      static_cast<Box*>(this)->_remove(memo);
      break;  // only a Box has a queue
    case ML_Calendar:
      _calendarRemove(memo);
      break;
    case ML_Wheel:
      _manager->_timerDisarm(memo);
      break;
    default:
      break;
  }
}

void BoxCommon::_release(Memo*& memo) {
  Memo* const freed = std::exchange(memo, nullptr);
  BoxCommon* const box = freed->_box;
  if (box == nullptr) return;  // no box allocated it
  box->_grabChangeLock();
  // A free memo is its box's to reuse; one that no box allocated is its maker's.
  const bool isFree = freed->_locus == ML_Free;
  box->_withdraw(freed);
  if (!isFree) box->_forget(freed);
  box->_dropChangeLock();
  if (!isFree && freed->_usage != MU_None) boxes::destroy(freed);
}

void BoxCommon::_releaseAll() {
  while (Memo* const memo = _memos) {
    _withdraw(memo);
    _forget(memo);
    boxes::destroy(memo);
  }
}

unsigned BoxCommon::_remaining(const Memo* memo) {
  const std::int64_t left = static_cast<std::int64_t>(memo->_time) - nosGetRelativeTime();
  return static_cast<unsigned>(std::max<std::int64_t>(left, 0));
}

void BoxCommon::_calendarEnter(Memo* memo, unsigned delayMillis, std::int64_t now) {
  _manager->_calendarEnter(memo, delayMillis, now);
}

void BoxCommon::_calendarRemove(Memo* memo) {
  _manager->_calendarRemove(memo);
}
