// What every family builds on: the export mark, the assertions, checked narrowing.
//
// An assertion that fails is reported (nomos/log.h) and execution goes on, so that the code behind
// it is safe all the same: narrowChecked<std::uint16_t>(70000) reports and gives 4464.
#ifndef NOMUTIL_SYS_BUILD_H
#define NOMUTIL_SYS_BUILD_H

#include "nomos/log.h"

// Marks what the library exports; all else is hidden. NOMUTIL_BUILDING is defined for its own
// sources and for programs that link their objects, and nowhere else.
#if defined(_WIN32)
#if defined(NOMUTIL_BUILDING)
#define NOMUTIL_API __declspec(dllexport)
#else
#define NOMUTIL_API __declspec(dllimport)
#endif
#else
#define NOMUTIL_API __attribute__((visibility("default")))
#endif

// Each evaluates its condition once, in every build. ASSERT reports a broken invariant, REQUIRE a
// precondition that the caller broke. file names the source by its path without suffix, as in
// "objman/common/source/boxes"; the report shows the condition as it is written here, or the text
// of the forms that take one.
#define NOMUTIL_ASSERT(file, condition) NOMUTIL_ASSERT_TEXT(file, condition, #condition)
#define NOMUTIL_ASSERT_TEXT(file, condition, text)                       \
  do {                                                                   \
    if (!(condition)) {                                                  \
      ::nosAssertFail(file, "nomutil", text, ::kNosAssertion, __LINE__); \
    }                                                                    \
  } while (false)
#define NOMUTIL_REQUIRE(file, condition) NOMUTIL_REQUIRE_TEXT(file, condition, #condition)
#define NOMUTIL_REQUIRE_TEXT(file, condition, text)                         \
  do {                                                                      \
    if (!(condition)) {                                                     \
      ::nosAssertFail(file, "nomutil", text, ::kNosPrecondition, __LINE__); \
    }                                                                       \
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
