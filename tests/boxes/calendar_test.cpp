// The calendar's order and index, against a sorted list of (time, order of entry).

#include "boxes/boxesaccess.h"
#include "boxes/calendarindex.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <deque>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

using nomutil::boxes::BoxesAccess;
using nomutil::boxes::CalendarIndex;
using nomutil::boxes::changeLock;
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

// A calendar holds more far memos than the index has room for, then memos that come before them and
// that come and go. It stays in order, and walks among the near memos stay short, since far fences
// make room.
TEST(Calendar, OutgrowsItsIndex) {
  const OnlyThread only;
  const auto index = std::make_unique<CalendarIndex>();
  Memo end = BoxesAccess::make(MU_CalendarEnd, 0, 0);
  BoxManager::Calendar calendar;
  calendar.begin(&end);
  std::deque<Memo> memos;
  std::unordered_map<const Memo*, int> orders;
  int order = 0;
  std::mt19937_64 random(1);
  constexpr std::uint64_t kFar = 1 << 20;
  const auto enter = [&](Memo* memo, std::uint64_t due) NOMOS_REQUIRES(changeLock) {
    orders[memo] = order++;
    calendar.enter(memo, due, index.get());
  };
  const auto add = [&](std::uint64_t due) NOMOS_REQUIRES(changeLock) {
    enter(&memos.emplace_back(BoxesAccess::make(MU_Memo, 0, 0)), due);
  };
  for (int i = 0; i < 200'000; ++i) add(kFar + (random() >> 24));
  EXPECT_GT(index->fenceCount(), 65'536u);
  for (int i = 0; i < 60'000; ++i) add(random() % kFar);
  for (int i = 0; i < 60'000; ++i) {
    Memo* const memo = &memos[random() % memos.size()];
    calendar.remove(memo, index.get());
    enter(memo, random() % kFar);
  }
  // Runs that go, the latest first, empty leaves between full ones; then they come back.
  for (int i = 0; i < 200; ++i) {
    std::vector<Memo*> run;
    for (Memo* memo = &memos[random() % memos.size()]; memo != nullptr && run.size() < 200;) {
      run.push_back(memo);
      memo = BoxesAccess::link(*memo).prev;
      calendar.remove(run.back(), index.get());
    }
    for (Memo* const memo : run) enter(memo, BoxesAccess::time(*memo));
  }
  ASSERT_EQ(calendar.count(), memos.size());
  const Memo* last = nullptr;
  std::uint32_t fences = 0;
  int run = 0;
  int longestRun = 0;
  for (Memo* memo = calendar.head(); memo != &end; memo = BoxesAccess::link(*memo).next) {
    if (last != nullptr) {
      ASSERT_LT(std::pair(BoxesAccess::time(*last), orders[last]),
                std::pair(BoxesAccess::time(*memo), orders[memo]));
    }
    last = memo;
    run = BoxesAccess::isIndexed(*memo) ? 0 : run + 1;
    if (BoxesAccess::isIndexed(*memo)) ++fences;
    if (BoxesAccess::time(*memo) < kFar) longestRun = std::max(longestRun, run);
  }
  EXPECT_EQ(fences, index->fenceCount());
  EXPECT_LT(longestRun, 1'000);
  while (calendar.count() != 0) calendar.remove(calendar.head(), index.get());
  EXPECT_EQ(index->fenceCount(), 0u);
}

// A memo that is scheduled and cancelled again and again at one place walks far once: its fence
// stays near the place. And so with entries before each other, between memos that came in order.
TEST(Calendar, WalksFarOnce) {
  const OnlyThread only;
  constexpr std::uint64_t kCount = 50'000;
  struct Row {
    const char* name;
    std::uint64_t (*fill)(std::uint64_t i);
    std::uint64_t (*due)(std::uint64_t round);
    bool stays;
  };
  const Row rows[] = {
      {"ascending", [](auto i) { return 10 * i; }, [](auto) { return 5 * kCount + 5; }, false},
      {"descending", [](auto i) { return 10 * (kCount - i); }, [](auto) { return 5 * kCount + 5; },
       false},
      {"one time", [](auto i) { return i != kCount / 2 ? 1000 : std::uint64_t{2000}; },
       [](auto) { return std::uint64_t{1000}; }, false},
      {"latest first", [](auto i) { return 10 * i; },
       [](auto round) { return 10 * (kCount - 1 - 25 * round) - 5; }, true}};
  for (const Row& row : rows) {
    const auto index = std::make_unique<CalendarIndex>();
    Memo end = BoxesAccess::make(MU_CalendarEnd, 0, 0);
    BoxManager::Calendar calendar;
    calendar.begin(&end);
    std::deque<Memo> memos;
    const auto make = [&]() NOMOS_REQUIRES(changeLock) {
      return &memos.emplace_back(BoxesAccess::make(MU_Memo, 0, 0));
    };
    for (std::uint64_t i = 0; i < kCount; ++i) calendar.enter(make(), row.fill(i), index.get());
    for (std::uint64_t round = 0; round < 20; ++round) {
      Memo* const memo = make();
      calendar.enter(memo, row.due(round), index.get());
      if (row.stays) continue;
      calendar.remove(memo, index.get());
    }
    Memo* const memo = make();
    calendar.enter(memo, row.due(20), nullptr);
    int steps = 0;
    for (const Memo* at = memo; at != nullptr && !BoxesAccess::isIndexed(*at); ++steps) {
      at = BoxesAccess::link(*at).prev;
    }
    EXPECT_LE(steps, 150) << row.name;
    while (calendar.count() != 0) calendar.remove(calendar.head(), index.get());
    EXPECT_EQ(index->fenceCount(), 0u) << row.name;
  }
}

}  // namespace
