// Stand-in for the head unit's file opening: "/fs/sda0" may be served from a
// folder of the PC.

#include "Storage.h"

#include <fcntl.h>

#include <mutex>

namespace {

const char kStoragePrefix[] = "/fs/sda0";

std::mutex g_rootLock;
std::string g_root;

}  // namespace

namespace Storage {

void SetStorageRoot(const std::string& folder) {
  std::lock_guard<std::mutex> guard(g_rootLock);
  g_root = folder;
  while (g_root.size() > 1 && g_root.back() == '/') g_root.pop_back();
}

std::string MapPath(const std::string& path) {
  std::lock_guard<std::mutex> guard(g_rootLock);
  const std::string prefix(kStoragePrefix);
  if (g_root.empty() || path.compare(0, prefix.size(), prefix) != 0) return path;
  if (path.size() > prefix.size() && path[prefix.size()] != '/') return path;
  return g_root + path.substr(prefix.size());
}

int Open(const char* path, int flags, unsigned int mode) {
  if (path == nullptr) return -1;
  const std::string mapped = MapPath(path);
  return ::open(mapped.c_str(), flags, static_cast<mode_t>(mode));
}

}  // namespace Storage
