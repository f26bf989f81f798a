// Thread and ThreadManager over the platform's threads, and the hook by which tests refuse one.

#include "nomos/thread.h"

#include "nomos/lasterror.h"
#include "nomos/mutex.h"
#include "nomos/testhooks.h"
#include "platform.h"

namespace platform = nomos::platform;

namespace {

struct Hook {
  NosThreadHook function = nullptr;
  void* context = nullptr;
};

constinit ThreadMutex hookMutex("NosThreadHook");
Hook currentHook NOMOS_GUARDED_BY(hookMutex);

bool isRefused(const char* name) {
  Hook hook;
  {
    ThreadMutexHold hold(hookMutex);
    hook = currentHook;
  }
  return hook.function != nullptr && !hook.function(hook.context, name);
}

}  // namespace

void nosSetThreadHook(NosThreadHook hook, void* context) {
  ThreadMutexHold hold(hookMutex);
  currentHook = {hook, context};
}

Thread ThreadManager::createThread(const char* name, ThreadEntry entry, void* argument,
                                   bool joinable, bool takesSignals,
                                   ThreadPriority priority) noexcept {
  Thread thread;
  const char* const shownName = name != nullptr ? name : "";
  if (isRefused(shownName)) {
    nosSetLastError(platform::kThreadRefused);
    return thread;
  }
  thread._handle = platform::startThread(shownName, entry, argument, takesSignals, priority);
  if (!joinable && thread._handle != 0) {
    platform::releaseThread(thread._handle);
    thread._handle = Thread::kNotJoinable;
  }
  return thread;
}

bool Thread::wait(std::uint32_t milliseconds) noexcept {
  if (_handle == kNotJoinable) return false;
  if (_handle != 0 && !platform::joinThread(_handle, milliseconds)) return false;
  _handle = 0;
  return true;
}

void Thread::_letGo() noexcept {
  if (_handle != 0 && _handle != kNotJoinable) platform::releaseThread(_handle);
}
