// While a Recorder lives, it keeps the log lines, assertions and message boxes that the code under
// test reports, in their order, instead of letting them out. One at a time.
#ifndef NOMUTIL_TESTS_RECORDER_H
#define NOMUTIL_TESTS_RECORDER_H

#include "nomos/testhooks.h"

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace nomtest {

struct LogLine {
  NosLogLevel level;
  std::string text;
};
struct Assertion {
  std::string file, module, expression, kind;
};
struct MessageBox {
  std::string text, title;
};

class Recorder {
 public:
  Recorder() {
    nosSetLogSink(onLine, this);
    nosSetAssertSink(onAssertion, this);
    nosSetMessageBoxSink(onBox, this);
  }
  ~Recorder() {
    nosSetLogSink(nullptr, nullptr);
    nosSetAssertSink(nullptr, nullptr);
    nosSetMessageBoxSink(nullptr, nullptr);
  }

  // Each hands over what came since the last call.
  std::vector<LogLine> takeLines() { return _take(_lines); }
  std::vector<Assertion> takeAssertions() { return _take(_assertions); }
  std::vector<MessageBox> takeBoxes() { return _take(_boxes); }

  // The expressions of the assertions since the last call, without repetitions in a row.
  std::string takeExpressions() {
    std::string all, last;
    for (const auto& [file, module, expression, kind] : takeAssertions()) {
      if (expression != last) all += (all.empty() ? "" : "; ") + expression;
      last = expression;
    }
    return all;
  }

 private:
  static void onLine(void* to, NosLogLevel level, const char* line) {
    keep(to, &Recorder::_lines, {level, line});
  }
  static void onAssertion(void* to, const char* file, const char* module, const char* expression,
                          const char* kind, unsigned) {
    keep(to, &Recorder::_assertions, {file, module, expression, kind});
  }
  static void onBox(void* to, const char* text, const char* title) {
    keep(to, &Recorder::_boxes, {text, title});
  }

  template <class T>
  static void keep(void* to, std::vector<T> Recorder::*list, T item) {
    auto& recorder = *static_cast<Recorder*>(to);
    const std::lock_guard<std::mutex> hold(recorder._mutex);
    (recorder.*list).push_back(std::move(item));
  }
  template <class T>
  std::vector<T> _take(std::vector<T>& list) {
    const std::lock_guard<std::mutex> hold(_mutex);
    return std::exchange(list, {});
  }

  std::mutex _mutex;
  std::vector<LogLine> _lines;
  std::vector<Assertion> _assertions;
  std::vector<MessageBox> _boxes;
};

}  // namespace nomtest

#endif  // NOMUTIL_TESTS_RECORDER_H
