// A notation for operations on boxes, for tables of tests, and a clock that stands still in
// between.
//
//   a! a!5        dispatch, 5 times
//   a=7 a=7s      update to priority 7; to be received separately
//   a=7! a=7s!    update and dispatch
//   a=7!5         update and dispatch 5 times
//   a~50 a-       schedule in 50 ms; cancel
//   t>50 t>50p3   start for 50 ms; with priority 3
//   t.            stop
//   a? #          say the state, "box:5"; the signals of the box, "#5"
//   <             receive: "a7/2" is memo a of priority 7 with 2 signals left, "-" is nothing
//   +50 ^50       let 50 ms pass; all at once, as when the machine stalls
//
// a to d are memos and t to w timers of a box, p to s memos of a box over a port, with 1 byte:
//
//   p; p* <<      dispatch if scheduled; mark as received; receive: "p1" is memo p with 1 byte
//   p^50:7        reschedule in 50 ms with 7 bytes, which says "done" or "not"
//   px py         deallocate; if scheduled or idle, which says where it was and whether it "kept"
//   pn pq         allocate; let p be the memo q as well
#ifndef NOMUTIL_TESTS_BOXSCRIPT_H
#define NOMUTIL_TESTS_BOXSCRIPT_H

#include "nomos/testhooks.h"
#include "recorder.h"
#include "sys/boxes.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <atomic>
#include <cctype>
#include <cstdint>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace nomtest {

// Lives longer than the managers that it drives.
struct DrivenClock {
  DrivenClock() {
    now = kStart;
    nosSetRelativeClock([]() noexcept { return now.load(); });
  }
  ~DrivenClock() { nosSetRelativeClock(nullptr); }

  static constexpr std::int64_t kStart = 0xFFFFFFFF - 12'345;  // 2^32 passes in some of the tests
  static inline std::atomic<std::int64_t> now;
};

// Expects that at its end as many blocks are allocated as at its beginning.
struct NoLeak {
  ~NoLeak() { EXPECT_EQ(nosAllocatedBlocks(), blocks); }
  std::uint64_t blocks = nosAllocatedBlocks();
};

struct Manager : BoxManager {
  explicit Manager(const char* name, bool timers = true) : BoxManager(name) {
    EXPECT_EQ(initialise(timers), 0);
  }
};

inline std::string stateOf(Memo* memo) {
  static const char* const kNames[] = {"none", "free", "idle", "calendar", "wheel", "box", "port"};
  MemoLocus locus{};
  unsigned remaining = 99;
  memo->getState(locus, remaining);
  return kNames[locus] + (":" + std::to_string(remaining));
}

// The assertions since the last call, each by its expression if all else is as it should be.
inline std::string reported(Recorder& recorder, const char* file = "objman/common/source/boxes",
                            const char* kind = "Precondition contract violated") {
  std::string all;
  for (const Assertion& it : recorder.takeAssertions()) {
    const bool isExpected = it.file == file && it.kind == kind && it.module == "nomutil";
    all += (all.empty() ? "" : "; ") + (isExpected ? "" : it.file + it.module + it.kind + ": ") +
           it.expression;
  }
  return all;
}

// What each word says, with blanks between; words that say nothing leave no trace.
template <class Say>
std::string sayAll(const std::string& text, Say say) {
  std::istringstream words(text);
  std::string all;
  for (std::string word; words >> word;) {
    const std::string said = say(word);
    all += (all.empty() || said.empty() ? "" : " ") + said;
  }
  return all;
}

// Runs the rows of a table, "script = what it says |".
template <class Run>
void expectScripts(const std::string& table, Run run) {
  std::istringstream rows(table);
  for (std::string row; std::getline(rows, row, '|');) {
    const std::size_t middle = row.find(" =");
    const std::string said = sayAll(row.substr(middle + 2), [](const auto& word) { return word; });
    EXPECT_EQ(run(row.substr(0, middle)), said) << row;
  }
}

class Script {
 public:
  explicit Script(BoxManager& manager) : _manager(manager) {
    manager.boxAllocate(box, false);
    manager.boxAllocate(_barrierBox, false);
    manager.boxIOCPAllocate(portBox, port.handle());
    _barrierBox->memoAllocate(_barrier, 1, 0, false);
    for (const char letter : {'a', 'b', 'c', 'd'}) {
      box->memoAllocate(memo(letter), _value(letter, 0), 0, false);
    }
    for (const char letter : {'t', 'u', 'v', 'w'}) box->timerAllocate(memo(letter));
    run("pn qn rn sn");
  }
  ~Script() {
    for (Box* it : {box, _barrierBox}) _manager.boxDeallocate(it);
    _manager.boxIOCPDeallocate(portBox);
  }

  // The memo operations go through a box, which need not be that of the memos.
  std::string run(const std::string& script, BoxCommon* through = nullptr) {
    return sayAll(script, [&](const std::string& word) { return _say(word, through); });
  }
  Memo*& memo(char letter) { return _memos[letter - 'a']; }

  CompletionPort port;
  Box* box = nullptr;
  BoxIOCP* portBox = nullptr;

