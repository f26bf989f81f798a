// Threads over pthreads. The handle is the address of a record that the Thread and the running
// thread share; who lets go of it last frees it. A timed wait ends through its event, since
// ThreadSanitizer knows no timed join by the monotonic clock; the join behind it is short.

#include "nomos/event.h"
#include "nomos/lasterror.h"
#include "platform.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <new>

#include <pthread.h>
#include <sys/resource.h>

namespace {

// The length of a name that the kernel shows, and its NUL.
constexpr std::size_t kNameSize = 16;

struct Record {
  ThreadEntry entry;
  void* argument;
  ThreadPriority priority;
  char name[kNameSize];
  pthread_t thread;
  Event ended{true};
  std::atomic<int> holders;
};

void release(Record* record) noexcept {
  if (record->holders.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  record->~Record();
  nomos::platform::release(record);
}

// Steps of the nice value, of which the kernel keeps one for each thread. It refuses a lower value
// without the privilege, and then the thread stays as it is.
void applyPriority(ThreadPriority priority) noexcept {
  static constexpr int kNiceSteps[] = {19, 10, 5, 0, -5, -10};
  const int step = kNiceSteps[static_cast<int>(priority)];
  if (step == 0) return;
  constexpr id_t kThisThread = 0;
  const int nice = getpriority(PRIO_PROCESS, kThisThread) + step;
  setpriority(PRIO_PROCESS, kThisThread, std::clamp(nice, -20, 19));
}

void* run(void* argument) noexcept {
  const auto record = static_cast<Record*>(argument);
  pthread_setname_np(pthread_self(), record->name);
  applyPriority(record->priority);
  record->entry(record->argument);
  record->ended.set();
  release(record);
  return nullptr;
}

// A new thread starts with the signal mask of the one that makes it.
int create(Record* record, bool takesSignals) noexcept {
  if (takesSignals) return pthread_create(&record->thread, nullptr, run, record);
  sigset_t all, before;
  sigfillset(&all);
  // Signals of a fault must reach the thread that made it.
  for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS}) sigdelset(&all, fault);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  const int error = pthread_create(&record->thread, nullptr, run, record);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return error;
}

}  // namespace

const unsigned nomos::platform::kThreadRefused = EAGAIN;

std::uintptr_t nomos::platform::startThread(const char* name, ThreadEntry entry, void* argument,
                                            bool takesSignals, ThreadPriority priority) noexcept {
  void* const memory = allocate(sizeof(Record));
  if (memory == nullptr) return nosSetLastError(ENOMEM), 0;
  const auto record = new (memory) Record;
  record->entry = entry;
  record->argument = argument;
  record->priority = priority;
  const std::size_t length = strnlen(name, kNameSize - 1);
  std::memcpy(record->name, name, length);
  record->name[length] = '\0';
  record->holders.store(2, std::memory_order_relaxed);
  if (const int error = create(record, takesSignals); error != 0) {
    record->holders.store(1, std::memory_order_relaxed);
    release(record);
    return nosSetLastError(static_cast<unsigned>(error)), 0;
  }
  return reinterpret_cast<std::uintptr_t>(record);
}

bool nomos::platform::joinThread(std::uintptr_t handle, std::uint32_t milliseconds) noexcept {
  const auto record = reinterpret_cast<Record*>(handle);
  if (!record->ended.wait(milliseconds)) return false;
  pthread_join(record->thread, nullptr);
  release(record);
  return true;
}

void nomos::platform::releaseThread(std::uintptr_t handle) noexcept {
  const auto record = reinterpret_cast<Record*>(handle);
  pthread_detach(record->thread);
  release(record);
}
