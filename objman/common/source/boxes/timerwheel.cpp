// Times are compared by their low 32 bits, as signed differences.

#include "timerwheel.h"

#include <bit>

namespace nomutil::boxes {

namespace {

constexpr std::uint32_t kPeriodA = 5000;
constexpr std::uint32_t kPeriodB = 3333;

// From `earlier` to `later`, when both lie within 24 days of each other.
std::int32_t difference(std::uint64_t later, std::uint64_t earlier) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(later - earlier));
}

// The first set bit of words at or behind a bit, or behind all of them.
template <class Words>
std::uint32_t firstSet(const Words& words, std::uint32_t bit) {
  std::uint32_t word = bit / 64;
  if (word >= words.size()) return 64 * static_cast<std::uint32_t>(words.size());
  std::uint64_t bits = words[word] & (~std::uint64_t{0} << bit % 64);
  while (bits == 0 && ++word < words.size()) bits = words[word];
  return 64 * word + (bits != 0 ? static_cast<std::uint32_t>(std::countr_zero(bits)) : 0);
}

}  // namespace

void WheelSlots::setOccupied(std::uint32_t slot) {
  occupied[slot / 64] |= std::uint64_t{1} << slot % 64;
  words[slot / 4096] |= std::uint64_t{1} << slot / 64 % 64;
}

void WheelSlots::setEmpty(std::uint32_t slot) {
  occupied[slot / 64] &= ~(std::uint64_t{1} << slot % 64);
  if (occupied[slot / 64] == 0) words[slot / 4096] &= ~(std::uint64_t{1} << slot / 64 % 64);
}

std::uint32_t WheelSlots::next(std::uint32_t slot) const {
  const std::uint32_t behind = slot + 1;
  const std::uint64_t rest = occupied[behind / 64] & (~std::uint64_t{0} << behind % 64);
  if (behind < kSlotCount && rest != 0) {
    return behind / 64 * 64 + static_cast<std::uint32_t>(std::countr_zero(rest));
  }
  std::uint32_t word = firstSet(words, behind / 64 + 1);
  if (word >= kWords) word = firstSet(words, 0);
  if (word >= kWords) return slot;
  return 64 * word + static_cast<std::uint32_t>(std::countr_zero(occupied[word]));
}

std::uint32_t TimerWheel::begin(Memo* keepAliveA, Memo* keepAliveB, std::int64_t now) {
  // Slot i stands for the millisecond now + i + 1.
  const auto start = static_cast<std::uint64_t>(now);
  keepAliveA->_content._interval = keepAliveA->_content._remainder = kPeriodA;
  keepAliveB->_content._interval = keepAliveB->_content._remainder = kPeriodB;
  _link(keepAliveA, kPeriodA - 1, start + kPeriodA);
  _link(keepAliveB, kPeriodB - 1, start + kPeriodB);
  _currentSlot = kPeriodB - 1;
  _slotTime = start + kPeriodB;
  return kPeriodB;
}

void TimerWheel::setLegs(Memo* memo, std::uint32_t intervalMillis) {
  memo->_content._interval = intervalMillis;
  memo->_content._laps = intervalMillis / kLegMillis;
  memo->_content._remainder = intervalMillis % kLegMillis;
}

std::optional<std::uint32_t> TimerWheel::arm(Memo* memo, std::int64_t now) {
  const std::uint32_t leg = memo->_content._laps != 0 ? kLegMillis : memo->_content._remainder;
  const std::uint64_t due = static_cast<std::uint64_t>(now) + leg;
  const std::int64_t offset = difference(due, _slotTime);
  std::int64_t slot = (_currentSlot + offset) % kSlotCount;
  if (slot < 0) slot += kSlotCount;
  _link(memo, static_cast<std::uint32_t>(slot), due);
  if (offset >= 0) return std::nullopt;
  return _tickOf(memo->_content._slot, now);
}

std::uint32_t TimerWheel::expire(Memo*& expired, std::int64_t now) {
  const std::uint32_t slot = _currentSlot;
  // The expired slot still counts as occupied: with nothing else in the wheel it comes round again,
  // and its next tick finds it empty.
  const std::uint32_t tick = advance(now);
  expired = _slots.heads[slot];
  _slots.heads[slot] = nullptr;
  _slots.setEmpty(slot);
  return tick;
}

bool TimerWheel::endLeg(Memo* memo) {
  memo->_clearLinkA();
  memo->_locus = ML_Idle;
  --_armedCount;
  if (memo->_usage == MU_KeepAlive) return false;
  if (memo->_content._laps != 0) {
    --memo->_content._laps;
  } else {
    memo->_content._remainder = 0;
  }
  return memo->_content._laps + memo->_content._remainder == 0;
}

bool TimerWheel::disarm(Memo* memo) {
  const MemoLinkage link = memo->_linkA;
  const std::uint32_t slot = memo->_content._slot;
  (link.prev != nullptr ? link.prev->_linkA.next : _slots.heads[slot]) = link.next;
  if (link.next != nullptr) link.next->_linkA.prev = link.prev;
  memo->_locus = ML_Idle;
  memo->_clearLinkA();
  --_armedCount;
  if (_slots.heads[slot] != nullptr) return false;
  _slots.setEmpty(slot);
  return slot == _currentSlot;
}

void TimerWheel::_link(Memo* memo, std::uint32_t slot, std::uint64_t due) {
  Memo*& head = _slots.heads[slot];
  memo->_time = head != nullptr ? head->_time : due;
  memo->_linkA = {nullptr, head};
  if (head != nullptr) head->_linkA.prev = memo;
  head = memo;
  _slots.setOccupied(slot);
  memo->_content._slot = slot;
  memo->_locus = ML_Wheel;
  ++_armedCount;
}

// Makes a slot the current one. An empty one, met when nothing is armed, keeps the slot's time.
std::uint32_t TimerWheel::_tickOf(std::uint32_t slot, std::int64_t now) {
  _currentSlot = slot;
  if (_slots.heads[slot] != nullptr) _slotTime = _slots.heads[slot]->_time;
  const std::int32_t delay = difference(_slotTime, static_cast<std::uint64_t>(now));
  if (delay >= 0) return static_cast<std::uint32_t>(delay);
  ++_behind;
  return 0;
}

}  // namespace nomutil::boxes
