#include "WakePipe.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace PelorinHost {

bool WakePipe::Open() {
  Close();
  return ::pipe2(m_fds, O_CLOEXEC) == 0;
}

void WakePipe::Wake() {
  if (m_fds[1] < 0 || m_woken) return;
  m_woken = true;
  const char wake = 'x';
  while (::write(m_fds[1], &wake, 1) < 0 && errno == EINTR) {
  }
}

void WakePipe::Close() {
  for (int& fd : m_fds) {
    if (fd >= 0) ::close(fd);
    fd = -1;
  }
  m_woken = false;
}

}  // namespace PelorinHost
