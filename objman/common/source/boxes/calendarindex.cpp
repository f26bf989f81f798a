// A fence is known by the flag _indexed of its memo. Since times of fences differ, a fence's own
// time finds it.

#include "calendarindex.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace nomutil::boxes {

CalendarIndex::CalendarIndex() noexcept {
  std::iota(_order, _order + kLeafCount, std::uint16_t{0});
}

Memo* CalendarIndex::before(Memo* entering, Memo* first, std::uint32_t count) {
  const std::uint64_t due = entering->_time;
  if (first->_time > due) return nullptr;
  Place place{};
  const bool isFence = _rows != 0 && _first[0] <= due;
  if (isFence) place = _find(due);
  Memo* memo = isFence ? _at(place).memo : first;
  // The walk ends before the next fence, whose time is known without reading its memo.
  const Memo* const last = isFence ? _next(place).memo : nullptr;
  __builtin_prefetch(last, 1);  // most likely the memo behind the place
  Memo* middle = memo;
  std::uint32_t steps = 0;
  for (Memo* next = memo->_linkA.next; next != last && next->_time <= due;
       next = memo->_linkA.next) {
    memo = next;
    if (steps++ % 2 != 0) middle = middle->_linkA.next;
  }
  if (steps >= kTooLongWalk) {
    // The middle serves walks to places before this one.
    _keep(middle);
    _keep(entering);
  } else if (steps >= kLongWalk || count >= kMany) {
    if (isFence && due == _at(place).time) {
      _replace(place, entering);
    } else {
      if (isFence) ++place.column;
      _insert(place, entering);
    }
  }
  return memo;
}

void CalendarIndex::remove(Memo* memo) {
  if (!memo->_indexed) return;
  memo->_indexed = false;
  const Place place = _find(memo->_time);
  // A neighbour takes over, so that no walk begins farther away, unless it is a fence, shares the
  // time of one, or is the end marker: the one before, which serves this place, or the next one.
  Memo* const prev = memo->_linkA.prev;
  const Fence preceding = _previous(place);
  if (prev != preceding.memo && prev->_time > preceding.time) return _set(place, prev);
  Memo* const next = memo->_linkA.next;
  const Fence following = _next(place);
  if (next != following.memo && next->_linkA.next != nullptr && next->_time < following.time) {
    _set(place, next);
  } else {
    _erase(place);
  }
}

std::uint32_t CalendarIndex::fenceCount() const {
  return std::accumulate(_count, _count + _rows, 0U);
}

// The last fence at or before a time. REQUIRES: there is one.
CalendarIndex::Place CalendarIndex::_find(std::uint64_t time) const {
  const Place behind = _behind(time);
  return {behind.row, behind.column - 1};
}

// The place behind the last fence at or before a time, {0, 0} if there is none. REQUIRES: there are
// fences.
CalendarIndex::Place CalendarIndex::_behind(std::uint64_t time) const {
  std::uint32_t row = 0;
  for (std::uint32_t width = _rows; width > 1; width -= width / 2) {
    row += width / 2 & -static_cast<std::uint32_t>(_first[row + width / 2] <= time);
  }
  const Fence* const fences = _leaf(row).fences;
  // The halving would wait for line after line.
  for (std::uint32_t i = 0; i < _count[row]; i += 64 / sizeof(Fence)) {
    __builtin_prefetch(fences + i);
  }
  const auto later = [](std::uint64_t value, const Fence& fence) { return value < fence.time; };
  const Fence* const behind = std::upper_bound(fences, fences + _count[row], time, later);
  return {row, static_cast<std::uint32_t>(behind - fences)};
}

// The fence behind a place; behind the last one, no memo and the latest time.
CalendarIndex::Fence CalendarIndex::_next(Place place) const {
  if (place.column + 1 < _count[place.row]) return _leaf(place.row).fences[place.column + 1];
  if (place.row + 1 == _rows) return {~std::uint64_t{0}, nullptr};
  return _leaf(place.row + 1).fences[0];
}

// The fence before a place; before the first one, no memo and the earliest time.
CalendarIndex::Fence CalendarIndex::_previous(Place place) const {
  if (place.column != 0) return _leaf(place.row).fences[place.column - 1];
  if (place.row == 0) return {0, nullptr};
  return _leaf(place.row - 1).fences[_count[place.row - 1] - 1];
}

// Of many memos of one time, one is a fence: the last that entered by a walk.
void CalendarIndex::_replace(Place place, Memo* memo) {
  _at(place).memo->_indexed = false;
  _set(place, memo);
}

