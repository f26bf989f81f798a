// Event boxes: mailboxes into which any thread dispatches memos, at once, after a delay or when a
// timer expires, and from which one thread, or several in turn, receives them by priority.
//
// A memo is a small reusable record of one box. Dispatching one that is queued already only counts
// one more signal on it, so that events of one kind coalesce. A BoxManager owns the boxes, the one
// change lock that guards every memo of every one of them, the calendar of delayed memos, the wheel
// of running timers, and the thread that moves what has come due. Times are milliseconds of
// nosGetRelativeTime. docs/locking.md says who waits on what.
#ifndef NOMUTIL_SYS_BOXES_H
#define NOMUTIL_SYS_BOXES_H

#include "nomos/annotations.h"
#include "nomos/completionport.h"
#include "nomos/event.h"
#include "nomos/mutex.h"
#include "nomos/thread.h"

#include "sys/build.h"

#include <atomic>
#include <cstdint>
#include <optional>

class BoxCommon;
class BoxIOCP;
class BoxManager;
class Memo;

// The system's record of an operation in progress; here only an address that a packet carries.
struct _OVERLAPPED;
using OVERLAPPED = struct _OVERLAPPED;

namespace nomutil::boxes {

// Stands for the change lock of whichever manager a memo's box belongs to: the compiler that checks
// the annotations cannot see that two paths lead to the same lock. Nobody holds two change locks,
// so that one name for all of them loses nothing.
class NOMOS_CAPABILITY("mutex") ChangeLock {};
extern const ChangeLock changeLock;  // a name only; no object is ever needed

struct BoxesAccess;
class CalendarIndex;
class MemoQueue;
class TimerWheel;
struct WheelSlots;

// Where a box's queue continues a walk for each priority (bit p of known: mark[p] is set).
struct QueueMarks {
  std::uint32_t known = 0;
  Memo* mark[16] = {};
};

}  // namespace nomutil::boxes

// What a memo is for, which never changes.
enum MemoUsage : std::uint32_t {
  MU_None = 0,         // built with Memo(BoxCommon*), not through a box
  MU_Memo = 1,         // dispatched, scheduled and cancelled by callers
  MU_CalendarEnd = 2,  // the end marker of a manager's calendar
  MU_TimerTick = 3,    // waits in the calendar for the wheel's next slot
  MU_Timer = 4,        // started and stopped by callers
  MU_KeepAlive = 5     // keeps the wheel occupied
};

// Where a memo is; at one place at a time.
enum MemoLocus : std::uint32_t {
  ML_None = 0,
  ML_Free = 1,      // on the free list of a completion-port box
  ML_Idle = 2,      // linked nowhere: allocated, received, cancelled or stopped
  ML_Calendar = 3,  // waits for its due time
  ML_Wheel = 4,     // a running timer
  ML_Box = 5,       // queued, waits to be received
  ML_Port = 6       // posted to a completion port
};

// A place in a chain of memos, and one in a chain of boxes; null at its ends.
struct MemoLinkage {
  Memo* prev = nullptr;
  Memo* next = nullptr;
};
struct BoxLinkage {
  BoxCommon* prev = nullptr;
  BoxCommon* next = nullptr;
};

// A time in milliseconds and a value that belongs to it.
struct MemoTime {
  std::uint64_t time;
  std::uint32_t value;
};

// A message of one box for its whole life. Boxes allocate and free memos; every operation goes to
// the box under the same rules as the operation of BoxCommon that it names. Any thread may call.
class NOMUTIL_API Memo {
 public:
  // The packet of a memo of a completion-port box.
  struct IocpBoxData {
    std::uint32_t bytes;
    std::uint64_t key;
    OVERLAPPED* overlapped;
  };

  // A memo outside any box's books: MU_None, idle, all numbers zero. The box may be null as long as
  // no operation is called.
  explicit Memo(BoxCommon* box);

