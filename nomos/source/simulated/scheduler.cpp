// Fibers over ucontext, each on a stack of its own with a page behind it that nobody may touch.

#include "simulated/scheduler.h"

#include "nomos/lasterror.h"
#include "platform.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include <sys/mman.h>
#include <ucontext.h>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/common_interface_defs.h>
#endif

namespace nomos::simulated {

namespace {

constexpr std::size_t kStackSize = 256 * 1024;
constexpr std::size_t kGuardSize = 4096;
// A box thread never waits for ever: what still waits for something else after so long is lost.
constexpr std::int64_t kLongestLife = kBirth + 3600 * 1000 * platform::kNanosPerMilli;

Simulation* theRunning = nullptr;

// Stacks of fibers that have ended, for the next.
std::vector<char*>& idleStacks() {
  static std::vector<char*> stacks;
  return stacks;
}

char* takeStack() {
  std::vector<char*>& idle = idleStacks();
  if (!idle.empty()) {
    char* const stack = idle.back();
    idle.pop_back();
    return stack;
  }
  void* const memory = mmap(nullptr, kGuardSize + kStackSize, PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED || mprotect(memory, kGuardSize, PROT_NONE) != 0) std::abort();
  return static_cast<char*>(memory) + kGuardSize;
}

// Tell AddressSanitizer that the stack changes.
void beforeSwitch([[maybe_unused]] void** save, [[maybe_unused]] const void* stack,
                  [[maybe_unused]] std::size_t size) {
#if defined(__SANITIZE_ADDRESS__)
  __sanitizer_start_switch_fiber(save, stack, size);
#endif
}
void afterSwitch([[maybe_unused]] void* save, [[maybe_unused]] const void** oldStack = nullptr,
                 [[maybe_unused]] std::size_t* oldSize = nullptr) {
#if defined(__SANITIZE_ADDRESS__)
  __sanitizer_finish_switch_fiber(save, oldStack, oldSize);
#endif
}

// The thread of the system, to which the last fiber switches back.
struct Outside {
  ucontext_t context;
  void* sanitizerStack;
  const void* stack;
  std::size_t stackSize;
};
Outside outside;

}  // namespace

struct Simulation::Fiber {
  std::function<void()> body;
  ucontext_t context{};
  char* stack = nullptr;
  void* sanitizerStack = nullptr;
  unsigned lastError = 0;
  int locks = 0;
  std::int64_t lastReading = 0;
  bool ended = false;
  const void* waitsOn = nullptr;  // what wake must name, or null
  bool woken = false;
  std::int64_t deadline = platform::kNever;
};

Simulation::Simulation(Chooser& chooser, Observer& observer, Failure fail)
    : _chooser(chooser), _observer(observer), _fail(std::move(fail)) {}

Simulation::~Simulation() {
  for (const auto& fiber : _fibers) idleStacks().push_back(fiber->stack);
}

Simulation* Simulation::running() {
  return theRunning;
}

void Simulation::run(std::function<void()> body) {
  theRunning = this;
  _current = start(std::move(body));
  beforeSwitch(&outside.sanitizerStack, _fibers[0]->stack, kStackSize);
  swapcontext(&outside.context, &_fibers[0]->context);
  afterSwitch(outside.sanitizerStack);
  theRunning = nullptr;
}

unsigned Simulation::start(std::function<void()> body) {
  auto fiber = std::make_unique<Fiber>();
  fiber->body = std::move(body);
  fiber->stack = takeStack();
  getcontext(&fiber->context);
  fiber->context.uc_stack.ss_sp = fiber->stack;
  fiber->context.uc_stack.ss_size = kStackSize;
  fiber->context.uc_link = nullptr;
  makecontext(&fiber->context, &Simulation::enter, 0);
  _fibers.push_back(std::move(fiber));
  return static_cast<unsigned>(_fibers.size() - 1);
}

void Simulation::enter() {
  const bool isFirst = theRunning->_fibers.size() == 1;
  afterSwitch(nullptr, isFirst ? &outside.stack : nullptr, isFirst ? &outside.stackSize : nullptr);
  theRunning->runBody();
}

void Simulation::runBody() {
  _fibers[_current]->body();
  _fibers[_current]->body = nullptr;
  _fibers[_current]->ended = true;
  wake(_fibers[_current].get());
  if (std::ranges::all_of(_fibers, [](const auto& fiber) { return fiber->ended; })) {
    leave();
  } else {
    goOn(false);
  }
}

// Back to the thread of the system, for good.
void Simulation::leave() {
  beforeSwitch(nullptr, outside.stack, outside.stackSize);
  setcontext(&outside.context);
}

void Simulation::switchTo(unsigned fiber) {
  if (fiber == _current) return;
  Fiber& from = *_fibers[_current];
  Fiber& to = *_fibers[fiber];
  from.lastError = nosGetLastError();
  _current = fiber;
  beforeSwitch(from.ended ? nullptr : &from.sanitizerStack, to.stack, kStackSize);
  swapcontext(&from.context, &to.context);
  afterSwitch(from.sanitizerStack);
  nosSetLastError(from.lastError);
}

// The fibers that could go on, the running one first.
std::vector<unsigned> Simulation::runnable() {
  std::vector<unsigned> fibers;
  for (unsigned i = 0; i < _fibers.size(); ++i) {
    const Fiber& fiber = *_fibers[i];
    const bool waits = fiber.waitsOn != nullptr && !fiber.woken && fiber.deadline > _now;
    if (fiber.ended || waits) continue;
    fibers.insert(i == _current ? fibers.begin() : fibers.end(), i);
  }
  return fibers;
}

// Who goes on.
unsigned Simulation::chooseNext(bool canGoOn) {
  std::vector<unsigned> fibers = runnable();
  if (fibers.empty()) {
    std::int64_t next = platform::kNever;
    for (const auto& fiber : _fibers) {
      if (!fiber->ended) next = std::min(next, fiber->deadline);
    }
    if (next > kLongestLife) {
      _fail("a fiber waits for ever");
      std::abort();
    }
    _now = next;
    fibers = runnable();
  }
  const auto count = static_cast<unsigned>(fibers.size());
  if (count == 1) return fibers[0];
  const unsigned chosen = fibers[_chooser.choose(count, canGoOn)];
  note("runs " + std::to_string(chosen));
  return chosen;
}

// Returns when this fiber is chosen again; never when it has ended, so that nothing that has to be
// destroyed may lie on its stack.
void Simulation::goOn(bool canGoOn) {
  switchTo(chooseNext(canGoOn));
}

void Simulation::step(const char* what) {
  note(what);
  goOn(true);
  if (_fibers[_current]->locks == 0 && _timedJoins == 0)
    _now += _chooser.stall() * platform::kNanosPerMilli;
}

void Simulation::extraStep(const char* what) {
  if (_chooser.choosesEverywhere()) step(what);
}

bool Simulation::block(const void* on, std::int64_t deadline) {
  Fiber& fiber = *_fibers[_current];
  fiber.waitsOn = on;
  fiber.woken = false;
  fiber.deadline = deadline;
  goOn(false);
  fiber.waitsOn = nullptr;
  fiber.deadline = platform::kNever;
  return fiber.woken;
}

void Simulation::wake(const void* on) {
  for (const auto& fiber : _fibers) {
    if (fiber->waitsOn == on) fiber->woken = true;
  }
}

bool Simulation::join(unsigned fiber, std::uint32_t milliseconds) {
  const std::int64_t deadline = milliseconds == kNosInfinite
                                    ? platform::kNever
                                    : _now + milliseconds * platform::kNanosPerMilli;
  const unsigned timed = milliseconds != kNosInfinite ? 1 : 0;
  _timedJoins += timed;
  bool inTime = true;
  while (!_fibers[fiber]->ended && inTime) inTime = block(_fibers[fiber].get(), deadline);
  _timedJoins -= timed;
  return _fibers[fiber]->ended;
}

void Simulation::countLocks(int change) {
  _fibers[_current]->locks += change;
}

std::int64_t Simulation::readClock() {
  return _fibers[_current]->lastReading = _now;
}

std::int64_t Simulation::lastReading() const {
  return _fibers[_current]->lastReading;
}

void Simulation::note(const std::string& text) {
  if (_trace != nullptr) *_trace += std::to_string(_current) + ' ' + text + '\n';
}

}  // namespace nomos::simulated
