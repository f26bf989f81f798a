// Lock annotations, checked by clang's -Wthread-safety and empty under other compilers
// (https://clang.llvm.org/docs/ThreadSafetyAnalysis.html).
#ifndef NOMOS_ANNOTATIONS_H
#define NOMOS_ANNOTATIONS_H

#if defined(__clang__)
#define NOMOS_ANNOTATION(x) __attribute__((x))
#else
#define NOMOS_ANNOTATION(x)
#endif

// The attributes of that page, by their names.
#define NOMOS_CAPABILITY(name) NOMOS_ANNOTATION(capability(name))
#define NOMOS_SCOPED_CAPABILITY NOMOS_ANNOTATION(scoped_lockable)
#define NOMOS_GUARDED_BY(lock) NOMOS_ANNOTATION(guarded_by(lock))
#define NOMOS_PT_GUARDED_BY(lock) NOMOS_ANNOTATION(pt_guarded_by(lock))
#define NOMOS_REQUIRES(...) NOMOS_ANNOTATION(requires_capability(__VA_ARGS__))
#define NOMOS_EXCLUDES(...) NOMOS_ANNOTATION(locks_excluded(__VA_ARGS__))
#define NOMOS_ACQUIRE(...) NOMOS_ANNOTATION(acquire_capability(__VA_ARGS__))
#define NOMOS_TRY_ACQUIRE(...) NOMOS_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define NOMOS_RELEASE(...) NOMOS_ANNOTATION(release_capability(__VA_ARGS__))
#define NOMOS_ACQUIRED_BEFORE(...) NOMOS_ANNOTATION(acquired_before(__VA_ARGS__))
#define NOMOS_ACQUIRED_AFTER(...) NOMOS_ANNOTATION(acquired_after(__VA_ARGS__))
#define NOMOS_NO_THREAD_SAFETY_ANALYSIS NOMOS_ANNOTATION(no_thread_safety_analysis)

#endif  // NOMOS_ANNOTATIONS_H
