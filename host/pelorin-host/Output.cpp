#include "Output.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

#include "host/common/DescriptorWriter.h"

namespace PelorinHost {

using PelorinTools::DescriptorWriter;

Output::Output(int itemFd, int statusFd)
    : m_itemFd(itemFd), m_statusFd(statusFd), m_itemsToTerminal(isatty(itemFd) == 1) {
  m_buffer.reserve(kBufferSize + 4096);
}

Output::~Output() {
  std::lock_guard<std::mutex> guard(m_lock);
  EraseStatusLocked();
  FlushLocked();
}

void Output::WriteLine(const char* line, size_t size) {
  if (m_refusing.load()) return;
  std::lock_guard<std::mutex> guard(m_lock);
  if (RefusesItemsLocked()) return;
  const size_t start = m_buffer.size();
  m_buffer.append(line, size);
  EndLineLocked(start, false);
}

void Output::WriteTrace(const std::string& line) {
  std::lock_guard<std::mutex> guard(m_lock);
  if (m_failed) return;
  const size_t start = m_buffer.size();
  m_buffer += line;
  EndLineLocked(start, false);
}

Output::Line::Line(Output& output)
    : m_output(output),
      m_guard(output.m_lock),
      m_start(output.m_buffer.size()),
      m_refused(output.RefusesItemsLocked()) {}

Output::Line::~Line() { m_output.EndLineLocked(m_start, m_refused); }

void Output::EndLineLocked(size_t start, bool drop) {
  if (drop || m_failed || m_buffer.size() == start) {
    m_buffer.resize(start);
    return;
  }
  if (m_statusShown) {
    // The status line goes before the item does; the item stays for later.
    const std::string line = m_buffer.substr(start);
    m_buffer.resize(start);
    EraseStatusLocked();
    m_buffer += line;
  }
  m_buffer += '\n';
  if (m_itemsToTerminal || m_buffer.size() >= kBufferSize) FlushLocked();
}

void Output::Flush() {
  std::lock_guard<std::mutex> guard(m_lock);
  FlushLocked();
}

void Output::Close() {
  std::lock_guard<std::mutex> guard(m_lock);
  FlushLocked();
  m_closed = true;
}

bool Output::ReaderGone() const {
  pollfd fd = {m_itemFd, 0, 0};
  return ::poll(&fd, 1, 0) == 1 && (fd.revents & (POLLERR | POLLHUP)) != 0;
}

void Output::FlushLocked() {
  if (m_buffer.empty()) return;
  const int error = DescriptorWriter::WriteAll(m_itemFd, m_buffer.data(), m_buffer.size());
  m_buffer.clear();
  if (error == 0) return;
  // Nothing after a lost line may look complete: keep the first error and
  // write no more.
  int none = 0;
  m_writeError.compare_exchange_strong(none, error);
  m_failed = true;
}

void Output::EraseStatusLocked() {
  if (!m_statusShown) return;
  FlushLocked();
  static const char kErase[] = "\r\x1b[K";
  DescriptorWriter::WriteAll(m_statusFd, kErase, sizeof(kErase) - 1);
  m_statusShown = false;
}

void Output::ShowStatus(const std::string& status) {
  std::lock_guard<std::mutex> guard(m_lock);
  FlushLocked();
  std::string text = "\r\x1b[K" + status;
  DescriptorWriter::WriteAll(m_statusFd, text.data(), text.size());
  m_statusShown = true;
}

bool Output::StatusShown() {
  std::lock_guard<std::mutex> guard(m_lock);
  return m_statusShown;
}

void Output::WriteStatusLine(const std::string& text) {
  std::lock_guard<std::mutex> guard(m_lock);
  const std::string line = text + "\n";
  DescriptorWriter::WriteAll(m_statusFd, line.data(), line.size());
}

void Output::ClearStatus() {
  std::lock_guard<std::mutex> guard(m_lock);
  EraseStatusLocked();
}

}  // namespace PelorinHost
