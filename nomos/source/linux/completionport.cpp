// Completion ports in the process: a ring of packets and a stack of waiting threads, one of which
// is always empty. A post hands its packet to the thread that came last, or puts it into the ring.
// Nothing here needs the system but ThreadMutex and Event.
//
// A handle is no address: generation and index of a port's place, so that one of a closed port, or
// of none, is recognised without reading memory. Places are used again and never freed.

#include "nomos/completionport.h"

#include "nomos/event.h"
#include "nomos/heap.h"
#include "nomos/lasterror.h"
#include "nomos/mutex.h"

namespace {

struct Packet {
  NomULong bytes;
  std::uint64_t key;
  void* overlapped;
};

// A thread in nosGetCompletion; it lies on that thread's stack. Who takes it from the stack of
// waiters fills it and sets released; until then the thread does not leave.
struct Waiter {
  Event released{false};
  Waiter* below = nullptr;
  Waiter* above = nullptr;
  bool isWaiting = true;
  bool isServed = false;
  Packet packet{};
};

// A queue of packets whose room doubles, a power of two. Zero is an empty one without room.
class PacketRing {
 public:
  bool isEmpty() const { return _first == _end; }

  // False when there is no memory for more room.
  bool push(const Packet& packet) {
    if (_end - _first == _room && !_grow()) return false;
    _packets[_end++ & (_room - 1)] = packet;
    return true;
  }

  // REQUIRES: not empty.
  Packet pop() { return _packets[_first++ & (_room - 1)]; }

  void clear() {
    XHeap::library().release(_packets);
    *this = PacketRing();
  }

 private:
  bool _grow() {
    const std::uint64_t room = _room == 0 ? 64 : 2 * _room;
    const auto packets = static_cast<Packet*>(XHeap::library().allocate(room * sizeof(Packet)));
    if (packets == nullptr) return false;
    std::uint64_t count = 0;
    while (!isEmpty()) packets[count++] = pop();
    XHeap::library().release(_packets);
    _packets = packets;
    _first = 0;
    _end = count;
    _room = room;
    return true;
  }

  Packet* _packets = nullptr;
  std::uint64_t _first = 0, _end = 0, _room = 0;
};

// All zero is a place that was never used, so that the table takes no room in the file.
struct Port {
  ThreadMutex mutex{nullptr};
  std::uint64_t generation NOMOS_GUARDED_BY(mutex) = 0;  // odd while the port is open
  PacketRing packets NOMOS_GUARDED_BY(mutex);
  Waiter* lastWaiter NOMOS_GUARDED_BY(mutex) = nullptr;
  Port* nextFree = nullptr;  // guarded by the mutex of the table
};

constexpr std::uint64_t kPlaces = 4096;
constinit Port places[kPlaces];

constinit ThreadMutex tableMutex("NosCompletionPorts");
Port* firstFree NOMOS_GUARDED_BY(tableMutex) = nullptr;
std::uint64_t usedPlaces NOMOS_GUARDED_BY(tableMutex) = 0;

bool fail(unsigned error) {
  nosSetLastError(error);
  return false;
}

bool deliver(const Packet& packet, NomULong& bytes, std::uint64_t& key, void*& overlapped) {
  bytes = packet.bytes;
  key = packet.key;
  overlapped = packet.overlapped;
  return true;
}

NosCompletionPort handleOf(const Port& port, std::uint64_t generation) {
  const auto index = static_cast<std::uint64_t>(&port - places);
  return reinterpret_cast<NosCompletionPort>(generation * kPlaces + index);
}

Port& placeOf(NosCompletionPort handle) {
  return places[reinterpret_cast<std::uintptr_t>(handle) % kPlaces];
}

// A handle is one of a port while its generation is, and that is odd.
bool isOpen(const Port& port, NosCompletionPort handle) NOMOS_REQUIRES(port.mutex) {
  return port.generation % 2 == 1 &&
         port.generation == reinterpret_cast<std::uintptr_t>(handle) / kPlaces;
}

Port* takePlace() {
  ThreadMutexHold hold(tableMutex);
  if (Port* const port = firstFree) {
    firstFree = port->nextFree;
    return port;
  }
  return usedPlaces < kPlaces ? &places[usedPlaces++] : nullptr;
}

void pushWaiter(Port& port, Waiter& waiter) NOMOS_REQUIRES(port.mutex) {
  waiter.below = port.lastWaiter;
  if (waiter.below != nullptr) waiter.below->above = &waiter;
  port.lastWaiter = &waiter;
}

void removeWaiter(Port& port, Waiter& waiter) NOMOS_REQUIRES(port.mutex) {
  (waiter.above != nullptr ? waiter.above->below : port.lastWaiter) = waiter.below;
  if (waiter.below != nullptr) waiter.below->above = waiter.above;
  waiter.isWaiting = false;
}

// Takes back a waiter whose time is over; false when somebody took it from the stack before.
bool withdraw(Port& port, Waiter& waiter) {
  ThreadMutexHold hold(port.mutex);
  if (!waiter.isWaiting) return false;
  removeWaiter(port, waiter);
  return true;
}

}  // namespace

NosCompletionPort nosCreateCompletionPort() noexcept {
  Port* const port = takePlace();
  if (port == nullptr) {
    nosSetLastError(kNosErrorNotEnoughMemory);
    return nullptr;
  }
  ThreadMutexHold hold(port->mutex);
  return handleOf(*port, ++port->generation);
}

bool nosCloseCompletionPort(NosCompletionPort handle) noexcept {
  Port& port = placeOf(handle);
  {
    ThreadMutexHold hold(port.mutex);
    if (!isOpen(port, handle)) return fail(kNosErrorInvalidHandle);
    ++port.generation;
    port.packets.clear();
    while (Waiter* const waiter = port.lastWaiter) {
      removeWaiter(port, *waiter);
      waiter->released.set();
    }
  }
  ThreadMutexHold hold(tableMutex);
  port.nextFree = firstFree;
  firstFree = &port;
  return true;
}

bool nosPostCompletion(NosCompletionPort handle, NomULong bytes, std::uint64_t key,
                       void* overlapped) noexcept {
  Port& port = placeOf(handle);
  const Packet packet{bytes, key, overlapped};
  Waiter* waiter;
  {
    ThreadMutexHold hold(port.mutex);
    if (!isOpen(port, handle)) return fail(kNosErrorInvalidHandle);
    waiter = port.lastWaiter;
    if (waiter == nullptr) return port.packets.push(packet) || fail(kNosErrorNotEnoughMemory);
    removeWaiter(port, *waiter);
    waiter->packet = packet;
    waiter->isServed = true;
  }
  waiter->released.set();
  return true;
}

bool nosGetCompletion(NosCompletionPort handle, NomULong& bytes, std::uint64_t& key,
                      void*& overlapped, std::uint32_t milliseconds) noexcept {
  overlapped = nullptr;
  Port& port = placeOf(handle);
  Waiter waiter;
  {
    ThreadMutexHold hold(port.mutex);
    if (!isOpen(port, handle)) return fail(kNosErrorInvalidHandle);
    if (!port.packets.isEmpty()) {
      return deliver(port.packets.pop(), bytes, key, overlapped);
    }
    if (milliseconds == 0) return fail(kNosErrorWaitTimeout);
    pushWaiter(port, waiter);
  }
  if (!waiter.released.wait(milliseconds)) {
    if (withdraw(port, waiter)) return fail(kNosErrorWaitTimeout);
    waiter.released.wait();
  }
  if (!waiter.isServed) return fail(kNosErrorAbandonedWait);
  return deliver(waiter.packet, bytes, key, overlapped);
}
