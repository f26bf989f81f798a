// What memos, boxes and managers hold, for tests: those of the parts that know no box, which make
// memos by themselves, and those that check the whole state at every step.
#ifndef NOMUTIL_BOXES_BOXESACCESS_H
#define NOMUTIL_BOXES_BOXESACCESS_H

#include "sys/boxes.h"

#include <cstddef>
#include <cstdint>

namespace nomutil::boxes {

// Tells the checker of annotations that nobody else can reach the memos of a scope.
class NOMOS_SCOPED_CAPABILITY OnlyThread {
 public:
  OnlyThread() NOMOS_ACQUIRE(changeLock) NOMOS_NO_THREAD_SAFETY_ANALYSIS {}
  ~OnlyThread() NOMOS_RELEASE() NOMOS_NO_THREAD_SAFETY_ANALYSIS {}
};

struct BoxesAccess {
  static Memo make(MemoUsage usage, std::uint32_t priority, std::uint32_t value)
      NOMOS_REQUIRES(changeLock) {
    Memo memo(nullptr);
    memo._usage = usage;
    memo._content._priority = priority;
    memo._content._value = value;
    return memo;
  }
  static std::uint32_t priority(const Memo& memo) NOMOS_REQUIRES(changeLock) {
    return memo._content._priority;
  }
  static std::uint32_t value(const Memo& memo) NOMOS_REQUIRES(changeLock) {
    return memo._content._value;
  }
  static std::uint32_t slot(const Memo& memo) NOMOS_REQUIRES(changeLock) {
    return memo._content._slot;
  }
  static std::uint64_t time(const Memo& memo) NOMOS_REQUIRES(changeLock) { return memo._time; }
  static bool isIndexed(const Memo& memo) NOMOS_REQUIRES(changeLock) { return memo._indexed; }
  static MemoLinkage link(const Memo& memo) NOMOS_REQUIRES(changeLock) { return memo._linkA; }

  static MemoLocus locus(const Memo& memo) NOMOS_REQUIRES(changeLock) { return memo._locus; }
  static std::uint32_t signals(const Memo& memo) NOMOS_REQUIRES(changeLock) {
    return memo._signals;
  }
  static Memo* queueHead(const Box& box) NOMOS_REQUIRES(changeLock) { return box._boxHead; }
  static std::uint32_t queueCount(const Box& box) NOMOS_REQUIRES(changeLock) {
    return box._boxCount;
  }
  static const BoxManager::Calendar& calendar(const BoxManager& manager)
      NOMOS_REQUIRES(changeLock) {
    return manager._calendar;
  }
  static std::uint32_t armedCount(const BoxManager& manager) NOMOS_REQUIRES(changeLock) {
    return manager._armedCount;
  }
  static std::uint64_t slotTime(const BoxManager& manager) NOMOS_REQUIRES(changeLock) {
    return manager._slotTime;
  }
  static MemoUsage usage(const Memo& memo) { return memo._usage; }
  static bool isChangeLock(const BoxManager& manager, const ThreadMutex& mutex) {
    return &manager._changeLock == &mutex;
  }

  // The packet takes the place of value (bytes), of slot and laps (key) and of remainder and
  // interval (overlapped); the priority lies in its padding.
  static constexpr bool packetLiesOverContent() {
    return offsetof(Memo, _content) == offsetof(Memo, _iocpBoxData) &&
           offsetof(Memo::Content, _value) == offsetof(Memo::IocpBoxData, bytes) &&
           offsetof(Memo::Content, _slot) == offsetof(Memo::IocpBoxData, key) &&
           offsetof(Memo::Content, _remainder) == offsetof(Memo::IocpBoxData, overlapped) &&
           sizeof(Memo::Content) == sizeof(Memo::IocpBoxData) && sizeof(Memo) == 88;
  }
};

}  // namespace nomutil::boxes

#endif  // NOMUTIL_BOXES_BOXESACCESS_H
