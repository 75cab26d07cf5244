// What Darwin adds to the calls for threads.
#ifdef __cplusplus
#include_next <pthread.h>
#include <stdint.h>

extern "C" {
int pthread_threadid_np(pthread_t thread, uint64_t* id);
int pthread_cond_timedwait_relative_np(pthread_cond_t* condition, pthread_mutex_t* mutex,
                                       const struct timespec* time);
}
#endif