  void dispatch();                                                        // memoDispatch
  void updateDispatch(unsigned value, unsigned priority, bool separate);  // memoUpdateDispatch
  void dispatchMultiple(unsigned count);                                  // memoDispatchMultiple
  // memoUpdateDispatchMultiple
  void updateDispatchMultiple(unsigned value, unsigned priority, unsigned count);
  void schedule(unsigned delayMillis);                                     // memoSchedule
  void cancel();                                                           // memoCancel
  void update(unsigned value, unsigned priority, bool separate);           // memoUpdate
  void start(unsigned intervalMillis, unsigned value, unsigned priority);  // timerStart
  void stop();                                                             // timerStop
  void getState(MemoLocus& locus, unsigned& remaining);                    // getMemoState

  // The packet of a memo of a completion-port box; lives as long as the memo. The box reads it when
  // it posts, so that it is changed only while the memo is idle.
  IocpBoxData* getIocpBoxData() { return &_iocpBoxData; }

 private:
  friend class BoxCommon;
  friend class Box;
  friend class BoxIOCP;
  friend class BoxManager;
  friend class nomutil::boxes::CalendarIndex;
  friend class nomutil::boxes::MemoQueue;
  friend class nomutil::boxes::TimerWheel;
  friend struct nomutil::boxes::BoxesAccess;

  // What a memo of a Box holds where one of a completion port holds its packet.
  struct Content {
    std::uint32_t _value;      // what receive hands back
    std::uint32_t _priority;   // 0 to 15
    std::uint32_t _slot;       // index of the wheel slot, while ML_Wheel
    std::uint32_t _laps;       // whole legs of 10,000 ms still to run
    std::uint32_t _remainder;  // the last leg, in ms
    std::uint32_t _interval;   // as given to timerStart
  };

  Memo();
  void _boxEnter() NOMOS_REQUIRES(nomutil::boxes::changeLock);
  void _clearLinkA() NOMOS_REQUIRES(nomutil::boxes::changeLock) { _linkA = MemoLinkage(); }
  void _clearLinkZ() NOMOS_REQUIRES(nomutil::boxes::changeLock) { _linkZ = MemoLinkage(); }

  BoxCommon* _box;  // does not change while the memo lives
  // Chains the memo into one of: its box's queue, the calendar, a slot of the wheel, a free list.
  MemoLinkage _linkA NOMOS_GUARDED_BY(nomutil::boxes::changeLock);
  // Chains it into all memos of its box.
  MemoLinkage _linkZ NOMOS_GUARDED_BY(nomutil::boxes::changeLock);
  std::uint64_t _time NOMOS_GUARDED_BY(nomutil::boxes::changeLock);  // due, in calendar and wheel
  MemoUsage _usage;  // does not change while the memo lives
  MemoLocus _locus NOMOS_GUARDED_BY(nomutil::boxes::changeLock);
  union {
    Content _content NOMOS_GUARDED_BY(nomutil::boxes::changeLock);
    IocpBoxData _iocpBoxData;
  };
  std::uint32_t _signals NOMOS_GUARDED_BY(nomutil::boxes::changeLock);  // not yet received
  bool _separate NOMOS_GUARDED_BY(nomutil::boxes::changeLock);  // a receive takes one signal
  bool _indexed NOMOS_GUARDED_BY(nomutil::boxes::changeLock);   // the calendar's index holds it
};

// What Box and BoxIOCP share, and through which a memo reaches its box. The operations of this
// class report the assertion "noVirtualFunction" and do nothing.
class NOMUTIL_API BoxCommon {
 private:
  // Queue or post a memo; release all memos. Those of this class ask for a process dump and throw
  // NomException.
  virtual void _enter(Memo* memo) NOMOS_REQUIRES(nomutil::boxes::changeLock);
  virtual void _cleanup() NOMOS_REQUIRES(nomutil::boxes::changeLock);

 public:
  virtual ~BoxCommon();

  // The memo operations. A memo of the wrong usage is reported as a broken contract, and the
  // operation done all the same; but nothing is done to one that no box allocated, or, in a
  // completion-port box, that is free. A memo of another box is left to that box, which must not be
  // null. Any thread may call.

  // Queues the memo, or counts one more signal on one that is queued. One that waits in the
  // calendar is taken out first.
  virtual void memoDispatch(Memo* memo);

  // Takes the memo from queue or calendar, drops its signals, sets its fields, and queues it.
  // Priorities above 15 count as 15. separate: each signal is received by itself; else one receive
  // takes all that came together.
  virtual void memoUpdateDispatch(Memo* memo, unsigned value, unsigned priority, bool separate);

