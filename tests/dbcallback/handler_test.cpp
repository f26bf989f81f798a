// The handler of database utility callbacks: what comes through, against a second handler and by
// the laws of its throttling.

#include "nomos/testhooks.h"
#include "sys/dbcallback.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <utility>

namespace {

using Handler = DbCallbackHandler;

// What the callbacks got, and what they answer: the bits of `answers` in turn. A handler counts in
// reserved[0] how often it was handed over.
std::string calls;
std::uint64_t answers;
int item;

bool answer(const std::string& call) {
  calls += " " + call;
  const bool yes = answers & 1;
  answers = answers >> 1 | answers << 63;
  return yes;
}
bool answer(Handler* handler, const std::string& call) {
  ++handler->reserved[0];
  return answer(call);
}
std::string shown(const char* text) {
  return text == nullptr ? "(null)" : "(" + std::string(text) + ")";
}
std::string shown(const void* data) {
  return data == &item ? "(item)" : "(?)";
}
std::string shown(const KoraString<char>& text) {
  return {text.data(), text.length()};
}

Handler watched(std::uint64_t sayings = ~std::uint64_t{0}) {
  answers = sayings;
  calls.clear();
  Handler handler;
  handler.setErrorCB([](Handler* h, unsigned number) { return answer(h, std::to_string(number)); });
  handler.setOutputCB([](Handler* h, const char* text) { return answer(h, "out" + shown(text)); });
  handler.setOperationCB([](Handler* h, const char* operation, const char* fileName) {
    ++h->reserved[0];
    calls += " on" + shown(operation) + shown(fileName);
  });
  handler.setByteProgressCB(
      [](Handler* h, std::uint64_t bytes) { return answer(h, "b" + std::to_string(bytes)); });
  handler.setPercentProgressCB(
      [](Handler* h, unsigned percent) { return answer(h, "p" + std::to_string(percent)); });
  handler.setHeartbeatCB([](Handler* h) { return answer(h, "beat"); });
  handler.setRecoveryCB([](Handler* h, void* data) { return answer(h, "recover" + shown(data)); });
  handler.setReorgCB([](Handler* h, void* data) { return answer(h, "reorg" + shown(data)); });
  handler.setReplayCB([](Handler* h, void* data) { return answer(h, "replay" + shown(data)); });
  handler.setStatusCB([](Handler* h, DbStatusField field, const char* text) {
    return answer(h, std::to_string(field) + shown(text));
  });
  return handler;
}

// The same throttling, written a second time.
struct Reference {
  std::uint64_t toDo, byteStep, lastBytes = 0;
  std::uint32_t percentStep, lastPercent = 0, beats = 0;

