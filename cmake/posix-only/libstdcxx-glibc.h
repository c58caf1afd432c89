// Force-included into the platform stand-ins in the POSIX.1-2008-only build.
// They use std::mutex, and libstdc++, as configured for glibc, calls two
// glibc functions from the inline code of <mutex> that glibc hides without
// _GNU_SOURCE. Declared here so that the C++ library compiles; the stand-ins
// only lock and unlock, and the module itself includes no <mutex>.
#pragma once
#include <pthread.h>
#include <time.h>
extern "C" {
int pthread_cond_clockwait(pthread_cond_t*, pthread_mutex_t*, clockid_t, const struct timespec*);
int pthread_mutex_clocklock(pthread_mutex_t*, clockid_t, const struct timespec*);
}
