#include "EventsScan.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace PelorinHost {
namespace {

using PelorinTools::LineShape;

constexpr size_t kTagBytes = 5;

// Bytes that no text recording holds: NUL and the C0 controls other than
// tab, line ends, form feed and ESC.
bool IsBinary(unsigned char byte) {
  return byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r' && byte != '\f' &&
         byte != 0x1b;
}

bool IsPlayableTag(const std::string& tag) {
  return tag == "$TMC" || tag == "$TSL" || tag == "$TOT";
}

}  // namespace

void EventsScan::StartLine() {
  m_line = LineShape();
  m_line.start = m_offset;
  m_readInLine = 0;
  m_tag.clear();
  m_inTag = false;
  m_binaryAt = UINT64_MAX;
}

void EventsScan::Append(unsigned char byte) {
  if (m_line.head.size() < LineShape::kHeadBytes) m_line.head += static_cast<char>(byte);
  if (IsBinary(byte) && m_binaryAt == UINT64_MAX) m_binaryAt = m_offset;
  if (m_line.firstBlank == LineShape::kNoBlank) {
    if (byte == ' ') {
      m_line.firstBlank = m_line.length;
      m_inTag = true;
    }
  } else if (m_line.afterBlank < 0) {
    m_line.afterBlank = byte;
  }
  if (m_inTag && m_line.length > m_line.firstBlank) {
    if (byte == ' ') {
      m_inTag = false;
    } else if (m_tag.size() <= kTagBytes) {
      m_tag += static_cast<char>(byte);
    }
  }
  ++m_line.length;
}

void EventsScan::Feed(const char* bytes, size_t size) {
  for (size_t i = 0; i < size && !Stopped(); ++i, ++m_offset) {
    const unsigned char byte = static_cast<unsigned char>(bytes[i]);
    if (m_afterCr) {
      m_afterCr = false;
      StartLine();
      if (byte == '\n') continue;
      Append(byte);  // pushed back: data of the next line, even a CR
      continue;
    }
    ++m_readInLine;
    if (byte == '\n' || byte == '\r') {
      EndLine();
      m_afterCr = byte == '\r';
      if (!m_afterCr) StartLine();
      continue;
    }
    Append(byte);
  }
}

void EventsScan::Finish() {
  if (Stopped() || m_afterCr) return;
  if (m_readInLine > 0) EndLine();
}

void EventsScan::ReadError() {
  if (Stopped()) return;
  m_lines += 1;
  Stop("read error");
}

void EventsScan::Stop(const std::string& reason) {
  m_result.complete = false;
  m_result.stopLine = m_lines;
  m_result.reason = reason;
}

void EventsScan::EndLine() {
  if (Stopped()) return;
  ++m_lines;
  const bool malformed = m_line.length == 0 || m_line.firstBlank == LineShape::kNoBlank ||
                         m_line.firstBlank == 0 || m_line.afterBlank < 0 ||
                         m_line.afterBlank == ' ';
  if (malformed) {
    if (m_binaryAt != UINT64_MAX) {
      Stop("binary data at byte " + std::to_string(m_binaryAt));
    } else {
      Stop(m_line.MalformedReason());
    }
    return;
  }
  ++m_result.records;
  if (IsPlayableTag(m_tag)) ++m_result.playable;
}

bool EventsScan::ScanFile(const std::string& path, ScanResult* result, std::string* error) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    *error = std::strerror(errno);
    return false;
  }
  EventsScan scan;
  char buffer[64 * 1024];
  for (;;) {
    const ssize_t got = ::read(fd, buffer, sizeof(buffer));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      if (errno == EISDIR) {
        *error = std::strerror(errno);
        ::close(fd);
        return false;
      }
      scan.ReadError();
      break;
    }
    if (got == 0) {
      scan.Finish();
      break;
    }
    scan.Feed(buffer, static_cast<size_t>(got));
    if (scan.Stopped()) break;
  }
  ::close(fd);
  *result = scan.Result();
  return true;
}

}  // namespace PelorinHost
