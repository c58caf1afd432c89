#include "EventLines.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace PelorinHost {

bool EventLines::Open(const std::string& path, std::string* error) {
  Close();
  do {
    m_fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  } while (m_fd == -1 && errno == EINTR);
  if (m_fd == -1) {
    *error = "cannot read the events file " + path + ": " + std::strerror(errno);
    return false;
  }
  return Rewind();
}

void EventLines::Close() {
  if (m_fd != -1) ::close(m_fd);
  m_fd = -1;
}

bool EventLines::Rewind() {
  m_pos = m_end = 0;
  m_pushedBack = false;
  m_number = 0;
  return m_fd != -1 && ::lseek(m_fd, 0, SEEK_SET) == 0;
}

bool EventLines::Fill() {
  if (m_pos < m_end) return true;
  if (m_fd == -1) return false;
  ssize_t count;
  do {
    count = ::read(m_fd, m_buffer, sizeof(m_buffer));
  } while (count == -1 && errno == EINTR);
  if (count <= 0) return false;
  m_pos = 0;
  m_end = static_cast<size_t>(count);
  return true;
}

bool EventLines::Next(std::string* line) {
  line->clear();
  bool any = false;
  if (m_pushedBack) {
    line->push_back(m_pushedByte);
    m_pushedBack = false;
    any = true;
  }
  while (Fill()) {
    const char* begin = m_buffer + m_pos;
    const size_t available = m_end - m_pos;
    const char* stop = static_cast<const char*>(std::memchr(begin, '\n', available));
    if (stop == nullptr) stop = begin + available;
    const void* cr = std::memchr(begin, '\r', static_cast<size_t>(stop - begin));
    if (cr != nullptr) stop = static_cast<const char*>(cr);
    line->append(begin, stop);
    m_pos += static_cast<size_t>(stop - begin);
    any = true;
    if (m_pos == m_end) continue;
    const char end = m_buffer[m_pos++];
    if (end == '\r' && Fill()) {
      const char after = m_buffer[m_pos++];
      if (after != '\n') {
        m_pushedByte = after;
        m_pushedBack = true;
      }
    }
    ++m_number;
    return true;
  }
  if (!any) return false;
  ++m_number;
  return true;
}

}  // namespace PelorinHost
