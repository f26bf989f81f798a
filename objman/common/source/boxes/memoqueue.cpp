// Marks hold for the priorities 1 to the head's: only those walk.

#include "memoqueue.h"

#include <bit>

namespace nomutil::boxes {

void MemoQueue::enter(Memo* memo) {
  const std::uint32_t priority = memo->_content._priority;
  if (_head == nullptr) {
    _head = _tail = memo;
  } else if (priority > _head->_content._priority) {
    // The old head is now the first memo behind the head, and below every priority that only the
    // new head brings.
    for (std::uint32_t p = _head->_content._priority + 1; p <= priority; ++p) _mark(p, _head);
    memo->_linkA.next = _head;
    _head->_linkA.prev = memo;
    _head = memo;
  } else {
    Memo* const lower = priority == 0 ? nullptr : _firstBelow(priority);
    if (lower == nullptr) {
      // Priorities above this one that had nothing below them have it now.
      const std::uint32_t highest = _head->_content._priority;
      for (std::uint32_t p = priority + 1; p <= highest; ++p) {
        if ((_marks.known >> p & 1) == 0) _mark(p, memo);
      }
    }
    _linkBehind(lower != nullptr ? lower : _tail, memo);
  }
  ++_count;
}

void MemoQueue::remove(Memo* memo) {
  const MemoLinkage link = memo->_linkA;
  // A mark stays in front of all that is below its priority when it steps to the next memo. So it
  // does when its memo becomes the head.
  Memo* const left = link.prev != nullptr ? memo : link.next;
  Memo* const next = left != nullptr ? left->_linkA.next : nullptr;
  for (std::uint32_t rest = _marks.known; rest != 0; rest &= rest - 1) {
    const auto p = static_cast<std::uint32_t>(std::countr_zero(rest));
    if (_marks.mark[p] == left) _mark(p, next);
  }
  if (link.prev == nullptr) {
    // Priorities that only the new head brings have not walked yet.
    const std::uint32_t highest = link.next != nullptr ? link.next->_content._priority : 0;
    const std::uint32_t oldPriority = memo->_content._priority;
    for (std::uint32_t p = oldPriority + 1; p <= highest; ++p) _mark(p, next);
    _marks.known &= (2u << highest) - 1;
  }
  (link.prev != nullptr ? link.prev->_linkA.next : _head) = link.next;
  (link.next != nullptr ? link.next->_linkA.prev : _tail) = link.prev;
  memo->_clearLinkA();
  --_count;
}

void MemoQueue::_linkBehind(Memo* before, Memo* memo) {
  Memo* const next = before->_linkA.next;
  memo->_linkA = {before, next};
  before->_linkA.next = memo;
  (next != nullptr ? next->_linkA.prev : _tail) = memo;
}

// The first memo behind the head below a priority of 1 to the head's, or null.
Memo* MemoQueue::_firstBelow(std::uint32_t priority) {
  if ((_marks.known >> priority & 1) == 0) return nullptr;
  Memo* memo = _marks.mark[priority];
  while (memo != nullptr && memo->_content._priority >= priority) memo = memo->_linkA.next;
  _mark(priority, memo);
  return memo;
}

void MemoQueue::_mark(std::uint32_t priority, Memo* memo) {
  const std::uint32_t bit = 1u << priority;
  _marks.known = memo != nullptr ? _marks.known | bit : _marks.known & ~bit;
  _marks.mark[priority] = memo;
}

}  // namespace nomutil::boxes
