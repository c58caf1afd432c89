#pragma once
// Storage: opening files of the head unit's file systems. On the head unit
// this is open(2) itself. The stand-in can serve the head unit's storage
// folder "/fs/sda0" from a folder of the PC (SetStorageRoot), so that the
// module opens its fixed paths unchanged. Thread-safe.

#include <string>

namespace Storage {

// open(2) with the path mapped as described; returns the descriptor or -1
// with errno set.
int Open(const char* path, int flags, unsigned int mode);

// Stand-in only: serve "/fs/sda0" and everything below it from this folder
// (empty: no mapping).
void SetStorageRoot(const std::string& folder);

// Stand-in only: the path that Open would open for this one.
std::string MapPath(const std::string& path);

}  // namespace Storage
