// The timer wheel: 30,000 slots of one millisecond, 30 seconds around. A slot heads a list of the
// memos that fall due in its millisecond, newest first; all share the time of the one that was
// there first. The current slot is the earliest that is still to be processed, due at slotTime;
// one tick memo waits in the calendar for it. Two keep-alive memos with periods of 5,000 and
// 3,333 ms are always armed, so that there is always a next slot within 5,000.
//
// A timer of t ms runs t / 10,000 legs of 10,000 ms and a last leg of the rest: 25,000 ms is
// 10,000, 10,000, 5,000. The wheel knows no lock, clock or thread: it is told the time, and says
// when it wants its tick.
#ifndef NOMUTIL_BOXES_TIMERWHEEL_H
#define NOMUTIL_BOXES_TIMERWHEEL_H

#include "sys/boxes.h"

#include <array>
#include <cstdint>
#include <optional>

namespace nomutil::boxes {

inline constexpr std::uint32_t kSlotCount = 30'000;
inline constexpr std::uint32_t kLegMillis = 10'000;

// The slots' heads, with a bit for each slot that has one and a bit for each word of those.
struct WheelSlots {
  static constexpr std::uint32_t kWords = (kSlotCount + 63) / 64;

  std::array<Memo*, kSlotCount> heads;
  std::array<std::uint64_t, kWords> occupied;
  std::array<std::uint64_t, (kWords + 63) / 64> words;

  void setOccupied(std::uint32_t slot);
  void setEmpty(std::uint32_t slot);
  // The first occupied slot behind this one, going round; this one itself comes last, also when it
  // is empty.
  std::uint32_t next(std::uint32_t slot) const;
};

// The state of a wheel, kept elsewhere. Ticks are delays in milliseconds for the tick memo.
class TimerWheel {
 public:
  TimerWheel(WheelSlots& slots, std::uint64_t& slotTime, std::uint32_t& armedCount,
             std::uint32_t& currentSlot, std::uint32_t& behind)
      : _slots(slots),
        _slotTime(slotTime),
        _armedCount(armedCount),
        _currentSlot(currentSlot),
        _behind(behind) {}

  // Arms the keep-alives in an empty wheel; the first tick.
  std::uint32_t begin(Memo* keepAliveA, Memo* keepAliveB, std::int64_t now)
      NOMOS_REQUIRES(changeLock);

  // Sets the legs of a timer.
  static void setLegs(Memo* memo, std::uint32_t intervalMillis) NOMOS_REQUIRES(changeLock);

  // Arms a memo that is in no list for its next leg. A tick when it falls due before the current
  // slot, whose place it then takes.
  std::optional<std::uint32_t> arm(Memo* memo, std::int64_t now) NOMOS_REQUIRES(changeLock);

  // Takes a memo out; it is idle. True when the current slot has become empty: advance is due.
  bool disarm(Memo* memo) NOMOS_REQUIRES(changeLock);

  // Makes the next occupied slot the current one; its tick.
  std::uint32_t advance(std::int64_t now) NOMOS_REQUIRES(changeLock) {
    return _tickOf(_slots.next(_currentSlot), now);
  }

  // The current slot's time has come: takes its list out and goes on to the next slot, whose tick
  // this is.
  std::uint32_t expire(Memo*& expired, std::int64_t now) NOMOS_REQUIRES(changeLock);

  // A memo of an expired list becomes idle. True when it is a timer that has run its last leg;
  // else it is to be armed again.
  bool endLeg(Memo* memo) NOMOS_REQUIRES(changeLock);

 private:
  void _link(Memo* memo, std::uint32_t slot, std::uint64_t due) NOMOS_REQUIRES(changeLock);
  std::uint32_t _tickOf(std::uint32_t slot, std::int64_t now) NOMOS_REQUIRES(changeLock);

  WheelSlots& _slots;
  std::uint64_t& _slotTime;
  std::uint32_t& _armedCount;
  std::uint32_t& _currentSlot;
  std::uint32_t& _behind;
};

}  // namespace nomutil::boxes

#endif  // NOMUTIL_BOXES_TIMERWHEEL_H
