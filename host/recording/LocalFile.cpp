#include "host/recording/LocalFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace PelorinRecording {

LocalFile::~LocalFile() {
  if (m_descriptor >= 0) ::close(m_descriptor);
}

bool LocalFile::Open(const std::string& path, std::string* reason) {
  if (path.empty()) {
    *reason = "empty path";
    return false;
  }
  int descriptor;
  do {
    descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  } while (descriptor < 0 && errno == EINTR);
  if (descriptor < 0) {
    *reason = std::strerror(errno);
    return false;
  }
  struct stat info;
  if (::fstat(descriptor, &info) == 0 && S_ISDIR(info.st_mode)) {
    ::close(descriptor);
    *reason = std::strerror(EISDIR);
    return false;
  }
  if (m_descriptor >= 0) ::close(m_descriptor);
  m_descriptor = descriptor;
  return true;
}

std::string LocalFile::ModulePath() const { return "/dev/fd/" + std::to_string(m_descriptor); }

}  // namespace PelorinRecording
