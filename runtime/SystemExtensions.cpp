// This file alone asks the C library for more than POSIX.1-2008.
#ifndef _GNU_SOURCE
#define _GNU_SOURCE 1  // pthread_setname_np
#endif
#ifndef _LARGEFILE64_SOURCE
#define _LARGEFILE64_SOURCE 1  // lseek64, off64_t
#endif

#include "runtime/SystemExtensions.h"

#include <pthread.h>
#include <sys/types.h>
#include <unistd.h>

#include <cstring>

namespace Quillan {
namespace {

static_assert(sizeof(off64_t) == 8, "file offsets must be 64 bits");

#if defined(__linux__)
// Linux keeps at most 15 characters of a thread name and refuses longer ones.
constexpr size_t kSystemNameLength = 15;
#else
// QNX keeps up to _NTO_THREAD_NAME_MAX (100) characters; Thread's own
// capacity is the smaller limit there.
constexpr size_t kSystemNameLength = 63;
#endif

}  // namespace

void NameCurrentThread(const char* name) {
  char systemName[kSystemNameLength + 1];
  std::strncpy(systemName, name, kSystemNameLength);
  systemName[kSystemNameLength] = '\0';
  pthread_setname_np(pthread_self(), systemName);
}

int64_t SeekLarge(int descriptor, int64_t offset, int whence) {
  return static_cast<int64_t>(::lseek64(descriptor, static_cast<off64_t>(offset), whence));
}

}  // namespace Quillan