  // As memoDispatch, with count signals. 0 takes one signal away, modulo 2^32; a queued memo that
  // then has none is received once all the same, and has none left.
  virtual void memoDispatchMultiple(Memo* memo, unsigned count);

  // As memoUpdateDispatch, with count signals that are received separately.
  virtual void memoUpdateDispatchMultiple(Memo* memo, unsigned value, unsigned priority,
                                          unsigned count);

  // Takes the memo from queue or calendar, drops its signals, and queues it after the delay.
  virtual void memoSchedule(Memo* memo, unsigned delayMillis);

  // Takes the memo from queue or calendar and drops its signals.
  virtual void memoCancel(Memo* memo);

  // memoCancel, then sets the fields as memoUpdateDispatch does.
  virtual void memoUpdate(Memo* memo, unsigned value, unsigned priority, bool separate);

  // Starts, or starts anew, a timer: it is queued once, when the interval is over, never before.
  // An expiry that was not received is dropped. Ignored when the manager was initialised without
  // timers.
  virtual void timerStart(Memo* memo, unsigned intervalMillis, unsigned value, unsigned priority);

  // Stops a timer; an expiry that was not received is dropped.
  virtual void timerStop(Memo* memo);

  // Where the memo is. remaining: its signals when queued; the milliseconds until it is due, at
  // least 0, in the calendar and, of the running leg of at most 10,000, in the wheel; else 0.
  virtual void getMemoState(Memo* memo, MemoLocus& locus, unsigned& remaining);

  static constexpr bool noVirtualFunction = false;

 protected:
  // The manager must outlive the box.
  explicit BoxCommon(BoxManager* manager);
  BoxCommon(const BoxCommon&) = default;
  BoxCommon& operator=(const BoxCommon&) = default;

  // Take and give back the change lock of the manager.
  void _grabChangeLock() NOMOS_ACQUIRE(nomutil::boxes::changeLock);
  void _dropChangeLock() NOMOS_RELEASE(nomutil::boxes::changeLock);

  // Enter a memo in the books of all memos of this box, or strike it out. One that is in no books
  // is not struck out.
  void _remember(Memo* memo) NOMOS_REQUIRES(nomutil::boxes::changeLock);
  void _forget(Memo* memo) NOMOS_REQUIRES(nomutil::boxes::changeLock);

  // Takes a memo of this box from queue, calendar or wheel, wherever it waits.
  void _withdraw(Memo* memo) NOMOS_REQUIRES(nomutil::boxes::changeLock);

  // Frees a memo through its own box, whichever that is; the pointer becomes null.
  static void _release(Memo*& memo) NOMOS_EXCLUDES(nomutil::boxes::changeLock);

  // Withdraws and frees all memos.
  void _releaseAll() NOMOS_REQUIRES(nomutil::boxes::changeLock);

  // The milliseconds until a memo's time, at least 0.
  static unsigned _remaining(const Memo* memo) NOMOS_REQUIRES(nomutil::boxes::changeLock);

  // Enter a memo in the manager's calendar, due when the delay after now is over, and take it out.
  void _calendarEnter(Memo* memo, unsigned delayMillis, std::int64_t now)
      NOMOS_REQUIRES(nomutil::boxes::changeLock);
  void _calendarRemove(Memo* memo) NOMOS_REQUIRES(nomutil::boxes::changeLock);

  // Whether a memo stands in the books of this box.
  bool _isRemembered(const Memo* memo) const NOMOS_REQUIRES(nomutil::boxes::changeLock);

  friend class BoxManager;
  friend class Memo;
  friend struct nomutil::boxes::BoxesAccess;

  BoxManager* _manager;
  BoxLinkage _link NOMOS_GUARDED_BY(nomutil::boxes::changeLock);  // the manager's boxes
  Memo* _memos NOMOS_GUARDED_BY(nomutil::boxes::changeLock);      // the newest of all memos
  std::uint32_t _memoCount NOMOS_GUARDED_BY(nomutil::boxes::changeLock);
};

