#include "Output.h"

#include <unistd.h>

#include <cerrno>

namespace PelorinHost {

Output::Output(int itemFd, int statusFd)
    : m_itemFd(itemFd), m_statusFd(statusFd), m_itemsToTerminal(isatty(itemFd) == 1) {
  m_buffer.reserve(kBufferSize + 4096);
}

Output::~Output() {
  std::lock_guard<std::mutex> guard(m_lock);
  EraseStatusLocked();
  FlushLocked();
}

void Output::WriteAll(int fd, const char* data, size_t size) {
  while (size > 0) {
    const ssize_t written = ::write(fd, data, size);
    if (written < 0) {
      if (errno == EINTR) continue;
      return;  // a closed reader loses the rest; playback goes on
    }
    data += written;
    size -= static_cast<size_t>(written);
  }
}

void Output::WriteLine(const char* line, size_t size) {
  std::lock_guard<std::mutex> guard(m_lock);
  EraseStatusLocked();
  m_buffer.append(line, size);
  m_buffer += '\n';
  if (m_itemsToTerminal || m_buffer.size() >= kBufferSize) FlushLocked();
}

void Output::Flush() {
  std::lock_guard<std::mutex> guard(m_lock);
  FlushLocked();
}

void Output::FlushLocked() {
  if (m_buffer.empty()) return;
  WriteAll(m_itemFd, m_buffer.data(), m_buffer.size());
  m_buffer.clear();
}

void Output::EraseStatusLocked() {
  if (!m_statusShown) return;
  FlushLocked();
  static const char kErase[] = "\r\x1b[K";
  WriteAll(m_statusFd, kErase, sizeof(kErase) - 1);
  m_statusShown = false;
}

void Output::ShowStatus(const std::string& status) {
  std::lock_guard<std::mutex> guard(m_lock);
  FlushLocked();
  std::string text = "\r\x1b[K" + status;
  WriteAll(m_statusFd, text.data(), text.size());
  m_statusShown = true;
}

bool Output::StatusShown() {
  std::lock_guard<std::mutex> guard(m_lock);
  return m_statusShown;
}

void Output::ClearStatus() {
  std::lock_guard<std::mutex> guard(m_lock);
  EraseStatusLocked();
}

}  // namespace PelorinHost
