// Boxes over a completion port, and what a box without operations of its own answers.

#include "boxes/boxesaccess.h"
#include "boxes/boxscript.h"

#include "nomos/exception.h"

#include <thread>
#include <utility>

namespace {

using namespace nomtest;

// - A posted memo can be scheduled, not cancelled, changed or freed.
// - Freed memos come back last in, first out, with a packet of their own.
constexpr const char* kPortTable = R"(
p? << p! p? << << p* p? = idle:0 - port:0 p1 - idle:0 | p! q! p! << << << << = p1 q1 p1 -
| p!3 q! << << << << << p? = p1 p1 p1 q1 - port:0
| p!0 p? p~50 p!0 p? << p~50 p!2 +50 << << << = idle:0 port:0 - p1 p1 -
| p; p? << p~50 p; p? << +50 << p; << = idle:0 - port:0 p1 - -
| p~50 p? +49 p? << +1 p? << p~0 +0 << = calendar:50 calendar:1 - port:0 p1 p1
| p~50 q~50 p~50 +50 << << p~4294967295 p? = q1 p1 calendar:4294967295
| p~50 p! p? << +50 << = port:0 p1 - | p! p~50 p? << p* p? +50 << << = calendar:50 p1 calendar:50 p1 -
| p- p? p! p- p? << p~50 p- p? +50 << p* p? = idle:0 port:0 p1 idle:0 - idle:0
| p^5:7 p? p! p^0:7 p? << << = not idle:0 not port:0 p1 -
| p~9 p^50:7 p? +49 << +1 << p~9 p^0:8 p? << << = done calendar:50 - p7 done port:0 p8 -
| p! py p? << p* py py = 6kept port:0 p1 2null 0null
| p~50 py +50 << q~50 qx +50 << r! rx << rx = 3null - - r1 | p~5 px qn q? q! +5 << << = idle:0 q1 -
| px qx qn pn p? q? p! q!2 << << << = idle:0 idle:0 p1 q1 q1)";

TEST(BoxIOCP, DoesAsTheTableOfOperationsSays) {
  const DrivenClock clock;
  Recorder recorder;
  const NoLeak noLeak;
  Manager manager("ports");
  const auto run = [&](const std::string& script) { return Script(manager).run(script); };
  expectScripts(kPortTable, run);
  EXPECT_EQ(reported(recorder), "");
  // Who still holds a freed memo can only look at it: the next allocation gives it away.
  expectScripts(
      R"(
      pq qx p? p! = free:0 | pq qx p!2 = | pq qx p; = | pq qx p~5 p? +5 = free:0 | pq qx p^5:7 = not
    | pq qx p- p? = free:0 | pq qx p* p? = free:0 | pq qx px py qn rn q! r! << << = 0null q1 r1
    | pq qx py p? = 1kept free:0)",
      [&](const std::string& script) {
        const std::string said = run(script + " <<");
        EXPECT_EQ(reported(recorder), "memo->_usage == MU_Memo && memo->_locus != ML_Free")
            << script;
        return said.substr(0, said.size() - std::min<std::size_t>(said.size(), 2));
      });
  EXPECT_EQ(recorder.takeLines().size(), 0u);
  // What is to be posted at once does not wait for the box thread.
  nosSetThreadHook([](void*, const char*) { return false; }, nullptr);
  BoxManager threadless("none");
  EXPECT_EQ(threadless.initialise(false), 3111);
  nosSetThreadHook(nullptr, nullptr);
  EXPECT_EQ(Script(threadless).run("p~9 p^0:8 p? << q~0 q; << r~0 r! <<"), "done port:0 p8 q1 r1");
}

