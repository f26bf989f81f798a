// The smallest useful event box: another thread sends work and starts a timer, which ends the wait
// for more work. Exits with 1 when anything goes another way.
#include "sys/boxes.h"

#include <cstdio>
#include <thread>

int main() {
  constexpr unsigned kWork = 1;
  constexpr unsigned kTimeUp = 2;
  constexpr unsigned kNoLimit = 0xFFFFFFFF;

  BoxManager manager("example");
  Box* box = nullptr;
  Memo* work = nullptr;
  Memo* timer = nullptr;
  if (manager.initialise(true) != 0 || manager.boxAllocate(box, false) != 0 ||
      box->memoAllocate(work, kWork, 5, true) != 0 || box->timerAllocate(timer) != 0) {
    return 1;
  }

  std::thread sender([work, timer] {
    work->dispatchMultiple(3);
    timer->start(100, kTimeUp, 1);
  });
  unsigned units = 0;
  for (unsigned value = 0, left = 0; value != kTimeUp;) {
    box->receive(kNoLimit, value, left);
    if (value == kWork) ++units;
  }
  sender.join();
  std::printf("%u units of work until the time was up\n", units);

  manager.boxDeallocate(box);  // frees the memos as well
  return units == 3 ? 0 : 1;
}
