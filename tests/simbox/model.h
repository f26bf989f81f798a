// A plain model of managers, boxes, memos and timers, and the check that the real ones agree with
// it. The simulation tells when a change lock is given back; the operation that its fiber is in is
// then applied to the model, as one step, and the whole state compared.
//
// What the box thread moves is not modelled but judged: a scheduled memo never before its time and
// always in the calendar's order, a timer never before its time, nothing else, and nothing left
// behind that was due.
#ifndef SIMBOX_MODEL_H
#define SIMBOX_MODEL_H

#include "simulated/scheduler.h"

#include "sys/boxes.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace simbox {

enum class Kind {
  Dispatch,
  UpdateDispatch,
  DispatchMultiple,
  UpdateDispatchMultiple,
  Schedule,
  Cancel,
  Update,
  TimerStart,
  TimerStop,
  GetState,
  Receive,
  Replace,  // deallocates and allocates the memo
  PortDispatch,
  PortDispatchMultiple,
  PortSchedule,
  PortReschedule,
  PortCancel,
  PortMark,
  PortReceive,
};
inline constexpr unsigned kKinds = 19;

// An operation on memo (or timer, or box) `subject`; the numbers are its arguments in order.
struct Operation {
  Kind kind;
  unsigned subject;
  unsigned a = 0, b = 0, c = 0;
};
std::string text(const Operation& operation);

class Model : public nomos::simulated::Observer {
 public:
  using Fail = nomos::simulated::Failure;
  // With isPunctual nothing stalls, so that all comes in its very millisecond.
  Model(bool isPunctual, Fail fail) : _isPunctual(isPunctual), _fail(std::move(fail)) {}

  void begin(const nomos::simulated::Simulation& simulation, const BoxManager& manager,
             std::vector<Box*> boxes, unsigned boxThread);
  void addMemo(Memo* memo, unsigned box, unsigned priority, bool separate);
  void end() { _manager = nullptr; }

  // Around each operation of the fiber that runs.
  void enters(const Operation& operation);
  void returns(unsigned value, unsigned signalCount, MemoLocus locus);
  void isReplaced(unsigned memo, Memo* fresh);
  // A packet of this memo came out of the port.
  void packetCame(unsigned memo);

  // Nothing waits in calendar or wheel, and all packets have come.
  void checkQuiet();

  void acquired(const ThreadMutex& mutex) override;
  void relinquishing(const ThreadMutex& mutex) override;

 private:
  struct Entry {
    Memo* memo;
    unsigned box;
    MemoLocus locus = ML_Idle;
    std::uint32_t signals = 0, value = 0, priority = 0;
    bool separate = false;
    std::int64_t due = 0;           // in calendar and wheel
    unsigned posted = 0, came = 0;  // packets
  };
  // The operation that a fiber is in.
  struct Running {
    Operation operation;
    std::int64_t begin = 0;  // its clock when it began
    unsigned removals = 0;   // of the box of a receive, then
    std::int64_t now = 0;    // its clock when it took the lock
    bool isDone = false;
    unsigned value = 0, signalCount = 0;  // what a receive is to give, or a state
    MemoLocus locus = ML_None;
  };

  void apply(Running& running);
  void applyToPort(Running& running);
  void schedule(unsigned memo, std::int64_t due);
  void enter(unsigned memo);
  void withdraw(unsigned memo);
  void set(unsigned memo, unsigned value, unsigned priority, bool separate);
  void receive(Running& running);
  void checkReceived(const Running& running, unsigned value, unsigned signalCount);
  void judgeBoxThread();
  void compare();
  std::vector<unsigned> queueOf(const Box& box);
  std::uint32_t signalsOf(unsigned box) const;
  unsigned numberOf(const Memo* memo);
  std::int64_t clock() const;
  void expect(bool condition, const std::string& what);

  bool _isPunctual;
  Fail _fail;
  const nomos::simulated::Simulation* _simulation = nullptr;
  const BoxManager* _manager = nullptr;
  std::vector<Box*> _boxes;
  unsigned _boxThread = 0;
  std::vector<Entry> _memos;
  std::map<const Memo*, unsigned> _numbers;
  std::vector<std::vector<unsigned>> _queues;
  std::vector<unsigned> _removals;  // from each queue so far
  std::vector<unsigned> _calendar;  // in order
  std::map<unsigned, Running> _running;
};

}  // namespace simbox

#endif  // SIMBOX_MODEL_H