// Makes a memo a fence, for which fences elsewhere make room when there is none.
void CalendarIndex::_keep(Memo* memo) {
  Place place = _rows != 0 ? _behind(memo->_time) : Place{};
  if (place.column != 0 && _at({place.row, place.column - 1}).time == memo->_time) {
    return _replace({place.row, place.column - 1}, memo);
  }
  if (_isFull(place.row)) {
    _thin();
    place = _behind(memo->_time);
  }
  _insert(place, memo);
}

void CalendarIndex::_set(Place place, Memo* memo) {
  _at(place) = {memo->_time, memo};
  if (place.column == 0) _first[place.row] = memo->_time;
  memo->_indexed = true;
}

// Makes room at a place and sets it; does nothing when there is no room left.
void CalendarIndex::_insert(Place place, Memo* memo) {
  if (_rows == 0) {
    _rows = 1;
    _count[0] = 0;
  }
  if (_isFull(place.row)) return;
  if (_count[place.row] == kLeafRoom) {
    _split(place.row);
    if (place.column > kLeafRoom / 2) place = {place.row + 1, place.column - kLeafRoom / 2};
  }
  Fence* const fence = &_at(place);
  std::memmove(fence + 1, fence, (_count[place.row] - place.column) * sizeof(Fence));
  ++_count[place.row];
  _set(place, memo);
}

void CalendarIndex::_erase(Place place) {
  Fence* const fence = &_at(place);
  const std::uint32_t count = --_count[place.row];
  std::memmove(fence, fence + 1, (count - place.column) * sizeof(Fence));
  if (count != 0) _first[place.row] = _leaf(place.row).fences[0].time;
  if (count > kLeafRoom / 4) return;
  if (place.row + 1 < _rows && _mayJoin(place.row)) _join(place.row);
  if (_rows > 1 && place.row > 0 && _mayJoin(place.row - 1)) _join(place.row - 1);
  if (_rows == 1 && _count[0] == 0) _rows = 0;
}

// Frees a leaf of a full index: of two neighbours every other fence goes. The rows take turns, so
// that fences leave where nobody makes new ones.
void CalendarIndex::_thin() {
  for (std::uint32_t row = _hand; row < _hand + 2; ++row) {
    Fence* const fences = _leaf(row).fences;
    for (std::uint32_t i = 1; i < _count[row]; i += 2) fences[i].memo->_indexed = false;
    _count[row] = static_cast<std::uint8_t>((_count[row] + 1) / 2);
    for (std::uint32_t i = 1; i < _count[row]; ++i) fences[i] = fences[2 * i];
  }
  _join(_hand);
  _hand = (_hand + 1) % (kLeafCount - 1);
}

// Moves the upper half of a full row into a new row behind it. REQUIRES: a leaf is left.
void CalendarIndex::_split(std::uint32_t row) {
  const std::uint16_t fresh = _order[_rows];
  const std::uint32_t behind = _rows - row - 1;
  std::memmove(_order + row + 2, _order + row + 1, behind * sizeof *_order);
  std::memmove(_first + row + 2, _first + row + 1, behind * sizeof *_first);
  std::memmove(_count + row + 2, _count + row + 1, behind * sizeof *_count);
  _order[row + 1] = fresh;
  ++_rows;
  constexpr std::uint32_t kHalf = kLeafRoom / 2;
  std::copy_n(_leaf(row).fences + kHalf, kHalf, _leaf(row + 1).fences);
  _count[row] = _count[row + 1] = kHalf;
  _first[row + 1] = _leaf(row + 1).fences[0].time;
}

// Whether a row and the next fill at most three quarters of a leaf or one of them is empty.
bool CalendarIndex::_mayJoin(std::uint32_t row) const {
  const std::uint32_t lower = _count[row];
  const std::uint32_t upper = _count[row + 1];
  return lower + upper <= kLeafRoom * 3 / 4 || lower == 0 || upper == 0;
}

// Moves the next row into a row. REQUIRES: one leaf has room for both.
void CalendarIndex::_join(std::uint32_t row) {
  const std::uint32_t lower = _count[row];
  const std::uint32_t upper = _count[row + 1];
  std::copy_n(_leaf(row + 1).fences, upper, _leaf(row).fences + lower);
  _count[row] = static_cast<std::uint8_t>(lower + upper);
  _first[row] = _leaf(row).fences[0].time;
  const std::uint16_t freed = _order[row + 1];
  const std::uint32_t behind = _rows - row - 2;
  std::memmove(_order + row + 1, _order + row + 2, behind * sizeof *_order);
  std::memmove(_first + row + 1, _first + row + 2, behind * sizeof *_first);
  std::memmove(_count + row + 1, _count + row + 2, behind * sizeof *_count);
  --_rows;
  _order[_rows] = freed;
}

}  // namespace nomutil::boxes
