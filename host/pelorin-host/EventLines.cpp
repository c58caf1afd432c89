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
    *error = std::strerror(errno);
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
  m_offset = m_pieceOffset = 0;
  m_lineRead = false;
  m_crPending = false;
  m_pushedBack = false;
  m_number = 0;
  m_error = 0;
  return m_fd != -1 && ::lseek(m_fd, 0, SEEK_SET) == 0;
}

bool EventLines::Fill() {
  if (m_pos < m_end) return true;
  if (m_fd == -1 || m_error != 0) return false;
  ssize_t count;
  do {
    count = ::read(m_fd, m_buffer, sizeof(m_buffer));
  } while (count == -1 && errno == EINTR);
  if (count < 0) m_error = errno;
  if (count <= 0) return false;
  m_pos = 0;
  m_end = static_cast<size_t>(count);
  return true;
}

// After a CR: CR LF is one line end; after a lone CR the byte read belongs
// to the next line. Reading that byte may refill the buffer, so it is done
// on the call after the piece before the CR was handed out.
bool EventLines::AfterCarriageReturn() {
  m_crPending = false;
  if (Fill()) {
    const char after = m_buffer[m_pos++];
    ++m_offset;
    if (after != '\n') {
      m_pushedByte = after;
      m_pushedBack = true;
    }
  }
  return m_error == 0;
}

bool EventLines::NextPiece(const char** bytes, size_t* size, bool* lineEnds) {
  *lineEnds = false;
  *size = 0;
  if (m_crPending) {
    if (!AfterCarriageReturn()) return false;
    return EndLine(bytes, lineEnds);
  }
  if (m_pushedBack) {
    m_pushedBack = false;
    m_pieceOffset = m_offset - 1;
    *bytes = &m_pushedByte;
    *size = 1;
    return true;
  }
  if (!Fill()) return m_error == 0 && m_lineRead && EndLine(bytes, lineEnds);
  const char* begin = m_buffer + m_pos;
  const size_t available = m_end - m_pos;
  const char* stop = static_cast<const char*>(std::memchr(begin, '\n', available));
  if (stop == nullptr) stop = begin + available;
  const void* cr = std::memchr(begin, '\r', static_cast<size_t>(stop - begin));
  if (cr != nullptr) stop = static_cast<const char*>(cr);
  m_pieceOffset = m_offset;
  *bytes = begin;
  *size = static_cast<size_t>(stop - begin);
  m_pos += *size;
  m_offset += *size;
  m_lineRead = true;
  if (m_pos == m_end) return true;
  const char end = m_buffer[m_pos++];
  ++m_offset;
  if (end == '\r') {
    if (m_pos == m_end) {
      m_crPending = true;
      return true;
    }
    AfterCarriageReturn();
  }
  *lineEnds = true;
  m_lineRead = false;
  ++m_number;
  return true;
}

// An empty piece that ends the current line.
bool EventLines::EndLine(const char** bytes, bool* lineEnds) {
  m_pieceOffset = m_offset;
  *bytes = m_buffer;
  *lineEnds = true;
  m_lineRead = false;
  ++m_number;
  return true;
}

bool EventLines::Next(std::string_view* line) {
  const char* bytes = nullptr;
  size_t size = 0;
  bool lineEnds = false;
  if (!NextPiece(&bytes, &size, &lineEnds)) return false;
  if (lineEnds) {
    *line = std::string_view(bytes, size);
    return true;
  }
  m_gathered.assign(bytes, size);
  while (NextPiece(&bytes, &size, &lineEnds)) {
    m_gathered.append(bytes, size);
    if (lineEnds) {
      *line = m_gathered;
      return true;
    }
  }
  return false;
}

}  // namespace PelorinHost