// A mailbox with a queue of its own. Boxes are made and destroyed by their manager.
class NOMUTIL_API Box : public BoxCommon {
 public:
  // For the manager, which knows only the boxes of its boxAllocate.
  explicit Box(BoxManager* manager);
  Box(const Box&) = delete;
  Box& operator=(const Box&) = delete;
  ~Box() override;

  // A new idle memo, or timer, of this box, which memoDeallocate, timerDeallocate or the end of the
  // box frees. 0, or 3018 with null. Any thread may call, as with all operations of this class.
  int memoAllocate(Memo*& memo, unsigned value, unsigned priority, bool separate);
  int timerAllocate(Memo*& memo);

  // Take a memo, or timer, from wherever it waits and free it; the pointer becomes null. Null is
  // accepted. One of the wrong usage or of another box is reported as a broken contract, and freed
  // by its own box; one that no box allocated is only withdrawn.
  void memoDeallocate(Memo*& memo);
  void timerDeallocate(Memo*& memo);

  void memoDispatch(Memo* memo) override;
  void memoUpdateDispatch(Memo* memo, unsigned value, unsigned priority, bool separate) override;
  void memoDispatchMultiple(Memo* memo, unsigned count) override;
  void memoUpdateDispatchMultiple(Memo* memo, unsigned value, unsigned priority,
                                  unsigned count) override;
  void memoSchedule(Memo* memo, unsigned delayMillis) override;
  void memoCancel(Memo* memo) override;
  void memoUpdate(Memo* memo, unsigned value, unsigned priority, bool separate) override;
  void timerStart(Memo* memo, unsigned intervalMillis, unsigned value, unsigned priority) override;
  void timerStop(Memo* memo) override;
  void getMemoState(Memo* memo, MemoLocus& locus, unsigned& remaining) override;

  // Takes the first memo of the queue: its value, and the signals that then remain in the box. Both
  // are 0 when there was none within the time. 0 only looks, 0xFFFFFFFF waits without limit. The
  // wait is a single one: it may end early, with nothing, when another receiver took the memo.
  void receive(unsigned timeoutMillis, unsigned& value, unsigned& signalCount);

  // The signals of all queued memos, modulo 2^32, as any thread last left them: takes no lock.
  int signalCount() const { return static_cast<int>(_signalCount.load(std::memory_order_relaxed)); }

 private:
  friend class BoxCommon;
  friend class BoxManager;
  friend class Memo;
  friend struct nomutil::boxes::BoxesAccess;

  void _enter(Memo* memo) override NOMOS_REQUIRES(nomutil::boxes::changeLock);
  void _cleanup() override NOMOS_REQUIRES(nomutil::boxes::changeLock);

  nomutil::boxes::MemoQueue _queue() NOMOS_REQUIRES(nomutil::boxes::changeLock);
  int _allocate(Memo*& memo, MemoUsage usage, unsigned value, unsigned priority, bool separate);
  static bool _isMemo(const Memo* memo);
  static bool _isTimer(const Memo* memo);
  // Gives the lock back, then wakes who waits for the box: they would want the lock at once.
  void _dropAndWake() NOMOS_RELEASE(nomutil::boxes::changeLock);
  void _wake() NOMOS_REQUIRES(nomutil::boxes::changeLock);
  void _remove(Memo* memo) NOMOS_REQUIRES(nomutil::boxes::changeLock);
  void _update(Memo* memo, std::uint32_t signals) NOMOS_REQUIRES(nomutil::boxes::changeLock);
  void _memoUpdate(Memo* memo, unsigned value, unsigned priority, bool separate)
      NOMOS_REQUIRES(nomutil::boxes::changeLock);
  bool _admit(std::int64_t deadline) NOMOS_TRY_ACQUIRE(true, _receiveLock);
  void _receive(std::int64_t deadline, unsigned& value, unsigned& signalCount)
      NOMOS_EXCLUDES(nomutil::boxes::changeLock);
  void _take(unsigned& value, unsigned& signalCount) NOMOS_REQUIRES(nomutil::boxes::changeLock);
  void _count(std::uint32_t signals) NOMOS_REQUIRES(nomutil::boxes::changeLock);

