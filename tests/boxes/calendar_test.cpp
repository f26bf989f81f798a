// The calendar's order and index, against a sorted list of (time, order of entry).

#include "boxes/boxesaccess.h"
#include "boxes/calendarindex.h"

#include <gtest/gtest.h>
#include <deque>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using nomutil::boxes::BoxesAccess;
using nomutil::boxes::CalendarIndex;
using nomutil::boxes::OnlyThread;

struct Entry {
  std::uint64_t time;
  int order;  // of entry
  Memo* memo;
  bool operator<(const Entry& other) const {
    return std::pair(time, order) < std::pair(other.time, other.order);
  }
};

// How times are drawn: one millisecond, a few, close together, far apart, ever later, both.
std::uint64_t draw(int kind, std::mt19937_64& random, int step) {
  switch (kind) {
    case 0:
      return 7;
    case 1:
      return random() % 5;
    case 2:
      return random() % 3000;
    case 3:
      return random() % 0xFFFFFFFF;
    case 4:
      return static_cast<std::uint64_t>(step) / 3;
    default:
      return random() % 2 == 0 ? random() % 100 : 1'000'000 + random() % 4'000'000'000;
  }
}

TEST(Calendar, KeepsTimesAndEntriesInOrderWithAndWithoutAnIndex) {
  const OnlyThread only;
  for (const bool indexed : {true, false}) {
    for (int kind = 0; kind < 6; ++kind) {
      SCOPED_TRACE("kind " + std::to_string(kind) + (indexed ? " indexed" : " plain"));
      std::mt19937_64 random(static_cast<std::uint64_t>(kind));
      const auto index = indexed ? std::make_unique<CalendarIndex>() : nullptr;
      Memo end = BoxesAccess::make(MU_CalendarEnd, 0, 0);
      BoxManager::Calendar calendar;
      calendar.begin(&end);
      std::deque<Memo> memos;
      std::vector<Memo*> idle;
      std::set<Entry> model;
      const int steps = indexed ? 40'000 : 2'000;
      for (int step = 0; step < steps; ++step) {
        const bool grows = random() % 100 < (step < steps / 2 ? 90u : 20u);
        if (grows || model.empty()) {
          if (idle.empty()) idle.push_back(&memos.emplace_back(BoxesAccess::make(MU_Memo, 0, 0)));
          Memo* const memo = idle.back();
          idle.pop_back();
          const std::uint64_t due = draw(kind, random, step);
          const bool isFirst = calendar.enter(memo, due, index.get());
          model.insert({due, step, memo});
          ASSERT_EQ(isFirst, model.begin()->memo == memo);
        } else {
          // The first, as when it comes due, or one near a random time, as a cancellation; at times
          // with many before it, latest first, which empties leaves between full ones.
          auto at = model.begin();
          if (random() % 2 == 0) at = model.lower_bound({draw(kind, random, step), 0, nullptr});
          if (at == model.end()) at = model.begin();
          for (int run = random() % 100 == 0 ? 200 : 1; run > 0 && !model.empty(); --run) {
            calendar.remove(at->memo, index.get());
            idle.push_back(at->memo);
            at = model.erase(at);
            if (at != model.begin()) --at;
          }
        }
        ASSERT_EQ(calendar.count(), model.size());
        ASSERT_EQ(calendar.head(), model.empty() ? &end : model.begin()->memo);
        if (step % 1000 != 999 && step != steps - 1) continue;
        const Memo* memo = calendar.head();
        for (const Entry& entry : model) {
          ASSERT_EQ(memo, entry.memo);
          ASSERT_EQ(BoxesAccess::time(*memo), entry.time);
          const Memo* const next = BoxesAccess::link(*memo).next;
          ASSERT_EQ(BoxesAccess::link(*next).prev, memo);
          memo = next;
        }
        ASSERT_EQ(memo, &end);
      }
      while (calendar.count() != 0) calendar.remove(calendar.head(), index.get());
      EXPECT_EQ(calendar.due(), 0x7FFFFFFFFFFFFFFF);
      EXPECT_EQ(indexed ? index->fenceCount() : 0, 0u);
    }
  }
}

// A calendar of 200,000 memos holds more than the index has room for; it must still be in order,
// and the index full.
TEST(Calendar, OutgrowsItsIndex) {
  const OnlyThread only;
  const auto index = std::make_unique<CalendarIndex>();
  Memo end = BoxesAccess::make(MU_CalendarEnd, 0, 0);
  BoxManager::Calendar calendar;
  calendar.begin(&end);
  std::deque<Memo> memos;
  std::mt19937_64 random(1);
  for (int i = 0; i < 200'000; ++i) {
    calendar.enter(&memos.emplace_back(BoxesAccess::make(MU_Memo, 0, 0)), random() >> 24,
                   index.get());
  }
  EXPECT_GT(index->fenceCount(), 8'000u);
  std::uint64_t last = 0;
  for (; calendar.count() != 0; calendar.remove(calendar.head(), index.get())) {
    ASSERT_GE(BoxesAccess::time(*calendar.head()), last);
    last = BoxesAccess::time(*calendar.head());
  }
  EXPECT_EQ(index->fenceCount(), 0u);
}

}  // namespace
