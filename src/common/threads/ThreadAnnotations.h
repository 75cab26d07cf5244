// Names for clang's thread-safety attributes; they vanish under other compilers.
// https://clang.llvm.org/docs/ThreadSafetyAnalysis.html
#pragma once

#if defined(__clang__)
#define KXP_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define KXP_THREAD_ATTRIBUTE(x)
#endif

#define CAPABILITY(name) KXP_THREAD_ATTRIBUTE(capability(name))
#define SCOPED_CAPABILITY KXP_THREAD_ATTRIBUTE(scoped_lockable)
#define GUARDED_BY(mutex) KXP_THREAD_ATTRIBUTE(guarded_by(mutex))
#define ACQUIRED_BEFORE(...) KXP_THREAD_ATTRIBUTE(acquired_before(__VA_ARGS__))
#define REQUIRES(...) KXP_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define EXCLUDES(...) KXP_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define ACQUIRE(...) KXP_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define RELEASE(...) KXP_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
