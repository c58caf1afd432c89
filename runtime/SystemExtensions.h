#pragma once
// The only calls of the module that POSIX.1-2008 does not define, kept here so
// that everything else compiles against POSIX alone (the "posix" build checks
// it, and the module's imports are held to module/libc-imports.txt). Each
// names the head unit's (QNX Neutrino) equivalent. Thread-safe, no state.

#include <cstdint>

namespace Quillan {

// Gives the calling thread its name in the system's thread list, cut to what
// the system keeps. glibc and QNX: pthread_setname_np on pthread_self().
void NameCurrentThread(const char* name);

// Moves the descriptor's offset with 64 bits even on a 32-bit system: the
// large-file lseek64 (glibc and QNX, under _LARGEFILE64_SOURCE). Returns the
// new offset, or -1 with errno set.
int64_t SeekLarge(int descriptor, int64_t offset, int whence);

}  // namespace Quillan