TEST(BoxIOCP, KeepsFreedMemosUpToItsLimit) {
  Manager manager("limits", false);
  CompletionPort port;
  for (const auto& [limit, kept] : {std::pair{0u, 10u},
                                    {5, 10},
                                    {10, 10},
                                    {11, 11},
                                    {20, 20},
                                    {999, 999},
                                    {1001, 1000},
                                    {0xFFFFFFFF, 1000}}) {
    BoxIOCP* box = nullptr;
    ASSERT_EQ(manager.boxIOCPAllocate(box, port.handle()), 0);
    const auto allocate = [&](std::size_t count) {
      std::vector<Memo*> memos(count);
      for (Memo*& memo : memos) EXPECT_EQ(box->memoAllocate(memo, 0, 0, nullptr), 0);
      return memos;
    };
    const std::uint64_t empty = nosAllocatedBlocks();
    if (limit != 20) box->setMemoFreeLimit(limit);  // 20 is that of a new box
    std::vector<Memo*> before;
    for (int round = 0; round < 2; ++round) {
      std::vector<Memo*> memos = before = allocate(1005);
      EXPECT_EQ(nosAllocatedBlocks(), empty + 1005);
      for (Memo*& memo : memos) box->memoDeallocate(memo);
      EXPECT_EQ(nosAllocatedBlocks(), empty + kept) << limit;
    }
    box->setMemoFreeLimit(10);  // does not shorten the list
    EXPECT_EQ(allocate(kept), std::vector<Memo*>(before.rend() - kept, before.rend()));
    EXPECT_EQ(nosAllocatedBlocks(), empty + kept) << limit;
    allocate(1);
    EXPECT_EQ(nosAllocatedBlocks(), empty + kept + 1) << limit;
  }
}