  bool update(std::uint64_t n) {
    const double exact =
        toDo == 0 ? (n == 0 ? 0 : 100) : static_cast<double>(n) * 100.0 / static_cast<double>(toDo);
    const auto percent = static_cast<std::uint32_t>(std::min(exact, 100.0));
    const std::uint32_t advance = percent - lastPercent;
    bool goesOn = true;
    if (percent > 0 && advance != 0 && (percent == 100 || advance > percentStep)) {
      lastPercent = percent;
      goesOn = answer("p" + std::to_string(percent));
    }
    const std::uint64_t byteAdvance = n - lastBytes;
    if (goesOn && n > 0 && byteAdvance != 0 && (n == toDo || byteAdvance > byteStep)) {
      lastBytes = n;
      goesOn = answer("b" + std::to_string(n));
    }
    if (!goesOn || ++beats <= 50) return goesOn;
    beats = 0;
    return answer("beat");
  }
};

// In every other round it grows to its end within one operation, and nobody says stop: then 100 %
// comes once, 0 % never, and the heart beats with each 51st call.
TEST(UpdateProgress, AgreesWithASecondHandlerAndKeepsItsLawsWhileItGrows) {
  std::mt19937_64 random(20240105);
  const auto anyOf = [&random](std::initializer_list<std::uint64_t> list) {
    return list.begin()[random() % list.size()];
  };
  const std::uint64_t largest = ~std::uint64_t{0};
  for (int round = 0; round < 2000 && !testing::Test::HasFailure(); ++round) {
    const bool grows = round % 2 != 0;
    std::uint64_t mine =
        grows ? largest : anyOf({largest, largest << 1, largest ^ 0x100, random()});
    Handler handler = watched();
    const std::uint64_t toDo =
        grows ? 1 + random() % 5000
              : anyOf({0, 1, 99, 100, 101, 1000, largest / 2, largest - 1, largest});
    handler.startOperation("a", "b", toDo);
    handler.byteStep = static_cast<std::uint32_t>(anyOf({0, 1, 5, 100, 0xFFFFFFFF}));
    handler.percentStep = static_cast<std::uint32_t>(anyOf({0, 1, 5, 100, 0xFFFFFFFF}));
    Reference reference{
        .toDo = toDo, .byteStep = handler.byteStep, .percentStep = handler.percentStep};
    answers = mine;
    std::string all;
    std::uint64_t bytes = 0;
    for (int i = 0; i < 120; ++i) {
      if (grows) {
        bytes += random() % (toDo / 40 + 2);
        if (i >= 118) bytes = std::max(bytes, toDo);
      } else {
        const std::uint64_t most = random() % 8 == 0 ? largest : toDo;
        bytes = random() % 5 == 0 ? most : most == 0 ? 0 : random() % most;
      }
      calls.clear();
      const bool expected = reference.update(bytes);
      const std::string expectedCalls = std::exchange(calls, "");
      std::swap(answers, mine);
      EXPECT_EQ(handler.updateProgress(bytes), expected) << bytes << " of " << toDo;
      std::swap(answers, mine);
      EXPECT_EQ(calls, expectedCalls) << bytes << " of " << toDo;
      EXPECT_EQ(handler.bytesDone, bytes);
      all += calls + ";";
    }
    if (!grows) continue;
    EXPECT_EQ(all.find(" p100"), all.rfind(" p100"));
    EXPECT_NE(all.find(" p100"), all.npos);
    EXPECT_EQ(all.find(" p0"), all.npos);
    const std::string silent = all.substr(0, all.find(" beat"));
    EXPECT_EQ(std::count(silent.begin(), silent.end(), ';'), 50);
  }
}

TEST(UpdateProgress, ReportsWhatExceedsAStepAndTheEnd) {
  Handler handler = watched();
  handler.startOperation("a", "b", 100);
  handler.byteStep = handler.percentStep = 5;
  calls.clear();
  for (std::uint64_t n = 0; n <= 106; ++n) handler.updateProgress(n);
  EXPECT_EQ(calls,
            " p6 b6 p12 b12 p18 b18 p24 b24 p30 b30 p36 b36 p42 b42 p48 b48 beat p54 b54 p60 b60"
            " p66 b66 p72 b72 p78 b78 p84 b84 p90 b90 p96 b96 p100 b100 beat b106");
  EXPECT_EQ(handler.percentDone, 100u);
}

TEST(DbCallbackHandler, StartsAnOperationButNotTheHeartbeatCount) {
  Handler handler = watched(1);
  handler.bytesDone = handler.lastBytesReported = 7;
  handler.percentDone = handler.lastPercentReported = handler.heartbeatCount = 50;
  handler.startOperation("backup", nullptr, 10);
  EXPECT_EQ(calls, " on(backup)(null) beat");
  EXPECT_EQ(shown(handler.operation) + shown(handler.fileName), "backup");
  EXPECT_EQ(handler.bytesToDo, 10u);
  EXPECT_EQ(handler.bytesDone + handler.lastBytesReported + handler.percentDone, 0u);
  EXPECT_EQ(handler.lastPercentReported, 0u);
  EXPECT_FALSE(handler.updateProgress(0));
  EXPECT_EQ(calls, " on(backup)(null) beat beat");
  // Its own operation goes on with another file.
  handler.startOperation(handler.operation.data(), "f.dat", 10);
  EXPECT_EQ(shown(handler.operation) + shown(handler.fileName), "backupf.dat");
}

TEST(DbCallbackHandler, PassesOnAndAnswersForItsCaller) {
  const auto results = [](Handler handler) {
    std::string all;
    for (const bool result :
         {handler.output("t"), handler.error(1002), handler.recoveryCB(&item),
          handler.replayCB(&item), handler.reorgCB(false, &item), handler.reorgCB(true, &item),
          handler.statusCB(false, kDbStatusPhase, "s"),
          handler.statusCB(true, kDbStatusResult, "r")})
      all += result ? '1' : '0';
    return all + "/" + std::to_string(handler.reserved[0]);
  };
  EXPECT_EQ(results(Handler()), "11111010/0");
  // The heartbeats, second and fourth, say the contrary.
  EXPECT_EQ(results(watched(~std::uint64_t{10})), "11111010/10");
  EXPECT_EQ(results(watched(10)), "00000000/10");
  EXPECT_EQ(calls,
            " out(t) beat 1002 beat recover(item) replay(item) reorg(item) reorg(item) 2(s) 3(r)");
}

TEST(DbCallbackHandler, RendersTextsOfAnyLength) {
  EXPECT_EQ(shown(Handler::operationString("backup", "f.dat")), "operation=backup;fileName=f.dat");
  EXPECT_EQ(shown(Handler::operationString(nullptr, nullptr)), "operation=;fileName=");
  const std::string prefix(200, 'x');
  EXPECT_EQ(shown(Handler::byteProgressString(prefix.c_str(), 0, ~std::uint64_t{0})),
            prefix + ";bytesDone=0;bytesToDo=18446744073709551615");
  nosFailAllocation(2);
  EXPECT_EQ(Handler::operationString(prefix.c_str(), prefix.c_str()).length(), 0u);
  nosFailAllocation(0);
}

TEST(DbCallbackHandler, IsCopiedWholeButForATextWithoutMemory) {
  // All that stands behind the texts.
  const auto fieldsOf = [](Handler& handler) {
    return reinterpret_cast<char*>(&handler) + 2 * sizeof handler.operation;
  };
  const auto difference = [fieldsOf](Handler& left, Handler& right) {
    return std::memcmp(fieldsOf(left), fieldsOf(right), sizeof left - 2 * sizeof left.operation);
  };
  Handler handler = watched();
  handler.startOperation(std::string(100, 'o').c_str(), "f", 11);
  std::memset(fieldsOf(handler), 0x5A, 3 * 8 + 8 * 4);
  Handler copy(handler);
  EXPECT_EQ(shown(copy.operation) + shown(copy.fileName), std::string(100, 'o') + "f");
  EXPECT_EQ(difference(copy, handler), 0);
  nosFailAllocation(1);
  Handler poor(handler);
  nosFailAllocation(0);
  EXPECT_EQ(shown(poor.operation) + shown(poor.fileName), "f");
  EXPECT_EQ(difference(poor, handler), 0);
}

}  // namespace
