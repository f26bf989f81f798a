// Threads of the system; the handle is the system's own. It tells when the thread has ended, so
// nothing else is shared with the running thread once it has taken its start record.

#include "nomos/lasterror.h"
#include "platform.h"
#include "windows/timerperiod.h"

#include <new>

#include <windows.h>

#include <process.h>

namespace {

// What the new thread takes over and frees.
struct Start {
  ThreadEntry entry;
  void* argument;
};

unsigned __stdcall run(void* argument) noexcept {
  const Start start = *static_cast<Start*>(argument);
  nomos::platform::release(argument);
  start.entry(start.argument);
  nomos::platform::endFinestTimerPeriod();
  return 0;
}

// The name that debuggers show; systems before Windows 10 have none.
void setName(HANDLE thread, const char* name) noexcept {
  using SetThreadDescription = HRESULT(WINAPI*)(HANDLE, PCWSTR);
  static const auto setDescription = reinterpret_cast<SetThreadDescription>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleA("kernel32.dll"), "SetThreadDescription")));
  constexpr int kNameRoom = 128;
  wchar_t wideName[kNameRoom];
  if (setDescription != nullptr &&
      MultiByteToWideChar(CP_UTF8, 0, name, -1, wideName, kNameRoom) > 0) {
    setDescription(thread, wideName);
  }
}

void applyPriority(HANDLE thread, ThreadPriority priority) noexcept {
  static constexpr int kPriorities[] = {THREAD_PRIORITY_IDLE,         THREAD_PRIORITY_LOWEST,
                                        THREAD_PRIORITY_BELOW_NORMAL, THREAD_PRIORITY_NORMAL,
                                        THREAD_PRIORITY_ABOVE_NORMAL, THREAD_PRIORITY_HIGHEST};
  SetThreadPriority(thread, kPriorities[static_cast<int>(priority)]);
}

}  // namespace

const unsigned nomos::platform::kThreadRefused = ERROR_NO_SYSTEM_RESOURCES;

std::uintptr_t nomos::platform::startThread(const char* name, ThreadEntry entry, void* argument,
                                            bool /*takesSignals*/,
                                            ThreadPriority priority) noexcept {
  void* const memory = allocate(sizeof(Start));
  if (memory == nullptr) return nosSetLastError(ERROR_NOT_ENOUGH_MEMORY), 0;
  // It starts suspended, so that it never runs without its name and priority.
  const std::uintptr_t handle = _beginthreadex(nullptr, 0, run, new (memory) Start{entry, argument},
                                               CREATE_SUSPENDED, nullptr);
  if (handle == 0) {
    release(memory);
    return nosSetLastError(kThreadRefused), 0;
  }
  const auto thread = reinterpret_cast<HANDLE>(handle);
  setName(thread, name);
  applyPriority(thread, priority);
  ResumeThread(thread);
  return handle;
}

bool nomos::platform::joinThread(std::uintptr_t handle, std::uint32_t milliseconds) noexcept {
  if (WaitForSingleObject(reinterpret_cast<HANDLE>(handle), milliseconds) != WAIT_OBJECT_0) {
    return false;
  }
  releaseThread(handle);
  return true;
}

void nomos::platform::releaseThread(std::uintptr_t handle) noexcept {
  CloseHandle(reinterpret_cast<HANDLE>(handle));
}
