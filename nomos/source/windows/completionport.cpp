// Completion ports: the system's I/O completion ports. The calls set the last errors themselves.

#include "nomos/completionport.h"

#include <windows.h>

NosCompletionPort nosCreateCompletionPort() noexcept {
  return CreateIoCompletionPort(INVALID_HANDLE_VALUE, nullptr, 0, 0);
}

bool nosCloseCompletionPort(NosCompletionPort port) noexcept {
  return CloseHandle(port) != 0;
}

bool nosPostCompletion(NosCompletionPort port, NomULong bytes, std::uint64_t key,
                       void* overlapped) noexcept {
  return PostQueuedCompletionStatus(port, bytes, key, static_cast<OVERLAPPED*>(overlapped)) != 0;
}

bool nosGetCompletion(NosCompletionPort port, NomULong& bytes, std::uint64_t& key,
                      void*& overlapped, std::uint32_t milliseconds) noexcept {
  // The call writes what it gives for bytes and key also where it has no packet.
  NomULong packetBytes = 0;
  ULONG_PTR packetKey = 0;
  OVERLAPPED* packetOverlapped = nullptr;
  const bool success = GetQueuedCompletionStatus(port, &packetBytes, &packetKey, &packetOverlapped,
                                                 milliseconds) != 0;
  overlapped = packetOverlapped;
  if (success || packetOverlapped != nullptr) {
    bytes = packetBytes;
    key = packetKey;
  }
  return success;
}
