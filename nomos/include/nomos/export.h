// NOMOS_API marks what the nomos library exports; everything else is hidden.
// NOMOS_MUTEX_IN_PLACE: whether a free ThreadMutex is taken and given back without a call. A build
// that has to see every call defines it as 0. NOMOS_IN_PLACE keeps the body of such a member, which
// each module has for itself, out of what the module exports.
#ifndef NOMOS_EXPORT_H
#define NOMOS_EXPORT_H

#if !defined(NOMOS_MUTEX_IN_PLACE)
#if defined(_WIN32)
#define NOMOS_MUTEX_IN_PLACE 0
#else
#define NOMOS_MUTEX_IN_PLACE 1
#endif
#endif

#if NOMOS_MUTEX_IN_PLACE
#define NOMOS_IN_PLACE __attribute__((visibility("hidden")))
#else
#define NOMOS_IN_PLACE
#endif

#if defined(_WIN32)
#if defined(NOMOS_BUILDING)
#define NOMOS_API __declspec(dllexport)
#else
#define NOMOS_API __declspec(dllimport)
#endif
#else
#define NOMOS_API __attribute__((visibility("default")))
#endif

#endif  // NOMOS_EXPORT_H
