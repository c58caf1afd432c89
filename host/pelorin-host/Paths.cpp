#include "Paths.h"

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace PelorinHost {

std::string DirectoryOf(const std::string& path) {
  const size_t slash = path.find_last_of('/');
  if (slash == std::string::npos) return ".";
  if (slash == 0) return "/";
  return path.substr(0, slash);
}

bool IsReadableFile(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
         ::access(path.c_str(), R_OK) == 0;
}

bool IsDirectory(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

std::string ProgramDir(const char* argv0) {
  char buffer[PATH_MAX];
  const ssize_t length = ::readlink("/proc/self/exe", buffer, sizeof(buffer) - 1);
  if (length > 0) {
    buffer[length] = '\0';
    return DirectoryOf(buffer);
  }
  if (argv0 != nullptr && realpath(argv0, buffer) != nullptr) return DirectoryOf(buffer);
  return ".";
}

std::string AbsolutePath(const std::string& path) {
  if (!path.empty() && path[0] == '/') return path;
  char buffer[PATH_MAX];
  if (getcwd(buffer, sizeof(buffer)) == nullptr) return path;
  std::string base = buffer;
  std::string rest = path;
  while (rest.compare(0, 2, "./") == 0) rest.erase(0, 2);
  if (base.empty() || base.back() != '/') base += '/';
  return base + rest;
}

}  // namespace PelorinHost
