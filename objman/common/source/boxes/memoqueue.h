// The order of a box's queue. A new memo of priority 0 goes to the tail, one above the head's
// priority becomes the head, any other goes right behind the first memo, the head not counted, of
// a lower priority than its own, and to the tail if there is none: 10, 5 and a new 7 give 10, 5, 7.
//
// The walk to that memo is remembered. For each priority p up to the head's there is a mark: no
// memo between the head and the mark is below p, and no mark means that none to the tail is. Marks
// only move back when a higher head comes, so that a walk goes over a memo once.
#ifndef NOMUTIL_BOXES_MEMOQUEUE_H
#define NOMUTIL_BOXES_MEMOQUEUE_H

#include "sys/boxes.h"

#include <cstdint>

namespace nomutil::boxes {

// The head, the tail, the number of memos and the marks of a queue, kept elsewhere.
class MemoQueue {
 public:
  MemoQueue(Memo*& head, Memo*& tail, std::uint32_t& count, QueueMarks& marks)
      : _head(head), _tail(tail), _count(count), _marks(marks) {}

  // Links a memo that is in no list, by its priority of 0 to 15.
  void enter(Memo* memo) NOMOS_REQUIRES(changeLock);

  // Unlinks a memo of this queue.
  void remove(Memo* memo) NOMOS_REQUIRES(changeLock);

 private:
  void _linkBehind(Memo* before, Memo* memo) NOMOS_REQUIRES(changeLock);
  Memo* _firstBelow(std::uint32_t priority) NOMOS_REQUIRES(changeLock);
  void _mark(std::uint32_t priority, Memo* memo);

  Memo*& _head;
  Memo*& _tail;
  std::uint32_t& _count;
  QueueMarks& _marks;
};

}  // namespace nomutil::boxes

#endif  // NOMUTIL_BOXES_MEMOQUEUE_H
