// NOMOS_API marks what the nomos library exports; everything else is hidden.
#ifndef NOMOS_EXPORT_H
#define NOMOS_EXPORT_H

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
