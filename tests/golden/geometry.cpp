// Every geometry function, called with random arguments: first without GEOS, then with the library
// that stands in for it and gives random answers. What comes out is made by nomutil alone.
#include "golden/geometry.h"

#include "geometry/entries.h"
#include "geometry/standin/standin.h"

#include "nomos/dlldesc.h"
#include "nomos/lasterror.h"
#include "nomos/testhooks.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <new>
#include <string>
#include <tuple>
#include <type_traits>

namespace {

Results* sink = nullptr;

void takeMessage(const char* text) {
  sink->add(std::string(text));
}

void takeLine(void*, NosLogLevel level, const char* line) {
  sink->add(static_cast<std::uint32_t>(level));
  sink->add(std::string(line));
}

// Random arguments by their types. What a call may write to lives here, and is a result too.
class Arguments {
 public:
  explicit Arguments(Numbers& numbers) : _numbers(numbers) {}

  template <class T>
  T make() {
    if constexpr (std::is_same_v<T, GeometryMessageHandler>) {
      return _numbers.below(4) == 0 ? nullptr : &takeMessage;
    } else if constexpr (std::is_same_v<T, const char*>) {
      // The functions keep texts of up to 254 characters in a place of their own.
      _text = _numbers.text("POINT(0 1)", 510);
      return _numbers.below(8) == 0 ? nullptr : _text.c_str();
    } else if constexpr (std::is_same_v<T, char*> || std::is_same_v<T, unsigned char*>) {
      return reinterpret_cast<T>(_buffer);
    } else if constexpr (std::is_pointer_v<T>) {
      return place<std::remove_pointer_t<T>>();
    } else if constexpr (std::is_floating_point_v<T>) {
      return static_cast<T>(_numbers.below(1'000)) / 8;
    } else {
      return static_cast<T>(_numbers.below(sizeof _buffer + 1));
    }
  }

  void addTo(Results& results) const {
    results.add(_buffer, sizeof _buffer);
    for (const Cell& cell : _cells) results.add(cell.bytes, sizeof cell.bytes);
  }

 private:
  struct Cell {
    alignas(double) unsigned char bytes[sizeof(double)] = {};
  };

  // A cell for a number; to everything else, which is only handed on, an address out of the blue.
  template <class T>
  T* place() {
    if constexpr (std::is_arithmetic_v<T> && !std::is_const_v<T>) {
      return new (_cells.emplace_back().bytes)
          T(static_cast<T>(_numbers.below(sizeof _buffer + 1)));
    } else {
      return reinterpret_cast<T*>(static_cast<std::uintptr_t>(_numbers.next()));
    }
  }

  Numbers& _numbers;
  std::string _text;
  char _buffer[48] = {};
  std::deque<Cell> _cells;
};

template <class Result, class... Types>
void call(Result (*function)(Types...), Numbers& numbers, Results& results) {
  Arguments arguments(numbers);
  // Braces keep the order of the arguments.
  std::tuple<Types...> values{arguments.make<Types>()...};
  const Result result = std::apply(function, values);
  if constexpr (std::is_pointer_v<Result>) {
    results.add(static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(result)));
  } else {
    results.add(static_cast<std::int64_t>(result));
  }
  arguments.addTo(results);
}

struct Row {
  void (*call)(Numbers&, Results&);
  enum { Number, Text, TextAlways } answer;
};

template <class T>
constexpr auto answerOf() {
  if constexpr (std::is_same_v<T, const char*>) return Row::TextAlways;
  if constexpr (std::is_same_v<T, char*> || std::is_same_v<T, unsigned char*>) return Row::Text;
  return Row::Number;
}

#define ROW(convention, name, entry, result, arguments) \
  {[](Numbers& numbers, Results& results) { call(&name, numbers, results); }, answerOf<result>()},
using namespace nomutil::geometry;
constexpr Row kRows[] = {NOMUTIL_GEOMETRY_ENTRIES(ROW)};
#undef ROW

// Sets what the next entry gives: a text, at times none, or a number around 0.
void prepare(StandIn& standIn, const Row& row, Numbers& numbers, std::string& text) {
  text = numbers.text("POLYGON ((0 0, 0 1, 1 1, 0 0))", 60);
  standIn.count = 0;
  standIn.length = text.size();
  standIn.answer = static_cast<std::int64_t>(numbers.below(7)) - 3;
  const bool isNull = row.answer == Row::Text && numbers.below(8) == 0;
  if (row.answer != Row::Number) {
    standIn.answer =
        isNull ? 0 : static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(text.data()));
  }
}

// GEOS's own messages, formatted by the functions that GEOS_Init hands to it.
void tell(const StandIn& standIn, Numbers& numbers) {
  using Handler = void (*)(const char*, ...);
  const std::string text = numbers.text("side location conflict at ", 400);
  for (int i = 0; i < 2; ++i) {
    const auto handler = reinterpret_cast<Handler>(standIn.calls[0].arguments[i]);
    handler("%s (%d)", text.c_str(), static_cast<int>(numbers.below(1'000)));
  }
}

}  // namespace

void geometry(Numbers& numbers, Results& results) {
  sink = &results;
  nosSetLogSink(takeLine, nullptr);
  nosDenyLibrary("geos_c");
  for (int i = 0; i < 20; ++i) {
    for (const Row& row : kRows) {
      row.call(numbers, results);
      results.add(nosGetLastError());
    }
  }
  nosDenyLibrary(nullptr);
  nosSetGlbIniFileName(NOMUTIL_STANDIN_CONFIGURATION);
  DllDesc library("geos_c");
  auto* const standIn = static_cast<StandIn*>(library.getMethod("standIn", true));
  std::string text;
  for (int i = 0; standIn != nullptr && i < 300; ++i) {
    for (const Row& row : kRows) {
      prepare(*standIn, row, numbers, text);
      row.call(numbers, results);
      for (unsigned j = 0; j < standIn->count; ++j) {
        results.add(std::string(standIn->calls[j].entry));
      }
      results.add(std::string(standIn->text));
      if (standIn->count == 1 && standIn->calls[0].entry == std::string("initGEOS_r")) {
        tell(*standIn, numbers);
      }
    }
  }
  nosSetGlbIniFileName(nullptr);
}
