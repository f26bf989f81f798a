// The calendar's list. A memo goes behind all that are due no later, so that equal times keep the
// order in which they were entered.

#include "calendarindex.h"

#include <algorithm>

void BoxManager::Calendar::begin(Memo* end) {
  end->_time = 0x7FFFFFFFFFFFFFFF;
  end->_locus = ML_Calendar;
  end->_clearLinkA();
  end->_clearLinkZ();
  _end = _head = _tail = end;
  _due = end->_time;
  _count = 0;
}

bool BoxManager::Calendar::enter(Memo* memo, std::uint64_t due,
                                 nomutil::boxes::CalendarIndex* index) {
  due = std::min(due, _end->_time - 1);  // the marker stays the last whatever the clock says
  memo->_locus = ML_Calendar;
  memo->_time = due;
  Memo* before = _end->_linkA.prev;  // the last, which most are behind
  if (before != nullptr && before->_time > due) {
    if (index != nullptr) {
      before = index->before(memo, _head, _count);
    } else {
      while (before != nullptr && before->_time > due) before = before->_linkA.prev;
    }
  }
  Memo* const next = before != nullptr ? before->_linkA.next : _head;
  memo->_linkA = {before, next};
  next->_linkA.prev = memo;
  ++_count;
  if (before != nullptr) {
    before->_linkA.next = memo;
    return false;
  }
  _head = memo;
  _due = due;
  return true;
}

void BoxManager::Calendar::remove(Memo* memo, nomutil::boxes::CalendarIndex* index) {
  const MemoLinkage link = memo->_linkA;
  __builtin_prefetch(link.prev, 1);  // while the index is searched
  __builtin_prefetch(link.next, 1);
  if (index != nullptr) index->remove(memo);
  link.next->_linkA.prev = link.prev;
  if (link.prev != nullptr) {
    link.prev->_linkA.next = link.next;
  } else {
    _head = link.next;
    _due = _head->_time;
  }
  memo->_locus = ML_Idle;
  memo->_clearLinkA();
  --_count;
}
