// A box over a completion port. What it frees it keeps for a while: a free memo stays in the box's
// books, marked ML_Free and chained by _linkA.next. An operation on a free memo is reported and not
// done, since the next allocation gives that memo away; so is one on a memo that no box allocated.

#include "memory.h"
#include "source.h"

#include "nomos/lasterror.h"
#include "nomos/relativetime.h"

#include "sys/boxes.h"
#include "sys/messages.h"

#include <algorithm>
#include <utility>

namespace boxes = nomutil::boxes;

namespace {

// An operation that only completion-port boxes have, given a memo of another of them, is left to
// that one; null for a memo of a Box.
BoxIOCP* ownerOf(BoxCommon* box) {
  return dynamic_cast<BoxIOCP*>(box);
}

}  // namespace

BoxIOCP::BoxIOCP(BoxManager* manager, NosCompletionPort port) : BoxCommon(manager), _port(port) {}

BoxIOCP::BoxIOCP(const BoxIOCP& other) NOMOS_NO_THREAD_SAFETY_ANALYSIS
    : BoxCommon(other),
      _port(other._port),
      _freeHead(other._freeHead.load(std::memory_order_relaxed)),
      _freeCount(other._freeCount),
      _freeLimit(other._freeLimit) {}

BoxIOCP& BoxIOCP::operator=(const BoxIOCP& other) NOMOS_NO_THREAD_SAFETY_ANALYSIS {
  BoxCommon::operator=(other);
  _port = other._port;
  _freeHead.store(other._freeHead.load(std::memory_order_relaxed), std::memory_order_relaxed);
  _freeCount = other._freeCount;
  _freeLimit = other._freeLimit;
  return *this;
}

BoxIOCP::~BoxIOCP() = default;

int BoxIOCP::memoAllocate(Memo*& memo, NomULong bytes, std::uint64_t key, OVERLAPPED* overlapped) {
  memo = nullptr;
  if (_freeHead.load(std::memory_order_relaxed) != nullptr) {  // a hint: the lock decides
    _grabChangeLock();
    memo = _reuse();
    if (memo != nullptr) _memoUpdate(memo, bytes, key, overlapped);
    _dropChangeLock();
    if (memo != nullptr) return 0;
  }
  memo = boxes::create<Memo>(this);
  if (memo == nullptr) return kDatabaseMemoryAllocationFailed;
  memo->_usage = MU_Memo;
  _grabChangeLock();
  _memoUpdate(memo, bytes, key, overlapped);
  _remember(memo);
  _dropChangeLock();
  return 0;
}

void BoxIOCP::memoDeallocate(Memo*& memo) {
  if (memo == nullptr) return;
  if (!_isOwn(memo)) {
    BoxIOCP* const own = ownerOf(memo->_box);
    return own != nullptr ? own->memoDeallocate(memo) : _release(memo);
  }
  _grabChangeLock();
  Memo* const freed = _isInUse(memo) ? _recycle(memo) : nullptr;
  _dropChangeLock();
  boxes::destroy(freed);
  memo = nullptr;
}

bool BoxIOCP::memoDeallocateIfScheduledOrIdle(Memo*& memo, MemoLocus& locus) {
  if (memo == nullptr) return false;
  if (!_isOwn(memo)) {
    BoxIOCP* const own = ownerOf(memo->_box);
    locus = ML_None;
    return own == nullptr || own->memoDeallocateIfScheduledOrIdle(memo, locus);
  }
  _grabChangeLock();
  const bool isInUse = _isInUse(memo);
  locus = memo->_locus;
  const bool isLeft = !isInUse || (locus != ML_Calendar && locus != ML_Idle);
  Memo* const freed = isLeft ? nullptr : _recycle(memo);
  _dropChangeLock();
  boxes::destroy(freed);
  if (!isLeft) memo = nullptr;
  return isLeft;
}

void BoxIOCP::memoDispatch(Memo* memo) {
  if (memo->_box != this) return memo->dispatch();
  _grabChangeLock();
  if (_isInUse(memo)) {
    _withdraw(memo);
    _enter(memo);
  }
  _dropChangeLock();
}

void BoxIOCP::memoDispatchMultiple(Memo* memo, unsigned count) {
  if (memo->_box != this) return memo->dispatchMultiple(count);
  _grabChangeLock();
  if (_isInUse(memo)) {
    if (memo->_locus == ML_Calendar) {
      // With a count of 0 the memo stays marked as posted, without a packet.
      _calendarRemove(memo);
      memo->_locus = ML_Port;
    }
    for (; count != 0; --count) _enter(memo);
  }
  _dropChangeLock();
}

void BoxIOCP::memoDispatchIfScheduled(Memo* memo) {
  if (memo->_box != this) {
    if (BoxIOCP* const own = ownerOf(memo->_box)) own->memoDispatchIfScheduled(memo);
    return;
  }
  _grabChangeLock();
  if (_isInUse(memo) && memo->_locus == ML_Calendar) {
    _calendarRemove(memo);
    _enter(memo);
  }
  _dropChangeLock();
}

void BoxIOCP::memoSchedule(Memo* memo, unsigned delayMillis) {
  if (memo->_box != this) return memo->schedule(delayMillis);
  const std::int64_t now = nosGetRelativeTime();
  _grabChangeLock();
  if (_isInUse(memo)) {
    _withdraw(memo);
    _calendarEnter(memo, delayMillis, now);
  }
  _dropChangeLock();
}