  std::string receivePacket(int timeout) {
    NomULong bytes = 99;
    std::uint64_t key = 98;
    OVERLAPPED* record = nullptr;
    if (portBox->receive(bytes, key, record, timeout) == 0) {
      return bytes == 99 && key == 98 && record == nullptr ? "-" : "nothing, but outputs";
    }
    const auto letter = static_cast<char>(key >> 40);
    EXPECT_EQ(reinterpret_cast<Memo**>(record), &memo(letter));
    return letter + std::to_string(bytes);
  }

 private:
  std::string _say(const std::string& word, BoxCommon* through) {
    std::string op;
    std::vector<unsigned> numbers;
    for (std::size_t i = 0, length = 1; i < word.size(); i += length, length = 1) {
      const bool isNumber = std::isdigit(word[i]) != 0;
      if (isNumber) numbers.push_back(static_cast<unsigned>(std::stoul(word.substr(i), &length)));
      if (!isNumber) op += word[i];
    }
    const bool hasTwo = numbers.size() == 2;
    numbers.resize(2);
    const auto [n, m] = std::pair(numbers[0], numbers[1]);
    if (op == "<") return _receive();
    if (op == "<<") return receivePacket(0);
    if (op == "#") return "#" + std::to_string(box->signalCount());
    if (op == "+") return _pass(n);
    if (op == "^") return DrivenClock::now += n, _pass(0);
    const char letter = op[0];
    const bool isPort = letter >= 'p' && letter <= 's', isNumbered = op.size() < word.size();
    BoxCommon& by = through != nullptr ? *through
                    : isPort           ? *portBox
                                       : static_cast<BoxCommon&>(*box);
    Memo*& it = memo(letter);
    op.erase(0, 1);
    const bool isSeparate = op == "=s" || op == "=s!";
    if (op == "?") return stateOf(it);
    if (op == "!" && isNumbered) return by.memoDispatchMultiple(it, n), "";
    if (op == "!") return by.memoDispatch(it), "";
    if (op == "~") return by.memoSchedule(it, n), "";
    if (op == "-") return by.memoCancel(it), "";
    if (op == ".") return by.timerStop(it), "";
    if (op[0] == '>') return by.timerStart(it, n, _value(letter, m), m), "";
    if (op == "=!" && hasTwo) {
      return by.memoUpdateDispatchMultiple(it, _value(letter, n), n, m), "";
    }
    if (op == "=!" || op == "=s!") {
      return by.memoUpdateDispatch(it, _value(letter, n), n, isSeparate), "";
    }
    if (op[0] == '=') return by.memoUpdate(it, _value(letter, n), n, isSeparate), "";
    return _sayOfPort(it, letter, op, n, m);
  }

  std::string _sayOfPort(Memo*& it, char letter, const std::string& op, unsigned n, unsigned m) {
    const auto key = std::uint64_t{1} * static_cast<unsigned char>(letter) << 40;
    const auto record = reinterpret_cast<OVERLAPPED*>(&it);
    if (op == ";") return portBox->memoDispatchIfScheduled(it), "";
    if (op == "*") return portBox->markMemoReceived(it), "";
    if (op == "x") return portBox->memoDeallocate(it), "";
    if (op == "n") return std::string(portBox->memoAllocate(it, 1, key, record) != 0, '?');
    if (op == "q") return it = memo('q'), "";
    if (op == "^:") return portBox->memoRescheduleUpdated(it, n, m, key, record) ? "not" : "done";
    if (op != "y") return "what is " + op + "?";
    MemoLocus locus = ML_None;
    const bool isKept = portBox->memoDeallocateIfScheduledOrIdle(it, locus);
    return std::to_string(locus) + (isKept ? "kept" : "") + (it == nullptr ? "null" : "");
  }

  std::string _receive() {
    unsigned value = 99, left = 99;
    box->receive(0, value, left);
    if (value == 0 && left == 0) return "-";
    return static_cast<char>('a' + value / 1000 - 1) + std::to_string(value % 1000) + "/" +
           std::to_string(left);
  }

  // Stops where the wheel has something to do of its own, every 3,333 and every 5,000 ms.
  std::string _pass(unsigned millis) {
    const std::int64_t end = DrivenClock::now + millis;
    do {
      const std::int64_t age = DrivenClock::now - DrivenClock::kStart;
      const std::int64_t stop = std::min(age / 3333 * 3333 + 3333, age / 5000 * 5000 + 5000);
      DrivenClock::now = std::min(end, DrivenClock::kStart + stop);
      _letThreadWork();
    } while (DrivenClock::now != end);
    return "";
  }

  // Until it has done all that is due now.
  void _letThreadWork() {
    unsigned value, left;
    _barrier->schedule(0);
    _barrierBox->receive(kNosInfinite, value, left);
    _barrier->cancel();  // takes the change lock, under which the thread does its work
  }

  static unsigned _value(char letter, unsigned priority) {
    return 1000 * static_cast<unsigned>(letter - 'a' + 1) + priority;
  }

  BoxManager& _manager;
  Box* _barrierBox = nullptr;
  Memo* _barrier = nullptr;
  Memo* _memos[26] = {};
};

}  // namespace nomtest

#endif  // NOMUTIL_TESTS_BOXSCRIPT_H
