// What every family builds on: the export mark, the assertions, checked narrowing.
#ifndef NOMUTIL_SYS_BUILD_H
#define NOMUTIL_SYS_BUILD_H

#include "nomos/log.h"

#if defined(_WIN32)
#if defined(NOMUTIL_BUILDING)
#define NOMUTIL_API __declspec(dllexport)
#else
#define NOMUTIL_API __declspec(dllimport)
#endif
#else
#define NOMUTIL_API __attribute__((visibility("default")))
#endif

// Report a broken invariant, or a broken precondition, of the source `file` (its path without
// suffix) under the text `expression`. Execution goes on behind the report.
#define NOMUTIL_ASSERT(file, condition) NOMUTIL_ASSERT_TEXT(file, condition, #condition)
#define NOMUTIL_ASSERT_TEXT(file, condition, text)                       \
  do {                                                                   \
    if (!(condition)) {                                                  \
      ::nosAssertFail(file, "nomutil", text, ::kNosAssertion, __LINE__); \
    }                                                                    \
  } while (false)
#define NOMUTIL_REQUIRE(file, condition)                                          \
  do {                                                                            \
    if (!(condition)) {                                                           \
      ::nosAssertFail(file, "nomutil", #condition, ::kNosPrecondition, __LINE__); \
    }                                                                             \
  } while (false)

// value as a T1. A value that does not survive the narrowing is reported and narrowed modulo
// 2^bits all the same.
template <class T1, class T2>
constexpr T1 narrowChecked(T2 value) {
  const T1 narrowed = static_cast<T1>(value);
  if (value != static_cast<T2>(narrowed)) {
    ::nosAssertFail("include/sys/build", "nomutil",
                    "value == static_cast<T2>(static_cast<T1>(value))", ::kNosAssertion, __LINE__);
  }
  return narrowed;
}

#endif  // NOMUTIL_SYS_BUILD_H