  // The queue: first and last memo, chained by _linkA.
  Memo* _boxHead NOMOS_GUARDED_BY(nomutil::boxes::changeLock) = nullptr;
  Memo* _boxTail NOMOS_GUARDED_BY(nomutil::boxes::changeLock) = nullptr;
  std::uint32_t _boxCount NOMOS_GUARDED_BY(nomutil::boxes::changeLock) = 0;
  std::atomic<std::uint32_t> _signalCount{0};  // written under the change lock
  ThreadMutex _receiveLock NOMOS_ACQUIRED_BEFORE(nomutil::boxes::changeLock){"receiveLock"};
  Event _arrival{true};      // manual reset: signalled while the queue is not empty
  bool _serialised = false;  // receivers take _receiveLock; does not change once allocated
  // _arrival was signalled under the lock, and who waits is still to be woken.
  bool _wakes NOMOS_GUARDED_BY(nomutil::boxes::changeLock) = false;
  nomutil::boxes::QueueMarks _marks NOMOS_GUARDED_BY(nomutil::boxes::changeLock);
};

// A box whose queue is a completion port of the caller's: a memo becomes a packet, so that threads
// that wait there for input and output receive the program's own events as well. The box neither
// makes nor closes the port. Freed memos are kept for reuse, up to a limit.
class NOMUTIL_API BoxIOCP : public BoxCommon {
 public:
  static constexpr std::uint32_t DefaultFreeLimit = 20;
  static constexpr std::uint32_t MinFreeLimit = 10;
  static constexpr std::uint32_t MaxFreeLimit = 1000;

  // For the manager, as with Box.
  BoxIOCP(BoxManager* manager, NosCompletionPort port);

  // A copy shares the memos and the free list: it may post, but neither allocate nor be cleaned up,
  // and nobody may be using the original meanwhile. (A Box, with its lock and event, has no copy.)
  BoxIOCP(const BoxIOCP& other);
  BoxIOCP& operator=(const BoxIOCP& other);
  ~BoxIOCP() override;

  // An idle memo with this packet, reused or new. 0, or 3018 with null. Any thread may call, as
  // with all operations of this class.
  int memoAllocate(Memo*& memo, NomULong bytes, std::uint64_t key, OVERLAPPED* overlapped);

  // Keeps the memo for reuse, or frees it, wherever it is; the pointer becomes null. Null is
  // accepted. Packets that lie in the port already stay there.
  void memoDeallocate(Memo*& memo);

  // The same for a memo that is idle or scheduled; false. True, and nothing done, for one that is
  // posted (or free). locus: where the memo was; untouched when it is null, which gives false.
  bool memoDeallocateIfScheduledOrIdle(Memo*& memo, MemoLocus& locus);

  // Posts a packet now. One that waits in the calendar is taken out; a posted memo is posted again.
  void memoDispatch(Memo* memo) override;
  // count packets; with 0 a scheduled memo is taken out and marked as posted all the same.
  void memoDispatchMultiple(Memo* memo, unsigned count) override;
  // Posts a memo that waits in the calendar; leaves any other alone.
  void memoDispatchIfScheduled(Memo* memo);

  // Posts after the delay. A posted memo may be scheduled as well.
  void memoSchedule(Memo* memo, unsigned delayMillis) override;

  // Gives a scheduled memo another packet and delay, 0 posts at once; false. True, and nothing
  // done, for a memo that is not scheduled.
  bool memoRescheduleUpdated(Memo* memo, unsigned delayMillis, NomULong bytes, std::uint64_t key,
                             OVERLAPPED* overlapped);

  // Takes the memo from the calendar; a posted one cannot be cancelled.
  void memoCancel(Memo* memo) override;

  void getMemoState(Memo* memo, MemoLocus& locus, unsigned& remaining) override;

  // The receiver's word that it has taken the memo's packet: a posted memo becomes idle.
  void markMemoReceived(Memo* memo);

  // At most so many freed memos are kept from now on, at least 10 and at most 1,000.
  void setMemoFreeLimit(unsigned limit);

  // Waits on the port as GetQueuedCompletionStatus does, whose result this is: not 0 when there was
  // a packet. -1 milliseconds waits without limit. Takes no lock and changes no memo.
  int receive(NomULong& bytes, std::uint64_t& key, OVERLAPPED*& overlapped, int timeoutMillis);

