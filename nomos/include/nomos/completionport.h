// Completion ports: a queue of packets from any number of threads to any number of threads, oldest
// packet first, the thread that came last released first. On Windows a port is the system's I/O
// completion port, its handle the system's, and a port that the caller made there serves as well.
#ifndef NOMOS_COMPLETIONPORT_H
#define NOMOS_COMPLETIONPORT_H

#include "nomos/export.h"
#include "nomos/relativetime.h"
#include "nomos/ulong.h"

#include <cstdint>
#include <utility>

// The handle of a port; null is none. A handle that is not, or no longer, that of a port makes
// posting and waiting fail with last error 6.
using NosCompletionPort = void*;

inline constexpr unsigned kNosErrorInvalidHandle = 6;
inline constexpr unsigned kNosErrorNotEnoughMemory = 8;
inline constexpr unsigned kNosErrorWaitTimeout = 258;
inline constexpr unsigned kNosErrorAbandonedWait = 735;

// A new, empty port, which the caller hands to nosCloseCompletionPort. Null, with the last error
// set, when the system has no room for one.
NOMOS_API NosCompletionPort nosCreateCompletionPort() noexcept;

// Ends a port. Threads that wait on it fail with last error 735; packets in it are dropped. False,
// with last error 6, when it is none; but Windows ends any open handle, so hand it no other.
NOMOS_API bool nosCloseCompletionPort(NosCompletionPort port) noexcept;

// Puts a packet into the port. False, with the last error set (6, or 8 when memory is exhausted),
// when it could not.
NOMOS_API bool nosPostCompletion(NosCompletionPort port, NomULong bytes, std::uint64_t key,
                                 void* overlapped) noexcept;

// Takes the oldest packet, or waits for one, at most so many milliseconds, 0 not at all. True when
// there was one. False with overlapped null, and bytes and key as they were, when there was none,
// with the last error: 258 when the time is over, 735 when the port was closed meanwhile, 6. False
// with overlapped set, and bytes and key as well, is the packet of an operation of the system that
// failed, on Windows alone.
NOMOS_API bool nosGetCompletion(NosCompletionPort port, NomULong& bytes, std::uint64_t& key,
                                void*& overlapped, std::uint32_t milliseconds) noexcept;

// A port of its own: closed with the object.
class CompletionPort {
 public:
  // Empty when the system has no room for a port: each operation then fails with last error 6.
  CompletionPort() noexcept : _port(nosCreateCompletionPort()) {}
  CompletionPort(const CompletionPort&) = delete;
  CompletionPort& operator=(const CompletionPort&) = delete;
  ~CompletionPort() {
    if (_port != nullptr) close();
  }

  // Null when it is empty or closed.
  NosCompletionPort handle() const noexcept { return _port; }

  // As the functions of these names above. No other operation may run while close returns.
  bool close() noexcept { return nosCloseCompletionPort(std::exchange(_port, nullptr)); }
  bool post(NomULong bytes, std::uint64_t key, void* overlapped) noexcept {
    return nosPostCompletion(_port, bytes, key, overlapped);
  }
  bool get(NomULong& bytes, std::uint64_t& key, void*& overlapped,
           std::uint32_t milliseconds = kNosInfinite) noexcept {
    return nosGetCompletion(_port, bytes, key, overlapped, milliseconds);
  }

 private:
  NosCompletionPort _port;
};

#endif  // NOMOS_COMPLETIONPORT_H
