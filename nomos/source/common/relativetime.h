// Whether nosSetRelativeClock has replaced the relative clock: no deadline of the system's clock
// then stands for one of nosGetRelativeTime.
#ifndef NOMOS_SOURCE_COMMON_RELATIVETIME_H
#define NOMOS_SOURCE_COMMON_RELATIVETIME_H

namespace nomos {

bool relativeClockIsReplaced() noexcept;

}  // namespace nomos

#endif  // NOMOS_SOURCE_COMMON_RELATIVETIME_H
