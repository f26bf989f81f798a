// The order of a box's queue against the plain walk from its head.

#include "boxes/memoqueue.h"
#include "boxes/boxesaccess.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <deque>
#include <list>
#include <random>
#include <string>
#include <vector>

namespace {

using nomutil::boxes::BoxesAccess;
using nomutil::boxes::MemoQueue;
using nomutil::boxes::OnlyThread;
using nomutil::boxes::QueueMarks;

// A queue of memos made here; values number them.
struct Queue {
  Memo* head = nullptr;
  Memo* tail = nullptr;
  std::uint32_t count = 0;
  QueueMarks marks;
  std::deque<Memo> memos;

  MemoQueue view() { return {head, tail, count, marks}; }

  Memo* add(std::uint32_t priority) NOMOS_REQUIRES(nomutil::boxes::changeLock) {
    const auto value = static_cast<std::uint32_t>(memos.size());
    Memo* const memo = &memos.emplace_back(BoxesAccess::make(MU_Memo, priority, value));
    view().enter(memo);
    return memo;
  }

  // The memos from head to tail; checks the links back.
  std::vector<Memo*> list() NOMOS_REQUIRES(nomutil::boxes::changeLock) {
    std::vector<Memo*> all;
    for (Memo* memo = head; memo != nullptr; memo = BoxesAccess::link(*memo).next) {
      EXPECT_EQ(BoxesAccess::link(*memo).prev, all.empty() ? nullptr : all.back());
      all.push_back(memo);
    }
    EXPECT_EQ(tail, all.empty() ? nullptr : all.back());
    EXPECT_EQ(count, all.size());
    return all;
  }
};

// The rule as a walk over the whole list.
void enterPlainly(std::list<Memo*>& list, Memo* memo, std::uint32_t priority)
    NOMOS_REQUIRES(nomutil::boxes::changeLock) {
  if (list.empty() || priority == 0) return list.push_back(memo);
  if (priority > BoxesAccess::priority(*list.front())) return list.push_front(memo);
  auto at = list.begin();
  for (;;) {
    const auto next = std::next(at);
    if (next == list.end()) break;
    at = next;
    if (priority > BoxesAccess::priority(**next)) break;
  }
  list.insert(std::next(at), memo);
}

TEST(MemoQueue, PlacesAMemoBehindTheFirstLowerOne) {
  const std::pair<std::vector<std::uint32_t>, std::string> rows[] = {
      {{10, 5, 7}, "10 5 7"},      {{10, 10, 0, 10}, "10 10 0 10"},
      {{10, 5, 3, 7}, "10 5 7 3"}, {{10, 0, 5}, "10 0 5"},
      {{10, 7}, "10 7"},           {{0, 0, 1}, "1 0 0"},
      {{5, 9, 5, 9}, "9 5 9 5"}};
  const OnlyThread only;
  for (const auto& [priorities, expected] : rows) {
    Queue queue;
    for (const std::uint32_t priority : priorities) queue.add(priority);
    std::string order;
    for (const Memo* memo : queue.list()) {
      order += (order.empty() ? "" : " ") + std::to_string(BoxesAccess::priority(*memo));
    }
    EXPECT_EQ(order, expected);
  }
}

TEST(MemoQueue, AgreesWithThePlainWalk) {
  const OnlyThread only;
  for (const std::uint32_t seed : {1u, 2u, 3u, 4u, 5u, 6u}) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const std::uint32_t highest = seed < 4 ? 15 : seed - 3;  // few priorities make long walks
    Queue queue;
    std::list<Memo*> plain;
    for (int step = 0; step < 20'000; ++step) {
      const bool grows = random() % 100 < (step / 500 % 2 == 0 ? 70u : 30u);
      if (grows || plain.empty()) {
        Memo* const memo = queue.add(static_cast<std::uint32_t>(random() % (highest + 1)));
        enterPlainly(plain, memo, BoxesAccess::priority(*memo));
      } else {
        // Mostly the head, as a receiver takes it; else any, as a cancellation does.
        const auto which = random() % 3 != 0 ? 0 : random() % plain.size();
        const auto at = std::next(plain.begin(), static_cast<std::ptrdiff_t>(which));
        queue.view().remove(*at);
        plain.erase(at);
      }
      if (step % 16 == 0) {
        ASSERT_TRUE(std::ranges::equal(queue.list(), plain)) << "step " << step;
      }
    }
  }
}

}  // namespace
