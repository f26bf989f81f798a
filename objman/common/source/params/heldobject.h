// Held objects: built in memory of the library's heap, reached as KoraBytes, since that is all that
// the value area tells about them, and destroyed through the virtual destructor.
#ifndef NOMUTIL_PARAMS_HELDOBJECT_H
#define NOMUTIL_PARAMS_HELDOBJECT_H

#include "nomos/exception.h"
#include "nomos/heap.h"
#include "nomos/korastring.h"
#include "sys/params.h"

#include <cstddef>
#include <new>
#include <utility>

namespace nomutil::params {

inline constexpr std::size_t kItemOffset = offsetof(DskHandlerValue, item);
inline constexpr std::size_t kSelfOffset = offsetof(DskHandlerValue, self);

// Null without memory for the object. Throws what its constructor throws.
template <class Held, class... Arguments>
Held* newHeld(Arguments&&... arguments) {
  void* const memory = XHeap::library().allocate(sizeof(Held));
  if (memory == nullptr) return nullptr;
  try {
    return new (memory) Held(std::forward<Arguments>(arguments)...);
  } catch (...) {
    XHeap::library().release(memory);
    throw;
  }
}

// Destroys and releases; null is accepted.
void deleteHeld(KoraBytes* held);

}  // namespace nomutil::params

#endif  // NOMUTIL_PARAMS_HELDOBJECT_H
