#include "host/pelorin-edit/AtomicOutput.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace PelorinEdit {

AtomicOutput::~AtomicOutput() {
  m_stream.reset();
  m_buffer.reset();  // flushes: harmless into a file about to go
  if (m_fd >= 0 && !m_temporary.empty()) ::close(m_fd);
  if (!m_temporary.empty()) ::unlink(m_temporary.c_str());
}

bool AtomicOutput::Open(const std::string& path, std::string* reason) {
  m_path = path;
  if (path == "-") {
    m_buffer = std::make_unique<PelorinTools::FileOutput>(STDOUT_FILENO);
    m_stream = std::make_unique<std::ostream>(m_buffer.get());
    return true;
  }
  const size_t slash = path.rfind('/');
  const std::string folder = slash == std::string::npos ? "" : path.substr(0, slash + 1);
  const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
  std::string pattern = folder + "." + name + ".XXXXXX";
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  m_fd = ::mkostemp(buffer.data(), O_CLOEXEC);
  if (m_fd < 0) {
    *reason = std::strerror(errno);
    return false;
  }
  m_temporary = buffer.data();
  // The mode a new file gets from the umask, not mkstemp's 0600.
  const mode_t mask = ::umask(0);
  ::umask(mask);
  ::fchmod(m_fd, 0666 & ~mask);
  m_buffer = std::make_unique<PelorinTools::FileOutput>(m_fd);
  m_stream = std::make_unique<std::ostream>(m_buffer.get());
  return true;
}

bool AtomicOutput::Commit(std::string* reason) {
  m_stream->flush();
  if (m_buffer->Failed()) {
    *reason = std::strerror(m_buffer->Error());
    return false;
  }
  if (m_temporary.empty()) return true;
  const bool synced = ::fsync(m_fd) == 0;
  const int syncError = errno;
  const bool closed = ::close(m_fd) == 0;
  m_fd = -1;
  if (!synced || !closed) {
    *reason = std::strerror(synced ? errno : syncError);
    return false;
  }
  if (::rename(m_temporary.c_str(), m_path.c_str()) != 0) {
    *reason = std::strerror(errno);
    return false;
  }
  m_temporary.clear();
  return true;
}

}  // namespace PelorinEdit
