// Finds the place of a due time in a long calendar. The index holds fences: some of the calendar's
// memos, in the calendar's order, with times that strictly ascend, so that a walk may begin at the
// last fence that is due no later. A walk that turns out long leaves a fence behind, wherever the
// times lie; nothing is ever rebuilt. Its size is fixed: when it is full, walks grow.
//
// Fences lie in leaves of at most 32, at most 2,048 leaves, found by their first times: a B+-tree
// of two levels.
#ifndef NOMUTIL_BOXES_CALENDARINDEX_H
#define NOMUTIL_BOXES_CALENDARINDEX_H

#include "sys/boxes.h"

#include <cstdint>

namespace nomutil::boxes {

class CalendarIndex {
 public:
  CalendarIndex() = default;

  // The memo before the place of a memo that is due at a time: the last that is due no later, or
  // null when first is later. first to the end marker is the calendar's list, not empty.
  Memo* before(std::uint64_t due, Memo* first) NOMOS_REQUIRES(changeLock);

  // To be called before a memo that may be a fence leaves the list.
  void remove(Memo* memo) NOMOS_REQUIRES(changeLock);

  std::uint32_t fenceCount() const;

  static constexpr std::uint32_t kLongWalk = 3;  // steps that are worth a fence

 private:
  static constexpr std::uint32_t kLeafRoom = 32;
  static constexpr std::uint32_t kLeafCount = 2048;

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
  Fence _next(Place place) const;
  void _insert(Place place, Memo* memo) NOMOS_REQUIRES(changeLock);
  void _erase(Place place);
  void _set(Place place, Memo* memo) NOMOS_REQUIRES(changeLock);
  bool _split(std::uint32_t row);
  void _join(std::uint32_t row);
  Leaf& _leaf(std::uint32_t row) { return _leaves[_order[row]]; }
  const Leaf& _leaf(std::uint32_t row) const { return _leaves[_order[row]]; }
  Fence& _at(Place place) { return _leaf(place.row).fences[place.column]; }

  std::uint32_t _rows = 0;           // leaves in use, none of them empty
  std::uint64_t _first[kLeafCount];  // the first time of each row
  std::uint16_t _order[kLeafCount];  // row -> leaf; behind the rows, the leaves not in use
  std::uint8_t _count[kLeafCount];   // the fences of each row
  Leaf _leaves[kLeafCount];
};

}  // namespace nomutil::boxes

#endif  // NOMUTIL_BOXES_CALENDARINDEX_H
