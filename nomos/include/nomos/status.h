// The message numbers that nomos itself gives as statuses and in NomException. The message list of
// nomutil, which lies above, holds the same numbers with their texts.
#ifndef NOMOS_STATUS_H
#define NOMOS_STATUS_H

inline constexpr int kNosInvalidParameterValue = 1002;
inline constexpr int kNosLibraryNotFound = 1006;
inline constexpr int kNosStringTooLong = 1035;
inline constexpr int kNosBinaryTooLong = 1091;
inline constexpr int kNosStringUtf8TooLong = 1124;
inline constexpr int kNosMemoryAllocationFailed = 1448;

#endif  // NOMOS_STATUS_H
