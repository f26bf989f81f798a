// What the tests and the library that stands in for GEOS share: the exported variable standIn.
#ifndef NOMUTIL_TESTS_GEOMETRY_STANDIN_H
#define NOMUTIL_TESTS_GEOMETRY_STANDIN_H

#include <cstddef>
#include <cstdint>

struct StandIn {
  // What every entry gives, as a number or as a pointer, and what an image's length becomes.
  std::int64_t answer;
  std::size_t length;

  // The calls since count was 0, the oldest first: which entry, with the bits of which arguments.
  unsigned count;
  struct Call {
    const char* entry;
    std::uint64_t arguments[8];
  } calls[8];

  // The last argument that was a text.
  char text[600];
};

#endif  // NOMUTIL_TESTS_GEOMETRY_STANDIN_H
