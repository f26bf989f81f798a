// Objects of the family in the library's heap.
#ifndef NOMUTIL_BOXES_MEMORY_H
#define NOMUTIL_BOXES_MEMORY_H

#include "nomos/heap.h"

#include <new>
#include <utility>

namespace nomutil::boxes {

// A new object, which destroy takes back; null when memory runs out.
template <class T, class... Arguments>
T* create(Arguments&&... arguments) {
  void* const memory = XHeap::library().allocate(sizeof(T));
  return memory != nullptr ? new (memory) T(std::forward<Arguments>(arguments)...) : nullptr;
}

// Null is accepted.
template <class T>
void destroy(T* object) {
  if (object == nullptr) return;
  object->~T();
  XHeap::library().release(object);
}

}  // namespace nomutil::boxes

#endif  // NOMUTIL_BOXES_MEMORY_H
