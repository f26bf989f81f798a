// Threads as fibers under a virtual clock: at every lock, event and sleep a Chooser decides which
// fiber runs on, so that a schedule can be replayed, or every one tried. Nothing here is safe from
// several threads of the system: a Simulation and all its fibers run in one.
//
// Virtual time moves only when no fiber can run, to the next deadline, and by what the chooser
// adds as stalls. Only sequentially consistent schedules are explored.
#ifndef NOMOS_SOURCE_SIMULATED_SCHEDULER_H
#define NOMOS_SOURCE_SIMULATED_SCHEDULER_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class ThreadMutex;

namespace nomos::simulated {

// Decides a schedule.
class Chooser {
 public:
  virtual ~Chooser() = default;

  // Which of `count` fibers runs on, 0 to count - 1. When the running fiber could go on it is
  // number 0, and any other choice preempts it.
  virtual unsigned choose(unsigned count, bool canGoOn) = 0;

  // Whether another fiber may also go on right behind a lock that was given back, and where an
  // event is set. In a search through all schedules both are lost time: what a fiber does between a
  // lock and its next one concerns it alone, and who is woken under a lock has to wait for it.
  virtual bool choosesEverywhere() { return true; }

  // Milliseconds for which everything stands still before the running fiber goes on.
  virtual std::int64_t stall() { return 0; }
};

// What happens to locks, for who checks the state that they guard.
class Observer {
 public:
  virtual ~Observer() = default;
  virtual void acquired(const ThreadMutex&) {}
  virtual void relinquishing(const ThreadMutex&) {}
};

// The virtual time at which a simulation begins, in nanoseconds.
inline constexpr std::int64_t kBirth = 1'000'000'000'000;

// What ends a simulation before its time, as when all fibers wait for ever.
using Failure = std::function<void(const std::string&)>;

class Simulation {
 public:
  Simulation(Chooser& chooser, Observer& observer, Failure fail);
  ~Simulation();
  Simulation(const Simulation&) = delete;
  Simulation& operator=(const Simulation&) = delete;

  // Runs body as fiber 0 until it and all threads that it starts have ended.
  void run(std::function<void()> body);

  // The number of the fiber that runs; the clock that it read last, and the present one.
  unsigned current() const { return _current; }
  std::int64_t lastReading() const;
  std::int64_t now() const { return _now; }

  // A line for every choice that was one and all that note adds, when somebody wants it.
  void traceTo(std::string* trace) { _trace = trace; }
  void note(const std::string& text);

  // For the backend. The simulation that runs, or null: code then runs in a plain thread.
  static Simulation* running();
  std::int64_t readClock();
  void step(const char* what);       // a point at which another fiber may go on
  void extraStep(const char* what);  // one where the chooser may do without
  // Waits for wake(on), or until the clock reaches a deadline: false.
  bool block(const void* on, std::int64_t deadline);
  void wake(const void* on);
  unsigned start(std::function<void()> body);
  // Waits for the end of a fiber, at most so many milliseconds; then nothing stalls.
  bool join(unsigned fiber, std::uint32_t milliseconds);
  Observer& observer() { return _observer; }
  void countLocks(int change);  // locks that the running fiber holds

 private:
  struct Fiber;
  static void enter();
  void runBody();
  void leave();
  void switchTo(unsigned fiber);
  std::vector<unsigned> runnable();
  unsigned chooseNext(bool canGoOn);
  void goOn(bool canGoOn);

  Chooser& _chooser;
  Observer& _observer;
  Failure _fail;
  std::vector<std::unique_ptr<Fiber>> _fibers;
  unsigned _current = 0;
  unsigned _timedJoins = 0;    // fibers that wait for the end of another up to a deadline
  std::int64_t _now = kBirth;  // nanoseconds
  std::string* _trace = nullptr;
};

}  // namespace nomos::simulated

#endif  // NOMOS_SOURCE_SIMULATED_SCHEDULER_H
