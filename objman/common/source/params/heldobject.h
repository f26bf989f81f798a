// Held objects: built in memory of the library's heap, reached as KoraBytes, since that is all that
// the value area tells about them, and destroyed through the virtual destructor.
#ifndef NOMUTIL_PARAMS_HELDOBJECT_H
#define NOMUTIL_PARAMS_HELDOBJECT_H

#include "nomos/heap.h"
#include "nomos/korastring.h"
#include "sys/params.h"

#include <cstddef>
#include <cstdint>
#include <new>

namespace nomutil::params {

inline constexpr std::size_t kItemOffset = offsetof(DskHandlerValue, item);
inline constexpr std::size_t kSelfOffset = offsetof(DskHandlerValue, self);

// Up to this length a text shares the block of its object, so that a short string takes the heap
// once. A longer one is not worth the room that stays behind when it grows.
inline constexpr std::uint32_t kSharedTextLimit = 1024;

template <class T>
KoraString<T>* construct(void* memory, std::uint32_t maximum, KoraString<T>*) {
  return new (memory) KoraString<T>(nullptr, 0, maximum);
}
inline KoraUtf8String* construct(void* memory, std::uint32_t maximum, KoraUtf8String*) {
  return new (memory) KoraUtf8String(StringUtf8Info{}, maximum);
}

// An empty object, made for a text of `length` elements; null without memory.
template <class Held>
Held* newHeld(std::uint32_t maximum = kKoraNoMaximum, std::uint32_t length = 0) {
  static_assert(sizeof(Held) % 4 == 0);
  const bool isShared = length != 0 && length <= kSharedTextLimit;
  const std::uint32_t textBytes = isShared ? length + KoraBytes::kTextOverhead : 0;
  void* const memory = XHeap::library().allocate(sizeof(Held) + textBytes);
  if (memory == nullptr) return nullptr;
  Held* const held = construct(memory, maximum, static_cast<Held*>(nullptr));
  if (isShared) held->useMemory(held + 1, textBytes);
  return held;
}

// Destroys and releases; null is accepted.
void deleteHeld(KoraBytes* held);

}  // namespace nomutil::params

#endif  // NOMUTIL_PARAMS_HELDOBJECT_H