 private:
  void _enter(Memo* memo) override NOMOS_REQUIRES(nomutil::boxes::changeLock);
  void _cleanup() override NOMOS_REQUIRES(nomutil::boxes::changeLock);

  void _memoUpdate(Memo* memo, NomULong bytes, std::uint64_t key, OVERLAPPED* overlapped)
      NOMOS_REQUIRES(nomutil::boxes::changeLock);
  Memo* _reuse() NOMOS_REQUIRES(nomutil::boxes::changeLock);
  Memo* _recycle(Memo* memo) NOMOS_REQUIRES(nomutil::boxes::changeLock);
  bool _isInUse(const Memo* memo) const NOMOS_REQUIRES(nomutil::boxes::changeLock);
  bool _isOwn(const Memo* memo) const;

  NosCompletionPort _port;
  std::atomic<Memo*> _freeHead{nullptr};  // chained by _linkA.next; written under the change lock
  std::uint32_t _freeCount NOMOS_GUARDED_BY(nomutil::boxes::changeLock) = 0;
  std::uint32_t _freeLimit NOMOS_GUARDED_BY(nomutil::boxes::changeLock) = DefaultFreeLimit;
};

// Owns boxes, their change lock, the calendar, the timer wheel and the box thread. Managers are
// independent of each other.
class NOMUTIL_API BoxManager {
 public:
  // The first 7 characters of name stand in the thread's name and in log lines; null is "".
  explicit BoxManager(const char* name);
  BoxManager(const BoxManager&) = delete;
  BoxManager& operator=(const BoxManager&) = delete;

  // Ends the box thread, then frees the boxes and their memos. No other thread may be using the
  // manager or a box of it. A wheel that fell behind is logged.
  ~BoxManager();

  // Makes the calendar, the wheel if timers are wanted, and the box thread. To be called by the
  // thread that constructed the manager, before anything else. 0; 3018 when memory runs out;
  // 3111, with a log line, when there is no thread. What was made stays after a failure, and a
  // second call makes what is missing.
  int initialise(bool timers);

  // A new box of this manager. serialised: one thread receives at a time. boxDeallocate or the
  // manager's end frees it with its memos. 0, or 3018 with null. Any thread may call.
  int boxAllocate(Box*& box, bool serialised);

  // The same for a box over a port that stays the caller's.
  int boxIOCPAllocate(BoxIOCP*& box, NosCompletionPort port);

  // Free a box and its memos; the pointer becomes null. Null is accepted. A box of another manager
  // is reported as a broken contract, and freed by that manager. No other thread may be using it.
  void boxDeallocate(Box*& box);
  void boxIOCPDeallocate(BoxIOCP*& boxiocp);

  // The delayed memos in ascending order of their times, closed by an end marker whose time, the
  // greatest, ends every walk. Knows no lock, clock or thread. Copies share the list.
  class NOMUTIL_API Calendar {
   public:
    Calendar() = default;

    // end becomes the marker of an empty calendar.
    void begin(Memo* end) NOMOS_REQUIRES(nomutil::boxes::changeLock);

    // Links a memo behind those that are due no later. True when it has become the first. index may
    // be null: the same place is then found by walking.
    bool enter(Memo* memo, std::uint64_t due, nomutil::boxes::CalendarIndex* index)
        NOMOS_REQUIRES(nomutil::boxes::changeLock);

    // Unlinks a memo, which becomes idle.
    void remove(Memo* memo, nomutil::boxes::CalendarIndex* index)
        NOMOS_REQUIRES(nomutil::boxes::changeLock);

    Memo* head() const { return _head; }  // the end marker when empty
    Memo* end() const { return _end; }    // null before begin
    std::int64_t due() const { return static_cast<std::int64_t>(_due); }  // the greatest when empty
    // Without the end marker.
    std::uint32_t count() const { return _count; }

   private:
    Memo* _end = nullptr;
    Memo* _head = nullptr;
    Memo* _tail = nullptr;  // the end marker
    std::uint64_t _due = 0;
    std::uint32_t _count = 0;
  };

 private:
  friend class BoxCommon;
  friend class Box;
  friend class BoxIOCP;
  friend struct nomutil::boxes::BoxesAccess;

