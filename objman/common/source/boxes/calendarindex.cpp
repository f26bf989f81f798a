// A fence is known by the flag _indexed of its memo. Since times of fences differ, a fence's own
// time finds it.

#include "calendarindex.h"

#include <algorithm>
#include <cstring>

namespace nomutil::boxes {

Memo* CalendarIndex::before(std::uint64_t due, Memo* first) {
  if (first->_time > due) return nullptr;
  Place place{};
  bool isFence = _rows != 0 && _first[0] <= due;
  if (isFence) place = _find(due);
  Memo* memo = isFence ? _leaf(place.row).fences[place.column] : first;
  std::uint32_t steps = 0;
  for (; memo->_linkA.next->_time <= due; memo = memo->_linkA.next) ++steps;
  if (steps < kLongWalk) return memo;
  if (!isFence) {
    _insert({0, 0}, memo);
  } else if (memo->_time == _leaf(place.row).times[place.column]) {
    // Many memos of one time need one fence, the last.
    _leaf(place.row).fences[place.column]->_indexed = false;
    _set(place, memo);
  } else {
    _insert({place.row, place.column + 1}, memo);
  }
  return memo;
}

void CalendarIndex::remove(Memo* memo) {
  if (!memo->_indexed) return;
  memo->_indexed = false;
  const Place place = _find(memo->_time);
  // The next memo takes over, unless it is a fence, shares the time of one, or is the end marker.
  Memo* const next = memo->_linkA.next;
  std::uint64_t following = ~std::uint64_t{0};
  _next(place, following);
  if (next->_linkA.next != nullptr && !next->_indexed && next->_time < following) {
    _set(place, next);
  } else {
    _erase(place);
  }
}

std::uint32_t CalendarIndex::fenceCount() const {
  std::uint32_t count = 0;
  for (std::uint32_t row = 0; row < _rows; ++row) count += _leaf(row).count;
  return count;
}

// The last fence at or before a time. REQUIRES: there is one.
CalendarIndex::Place CalendarIndex::_find(std::uint64_t time) const {
  const auto row =
      static_cast<std::uint32_t>(std::upper_bound(_first, _first + _rows, time) - _first - 1);
  const Leaf& leaf = _leaf(row);
  const auto behind = std::upper_bound(leaf.times, leaf.times + leaf.count, time);
  return {row, static_cast<std::uint32_t>(behind - leaf.times - 1)};
}

// The time of the fence behind a place; false, and time as it was, when there is none.
bool CalendarIndex::_next(Place place, std::uint64_t& time) const {
  const Leaf& leaf = _leaf(place.row);
  if (place.column + 1 < leaf.count) {
    time = leaf.times[place.column + 1];
    return true;
  }
  if (place.row + 1 == _rows) return false;
  time = _first[place.row + 1];
  return true;
}

void CalendarIndex::_set(Place place, Memo* memo) {
  Leaf& leaf = _leaf(place.row);
  leaf.times[place.column] = memo->_time;
  leaf.fences[place.column] = memo;
  if (place.column == 0) _first[place.row] = memo->_time;
  memo->_indexed = true;
}

// Makes room at a place and sets it; does nothing when there is no room left.
void CalendarIndex::_insert(Place place, Memo* memo) {
  if (_rows == 0) {
    for (std::uint32_t i = 0; i < kLeafCount; ++i) _order[i] = static_cast<std::uint16_t>(i);
    _rows = 1;
    _leaf(0).count = 0;
  }
  if (_leaf(place.row).count == kLeafRoom) {
    if (!_split(place.row)) return;
    if (place.column > kLeafRoom / 2) place = {place.row + 1, place.column - kLeafRoom / 2};
  }
  Leaf& leaf = _leaf(place.row);
  const std::uint32_t behind = leaf.count - place.column;
  std::memmove(leaf.times + place.column + 1, leaf.times + place.column, behind * 8);
  std::memmove(leaf.fences + place.column + 1, leaf.fences + place.column, behind * sizeof(Memo*));
  ++leaf.count;
  _set(place, memo);
}

void CalendarIndex::_erase(Place place) {
  Leaf& leaf = _leaf(place.row);
  --leaf.count;
  const std::uint32_t behind = leaf.count - place.column;
  std::memmove(leaf.times + place.column, leaf.times + place.column + 1, behind * 8);
  std::memmove(leaf.fences + place.column, leaf.fences + place.column + 1, behind * sizeof(Memo*));
  if (leaf.count != 0) _first[place.row] = leaf.times[0];
  if (leaf.count > kLeafRoom / 4) return;
  if (place.row + 1 < _rows) _join(place.row);
  if (_rows > 1 && place.row > 0) _join(place.row - 1);
  if (_rows == 1 && _leaf(0).count == 0) _rows = 0;
}

// Moves the upper half of a full row into a new row behind it. False when no leaf is left.
bool CalendarIndex::_split(std::uint32_t row) {
  if (_rows == kLeafCount) return false;
  const std::uint16_t fresh = _order[_rows];
  const std::uint32_t behind = _rows - row - 1;
  std::memmove(_order + row + 2, _order + row + 1, behind * 2);
  std::memmove(_first + row + 2, _first + row + 1, behind * 8);
  _order[row + 1] = fresh;
  ++_rows;
  constexpr std::uint32_t kHalf = kLeafRoom / 2;
  Leaf& lower = _leaf(row);
  Leaf& upper = _leaf(row + 1);
  std::copy_n(lower.times + kHalf, kHalf, upper.times);
  std::copy_n(lower.fences + kHalf, kHalf, upper.fences);
  lower.count = upper.count = kHalf;
  _first[row + 1] = upper.times[0];
  return true;
}

// Moves the next row into a row when both fill at most three quarters of a leaf or one is empty.
void CalendarIndex::_join(std::uint32_t row) {
  Leaf& lower = _leaf(row);
  const Leaf& upper = _leaf(row + 1);
  if (lower.count + upper.count > kLeafRoom * 3 / 4 && lower.count != 0 && upper.count != 0) return;
  std::copy_n(upper.times, upper.count, lower.times + lower.count);
  std::copy_n(upper.fences, upper.count, lower.fences + lower.count);
  lower.count += upper.count;
  _first[row] = lower.times[0];
  const std::uint16_t freed = _order[row + 1];
  const std::uint32_t behind = _rows - row - 2;
  std::memmove(_order + row + 1, _order + row + 2, behind * 2);
  std::memmove(_first + row + 1, _first + row + 2, behind * 8);
  --_rows;
  _order[_rows] = freed;
}

}  // namespace nomutil::boxes
