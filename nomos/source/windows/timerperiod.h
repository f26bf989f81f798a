// The period of the system's timer that a thread asked for lasts as long as the thread.
#ifndef NOMOS_SOURCE_WINDOWS_TIMERPERIOD_H
#define NOMOS_SOURCE_WINDOWS_TIMERPERIOD_H

namespace nomos::platform {

// Takes back what nosUseFinestTimerSlack did in the calling thread, which ends.
void endFinestTimerPeriod() noexcept;

}  // namespace nomos::platform

#endif  // NOMOS_SOURCE_WINDOWS_TIMERPERIOD_H
