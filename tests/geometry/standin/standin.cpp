// A library that has the names of GEOS's entries and notes how it is called, so that any answer of
// GEOS can be had. The compiler compares each entry with its declaration in GEOS's own header.
#include "geometry/standin/standin.h"

#include "geometry/entries.h"

#include <geos_c.h>

#include <cstring>
#include <iterator>
#include <tuple>
#include <type_traits>

extern "C" {
StandIn standIn;
}

namespace {

template <class T>
std::uint64_t noted(T value) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof value);
  if constexpr (std::is_same_v<T, std::size_t*>) *value = standIn.length;
  if constexpr (std::is_same_v<T, const char*>) std::strncpy(standIn.text, value, 599);
  return bits;
}

template <class Result, class... Arguments>
Result answer(const char* entry, std::tuple<Arguments...> arguments) {
  StandIn::Call& call = standIn.calls[standIn.count++ % std::size(standIn.calls)];
  call = {entry, {}};
  std::size_t place = 0;
  std::apply([&](auto... each) { ((call.arguments[place++] = noted(each)), ...); }, arguments);
  if constexpr (std::is_pointer_v<Result>) return reinterpret_cast<Result>(standIn.answer);
  if constexpr (std::is_integral_v<Result>) return static_cast<Result>(standIn.answer);
}

}  // namespace

using namespace nomutil::geometry;

#define ENTRY(convention, name, entry, result, arguments)                    \
  result entry(NOMUTIL_NAMED arguments) {                                    \
    return answer<result>(#entry, std::make_tuple(NOMUTIL_GIVEN arguments)); \
  }
NOMUTIL_GEOMETRY_ENTRIES(ENTRY)
