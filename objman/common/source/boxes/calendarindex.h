// Finds the place of a due time in a long calendar. The index holds fences: some of the calendar's
// memos, in the calendar's order, with times that strictly ascend, so that a walk may begin at the
// last fence that is due no later. A walk that turns out long makes the entering memo a fence,
// wherever the times lie; nothing is ever rebuilt. In a calendar whose memos outgrow the caches
// every step of a walk waits for the memory, so that there every memo that enters by a walk becomes
// a fence; those that enter at the end do not. A fence that leaves hands its office to a neighbour.
//
// Its size is fixed. When it is full, short walks leave nothing behind, and for a walk that turns
// out too long fences elsewhere make room.
//
// Fences lie in leaves of at most 32, at most 4,096 leaves, found by their first times: a B+-tree
// of two levels.
#ifndef NOMUTIL_BOXES_CALENDARINDEX_H
#define NOMUTIL_BOXES_CALENDARINDEX_H

#include "sys/boxes.h"

#include <cstdint>

namespace nomutil::boxes {

class CalendarIndex {
 public:
  CalendarIndex() noexcept;  // leaves the leaves as they are: megabytes that few calendars touch

  // The memo before the place of a memo that is about to enter: the last that is due no later, or
  // null when first is later. The caller links the memo there, which may have become a fence. first
  // to the end marker is the calendar's list, of count memos, not empty.
  Memo* before(Memo* entering, Memo* first, std::uint32_t count) NOMOS_REQUIRES(changeLock);

  // To be called before a memo that may be a fence leaves the list.
  void remove(Memo* memo) NOMOS_REQUIRES(changeLock);

  std::uint32_t fenceCount() const;

  static constexpr std::uint32_t kLongWalk = 3;       // steps that are worth a fence
  static constexpr std::uint32_t kMany = 32'768;      // memos, each of which is worth a fence
  static constexpr std::uint32_t kTooLongWalk = 100;  // steps that are worth two, and room for them

 private:
  static constexpr std::uint32_t kLeafRoom = 32;
  static constexpr std::uint32_t kLeafCount = 4096;

  // A fence and its time side by side, so that finding the one brings the other into the cache.
  struct Fence {
    std::uint64_t time;
    Memo* memo;
  };

  struct Leaf {
    Fence fences[kLeafRoom];
  };

  // A fence's place: leaf `row` in order, entry `column` in it.
  struct Place {
    std::uint32_t row;
    std::uint32_t column;
  };

  Place _find(std::uint64_t time) const;
  Place _behind(std::uint64_t time) const;
  Fence _next(Place place) const;
  Fence _previous(Place place) const;
  void _keep(Memo* memo) NOMOS_REQUIRES(changeLock);
  void _replace(Place place, Memo* memo) NOMOS_REQUIRES(changeLock);
  void _insert(Place place, Memo* memo) NOMOS_REQUIRES(changeLock);
  void _erase(Place place);
  void _set(Place place, Memo* memo) NOMOS_REQUIRES(changeLock);
  void _split(std::uint32_t row);
  bool _mayJoin(std::uint32_t row) const;
  void _join(std::uint32_t row);
  void _thin() NOMOS_REQUIRES(changeLock);
  // No leaf can take another fence in a row.
  bool _isFull(std::uint32_t row) const { return _rows == kLeafCount && _count[row] == kLeafRoom; }
  Leaf& _leaf(std::uint32_t row) { return _leaves[_order[row]]; }
  const Leaf& _leaf(std::uint32_t row) const { return _leaves[_order[row]]; }
  Fence& _at(Place place) { return _leaf(place.row).fences[place.column]; }

  std::uint32_t _hand = 0;           // the row that is thinned next
  std::uint32_t _rows = 0;           // leaves in use, none of them empty
  std::uint64_t _first[kLeafCount];  // the first time of each row
  std::uint16_t _order[kLeafCount];  // row -> leaf; behind the rows, the leaves not in use
  std::uint8_t _count[kLeafCount];   // the fences of each row
  Leaf _leaves[kLeafCount];
};

}  // namespace nomutil::boxes

#endif  // NOMUTIL_BOXES_CALENDARINDEX_H