bool BoxIOCP::memoRescheduleUpdated(Memo* memo, unsigned delayMillis, NomULong bytes,
                                    std::uint64_t key, OVERLAPPED* overlapped) {
  if (memo->_box != this) {
    BoxIOCP* const own = ownerOf(memo->_box);
    return own == nullptr || own->memoRescheduleUpdated(memo, delayMillis, bytes, key, overlapped);
  }
  const std::int64_t now = nosGetRelativeTime();
  _grabChangeLock();
  const bool isScheduled = _isInUse(memo) && memo->_locus == ML_Calendar;
  if (isScheduled) {
    _calendarRemove(memo);
    _memoUpdate(memo, bytes, key, overlapped);
    if (delayMillis == 0) {
      _enter(memo);
    } else {
      _calendarEnter(memo, delayMillis, now);
    }
  }
  _dropChangeLock();
  return !isScheduled;
}

void BoxIOCP::memoCancel(Memo* memo) {
  if (memo->_box != this) return memo->cancel();
  _grabChangeLock();
  if (_isInUse(memo)) _withdraw(memo);
  _dropChangeLock();
}

void BoxIOCP::getMemoState(Memo* memo, MemoLocus& locus, unsigned& remaining) {
  if (memo->_box != this) return memo->getState(locus, remaining);
  _grabChangeLock();
  NOMUTIL_REQUIRE(boxes::kSource, memo->_usage == MU_Memo);
  locus = memo->_locus;
  remaining = locus == ML_Calendar ? _remaining(memo) : 0;
  _dropChangeLock();
}

void BoxIOCP::markMemoReceived(Memo* memo) {
  if (memo->_box != this) {
    if (BoxIOCP* const own = ownerOf(memo->_box)) own->markMemoReceived(memo);
    return;
  }
  _grabChangeLock();
  if (_isInUse(memo) && memo->_locus == ML_Port) memo->_locus = ML_Idle;
  _dropChangeLock();
}

void BoxIOCP::setMemoFreeLimit(unsigned limit) {
  _grabChangeLock();
  _freeLimit = std::clamp(limit, MinFreeLimit, MaxFreeLimit);
  _dropChangeLock();
}

int BoxIOCP::receive(NomULong& bytes, std::uint64_t& key, OVERLAPPED*& overlapped,
                     int timeoutMillis) {
  void* record = nullptr;
  const bool isReceived =
      nosGetCompletion(_port, bytes, key, record, static_cast<std::uint32_t>(timeoutMillis));
  overlapped = static_cast<OVERLAPPED*>(record);
  return isReceived ? 1 : 0;
}

void BoxIOCP::_enter(Memo* memo) {
  memo->_locus = ML_Port;
  const Memo::IocpBoxData& packet = memo->_iocpBoxData;
  if (!nosPostCompletion(_port, packet.bytes, packet.key, packet.overlapped)) {
    nomInfo("BoxIOCP::_enter: PostQueuedCompletionStatus error=%d",
            static_cast<int>(nosGetLastError()));
  }
}

void BoxIOCP::_cleanup() {
  _releaseAll();
  _freeHead.store(nullptr, std::memory_order_relaxed);
  _freeCount = 0;
}

// Takes a memo from the free list; null when it is empty.
Memo* BoxIOCP::_reuse() {
  Memo* const memo = _freeHead.load(std::memory_order_relaxed);
  if (memo == nullptr) return nullptr;
  Memo* const next = memo->_linkA.next;
  _freeHead.store(next, std::memory_order_relaxed);
  _freeCount = next != nullptr ? _freeCount - 1 : 0;
  memo->_clearLinkA();
  memo->_locus = ML_Idle;
  return memo;
}

// Keeps a memo for reuse. One for which there is no room is struck out and returned, to be
// destroyed without the lock.
Memo* BoxIOCP::_recycle(Memo* memo) {
  _withdraw(memo);
  memo->_locus = ML_Free;
  if (_freeCount >= _freeLimit) {
    _forget(memo);
    return memo;
  }
  memo->_linkA = {nullptr, _freeHead.load(std::memory_order_relaxed)};
  _freeHead.store(memo, std::memory_order_relaxed);
  ++_freeCount;
  return nullptr;
}

void BoxIOCP::_memoUpdate(Memo* memo, NomULong bytes, std::uint64_t key, OVERLAPPED* overlapped) {
  memo->_iocpBoxData = {bytes, key, overlapped};
}

bool BoxIOCP::_isInUse(const Memo* memo) const {
  const bool isInUse = memo->_usage == MU_Memo && memo->_locus != ML_Free;
  NOMUTIL_REQUIRE_TEXT(boxes::kSource, isInUse,
                       "memo->_usage == MU_Memo && memo->_locus != ML_Free");
  return isInUse;
}

// Where a memo of another box is, only that box's lock tells: its usage alone is looked at.
bool BoxIOCP::_isOwn(const Memo* memo) const {
  NOMUTIL_REQUIRE_TEXT(boxes::kSource, memo->_box == this || memo->_usage == MU_Memo,
                       "memo->_usage == MU_Memo && memo->_locus != ML_Free");
  NOMUTIL_REQUIRE_TEXT(boxes::kSource, memo->_box == this, "(void*)memo->_box == (void*)this");
  return memo->_box == this;
}
