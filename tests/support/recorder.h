// While a Recorder lives, it keeps the log lines, assertions and message boxes that the code under
// test reports, in their order, instead of letting them out. One at a time.
#ifndef NOMUTIL_TESTS_RECORDER_H
#define NOMUTIL_TESTS_RECORDER_H

#include "nomos/testhooks.h"

#include <cstddef>
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
  std::string file;
  std::string module;
  std::string expression;
  std::string kind;
};

struct MessageBox {
  std::string text;
  std::string title;
};

class Recorder {
 public:
  Recorder() {
    nosSetLogSink(
        [](void* context, NosLogLevel level, const char* line) {
          self(context)._keep(self(context)._lines, LogLine{level, line});
        },
        this);
    nosSetAssertSink(
        [](void* context, const char* file, const char* module, const char* expression,
           const char* kind, unsigned) {
          self(context)._keep(self(context)._assertions, Assertion{file, module, expression, kind});
        },
        this);
    nosSetMessageBoxSink(
        [](void* context, const char* text, const char* title) {
          self(context)._keep(self(context)._boxes, MessageBox{text, title});
        },
        this);
  }
  ~Recorder() {
    nosSetLogSink(nullptr, nullptr);
    nosSetAssertSink(nullptr, nullptr);
    nosSetMessageBoxSink(nullptr, nullptr);
  }
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

  // Each hands over what came since the last call.
  std::vector<LogLine> takeLines() { return _take(_lines); }
  std::vector<Assertion> takeAssertions() { return _take(_assertions); }
  std::vector<MessageBox> takeBoxes() { return _take(_boxes); }

  // The expressions of the assertions since the last call, without repetitions in a row.
  std::string takeExpressions() {
    std::string all;
    std::string last;
    for (const Assertion& assertion : takeAssertions()) {
      if (assertion.expression != last) all += (all.empty() ? "" : "; ") + assertion.expression;
      last = assertion.expression;
    }
    return all;
  }

 private:
  static Recorder& self(void* context) { return *static_cast<Recorder*>(context); }

  template <class T>
  void _keep(std::vector<T>& list, T item) {
    const std::lock_guard<std::mutex> hold(_mutex);
    list.push_back(std::move(item));
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