TEST(BoxIOCP, ReceivesAsThePortDoes) {
  Manager manager("receives", false);
  Script script(manager);
  for (const int timeout : {0, 20}) {
    const std::int64_t start = nosGetRelativeTime();
    EXPECT_EQ(script.receivePacket(timeout), "-");
    EXPECT_GE(nosGetRelativeTime() - start, timeout);
  }
  std::thread other([&] {
    for (int i = 0; i < 500; ++i) script.run("p!");
  });
  for (int i = 0; i < 500; ++i) ASSERT_EQ(script.receivePacket(i % 2 == 0 ? -1 : 60'000), "p1");
  other.join();
  // The whole width of each field, changed in place, and through a copy of the box.
  Memo::IocpBoxData& packet = *script.memo('q')->getIocpBoxData();
  EXPECT_EQ(packet.key, std::uint64_t{'q'} << 40);
  packet = {0xFFFFFFFF, 0xFFFFFFFFFFFFFFFF, reinterpret_cast<OVERLAPPED*>(UINTPTR_MAX)};
  script.run("q!");
  NomULong bytes = 0;
  std::uint64_t key = 0;
  OVERLAPPED* record = nullptr;
  EXPECT_NE(BoxIOCP(*script.portBox).receive(bytes, key, record, -1), 0);
  EXPECT_EQ(bytes, 0xFFFFFFFF);
  EXPECT_EQ(key, 0xFFFFFFFFFFFFFFFF);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(record), UINTPTR_MAX);
}

TEST(BoxIOCP, LogsWhatThePortDoesNotTake) {
  const DrivenClock clock;
  Manager manager("closed", false);
  Script script(manager);
  Recorder recorder;
  script.port.close();
  EXPECT_EQ(script.run("p! p? p!2 q~5 +5 q? q* py"), "port:0 port:0 6kept");
  const std::vector<LogLine> lines = recorder.takeLines();
  EXPECT_EQ(lines.size(), 4u);
  for (const auto& [level, text] : lines) {
    EXPECT_EQ(text, "BoxIOCP::_enter: PostQueuedCompletionStatus error=6");
    EXPECT_EQ(level, NosLogLevel::Information);
  }
}

TEST(BoxIOCP, ReportsAMemoOfAnotherBox) {
  const DrivenClock clock;
  Recorder recorder;
  const NoLeak noLeak;
  Manager manager("own"), stranger("strange");
  Script own(manager), other(stranger);
  other.run("q~5 r! a! b~5 s!");
  for (const char letter : {'p', 'q', 'r', 'a', 'b'}) {
    own.portBox->memoDeallocate(other.memo(letter));
    EXPECT_EQ(other.memo(letter), nullptr);
    EXPECT_EQ(reported(recorder), "(void*)memo->_box == (void*)this");
  }
  MemoLocus locus;
  EXPECT_TRUE(own.portBox->memoDeallocateIfScheduledOrIdle(other.memo('s'), locus));
  EXPECT_EQ(reported(recorder), "(void*)memo->_box == (void*)this");
  EXPECT_EQ(other.run("s? +5 << << << # c! <"), "port:0 r1 s1 - #0 c0/0");
  EXPECT_EQ(own.run("pn p! << <<"), "p1 -");
}

// A box with no operations of its own.
class Bare : public BoxCommon {
 public:
  explicit Bare(BoxManager* manager) : BoxCommon(manager) {}
};

// The last five are those that a box over a port has.
void (*const kOperations[])(Memo*) = {[](Memo* memo) { memo->updateDispatch(7, 7, true); },
                                      [](Memo* memo) { memo->updateDispatchMultiple(7, 7, 7); },
                                      [](Memo* memo) { memo->update(7, 7, true); },
                                      [](Memo* memo) { memo->start(7, 7, 7); },
                                      [](Memo* memo) { memo->stop(); },
                                      [](Memo* memo) { memo->dispatch(); },
                                      [](Memo* memo) { memo->dispatchMultiple(7); },
                                      [](Memo* memo) { memo->schedule(7); },
                                      [](Memo* memo) { memo->cancel(); },
                                      [](Memo* memo) {
                                        MemoLocus locus = ML_Port;
                                        unsigned remaining = 7;
                                        memo->getState(locus, remaining);
                                        EXPECT_EQ(locus + remaining, ML_Port + 7);
                                      }};

TEST(BoxCommon, ReportsWhatAKindOfBoxDoesNotHave) {
  const DrivenClock clock;
  Recorder recorder;
  const auto report = [&] { return reported(recorder, "include/sys/boxes", "Assertion failed"); };
  Manager manager("bare");
  Script script(manager);
  Bare bare(&manager);
  Memo loose(&bare);
  script.run("q~50 r!");
  for (const auto& operate : kOperations) {
    operate(&loose);
    EXPECT_EQ(report(), "noVirtualFunction");
    if (&operate - kOperations >= 5) continue;
    for (const char letter : {'p', 'q', 'r'}) {
      operate(script.memo(letter));
      EXPECT_EQ(report(), "noVirtualFunction");
    }
  }
  EXPECT_EQ(script.run("p? q? r? << +50 <<"), "idle:0 calendar:50 port:0 r1 q1");
}

// An explicit instantiation may name what is private, and gives it these names.
template <auto enter, auto cleanup>
struct Slots {
  friend void callEnter(BoxCommon& box) NOMOS_REQUIRES(nomutil::boxes::changeLock) {
    (box.*enter)(nullptr);
  }
  friend void callCleanup(BoxCommon& box) NOMOS_REQUIRES(nomutil::boxes::changeLock) {
    (box.*cleanup)();
  }
};
template struct Slots<&BoxCommon::_enter, &BoxCommon::_cleanup>;
void callEnter(BoxCommon& box) NOMOS_REQUIRES(nomutil::boxes::changeLock);
void callCleanup(BoxCommon& box) NOMOS_REQUIRES(nomutil::boxes::changeLock);

TEST(BoxCommon, DumpsTheProcessAndThrowsWhereOnlyACompleteBoxCanAct) {
  std::vector<int> kinds;
  nosSetProcessDumpSink(
      [](void* context, int kind) { static_cast<std::vector<int>*>(context)->push_back(kind); },
      &kinds);
  Bare bare(nullptr);
  const nomutil::boxes::OnlyThread only;
  EXPECT_THROW(callEnter(bare), NomException);
  EXPECT_THROW(callCleanup(bare), NomException);
  EXPECT_EQ(kinds, (std::vector<int>{2, 2}));
  nosSetProcessDumpSink(nullptr, nullptr);
}

}  // namespace