  void _grabChangeLock() NOMOS_ACQUIRE(nomutil::boxes::changeLock);
  void _dropChangeLock() NOMOS_RELEASE(nomutil::boxes::changeLock);
  static void _nailPriority(unsigned& priority);
  void _remember(BoxCommon* box) NOMOS_REQUIRES(nomutil::boxes::changeLock);
  void _forget(BoxCommon* box) NOMOS_REQUIRES(nomutil::boxes::changeLock);
  void _enlist(BoxCommon* box);
  static void _deallocate(BoxCommon* box);
  void _clean(BoxCommon* box) NOMOS_REQUIRES(nomutil::boxes::changeLock);
  static int _boxThreadJacket(void* manager);
  void _boxThread();
  void _moveDue() NOMOS_REQUIRES(nomutil::boxes::changeLock);
  int _calendarInitialise() NOMOS_REQUIRES(nomutil::boxes::changeLock);
  void _calendarEnter(Memo* memo, std::uint32_t delayMillis, std::int64_t now)
      NOMOS_REQUIRES(nomutil::boxes::changeLock);
  void _calendarRemove(Memo* memo) NOMOS_REQUIRES(nomutil::boxes::changeLock);
  int _timerInitialise() NOMOS_REQUIRES(nomutil::boxes::changeLock);
  void _timerArm(Memo* memo, std::int64_t now) NOMOS_REQUIRES(nomutil::boxes::changeLock);
  void _timerDisarm(Memo* memo) NOMOS_REQUIRES(nomutil::boxes::changeLock);
  void _timerTickAgain(std::optional<std::uint32_t> delayMillis, std::int64_t now)
      NOMOS_REQUIRES(nomutil::boxes::changeLock);
  bool _hasTimers() const;
  void _dispatchExpiredTimers(std::int64_t now) NOMOS_REQUIRES(nomutil::boxes::changeLock);
  nomutil::boxes::TimerWheel _timerWheel() NOMOS_REQUIRES(nomutil::boxes::changeLock);

  Thread _thread;
  BoxCommon* _boxes NOMOS_GUARDED_BY(nomutil::boxes::changeLock) = nullptr;  // newest first
  Memo* _timerTick = nullptr;   // in the calendar, due with the wheel's current slot
  Memo* _keepAliveA = nullptr;  // always in the wheel, with periods of 5,000 and 3,333 ms
  Memo* _keepAliveB = nullptr;
  nomutil::boxes::WheelSlots* _wheel = nullptr;  // 30,000 slot heads, when there are timers
  std::uint64_t _slotTime NOMOS_GUARDED_BY(nomutil::boxes::changeLock) = 0;
  std::uint32_t _boxTotal NOMOS_GUARDED_BY(nomutil::boxes::changeLock) = 0;
  std::uint32_t _armedCount NOMOS_GUARDED_BY(nomutil::boxes::changeLock) = 0;
  std::uint32_t _currentSlot NOMOS_GUARDED_BY(nomutil::boxes::changeLock) = 0;
  std::uint32_t _behind NOMOS_GUARDED_BY(nomutil::boxes::changeLock) = 0;
  ThreadMutex _changeLock{"changeLock"};
  Event _wakeup{false};  // auto reset: the calendar has a new first memo, or the end has come
  std::atomic<bool> _running{true};
  char _name[8] = {};
  Calendar _calendar NOMOS_GUARDED_BY(nomutil::boxes::changeLock);
  nomutil::boxes::CalendarIndex* _calendarIndex NOMOS_GUARDED_BY(nomutil::boxes::changeLock) =
      nullptr;
};

inline void BoxManager::_grabChangeLock() NOMOS_NO_THREAD_SAFETY_ANALYSIS {
  _changeLock.acquire();
}
inline void BoxManager::_dropChangeLock() NOMOS_NO_THREAD_SAFETY_ANALYSIS {
  _changeLock.relinquish();
}
inline void BoxCommon::_grabChangeLock() {
  _manager->_grabChangeLock();
}
inline void BoxCommon::_dropChangeLock() {
  _manager->_dropChangeLock();
}

#endif  // NOMUTIL_SYS_BOXES_H
