#include "host/recording/LineTap.h"

#include <cstring>

namespace PelorinRecording {
namespace {

constexpr uint8_t kLineFeed = 10;
constexpr uint8_t kCarriageReturn = 13;
constexpr uint8_t kBlank = ' ';

// How many of `count` bytes taken in one run come before the line end. The
// reader takes a run of ordinary bytes, or a whole line with its end: LF, CR
// LF, or a lone CR and the byte after it. So a line end, when there is one,
// is among the last two bytes and nothing before it needs a look.
uint32_t ContentBytes(const uint8_t* bytes, uint32_t count) {
  if (count >= 2 && bytes[count - 2] == kCarriageReturn) return count - 2;
  if (count >= 1 && (bytes[count - 1] == kLineFeed || bytes[count - 1] == kCarriageReturn)) {
    return count - 1;
  }
  return count;
}

}  // namespace

Quillan::FileStatus LineTap::Read(void* buffer, uint32_t length, uint32_t* count) {
  const Quillan::FileStatus status = m_source.Read(buffer, length, count);
  if (count != nullptr) {
    const uint8_t* bytes = static_cast<const uint8_t*>(buffer);
    for (uint32_t i = 0; i < *count; ++i) Observe(bytes[i]);
  }
  return status;
}

const uint8_t* LineTap::PeekReady(uint32_t* count) { return m_source.PeekReady(count); }

void LineTap::TakeReady(uint32_t count) {
  uint32_t available = 0;
  const uint8_t* ready = m_source.PeekReady(&available);
  if (ready != nullptr && count <= available) {
    // Line content up to the first line end is taken whole; the line end
    // and anything after it byte by byte (a reader takes at most a line end
    // and the byte after a CR that way).
    uint32_t content = 0;
    if (m_phase == Phase::kContent) {
      content = ContentBytes(ready, count);
      Append(ready, content);
      m_offset += content;
    }
    for (uint32_t i = content; i < count; ++i) Observe(ready[i]);
  }
  m_source.TakeReady(count);
}

void LineTap::BeginLine() {
  m_line.start = m_offset;
  m_line.length = 0;
  m_line.head.clear();
  m_line.firstBlank = LineShape::kNoBlank;
  m_line.afterBlank = -1;
  m_phase = Phase::kContent;
  if (m_hasCarried) {
    m_line.start = m_carriedOffset;
    Append(&m_carried, 1);
    m_hasCarried = false;
  }
}

void LineTap::Observe(uint8_t byte) {
  const uint64_t offset = m_offset++;
  switch (m_phase) {
    case Phase::kContent:
      if (byte == kLineFeed) {
        m_phase = Phase::kEnded;
      } else if (byte == kCarriageReturn) {
        m_phase = Phase::kAfterCarriageReturn;
      } else {
        Append(&byte, 1);
      }
      break;
    case Phase::kAfterCarriageReturn:
      if (byte != kLineFeed) {
        m_hasCarried = true;
        m_carried = byte;
        m_carriedOffset = offset;
      }
      m_phase = Phase::kEnded;
      break;
    case Phase::kEnded:
      break;
  }
}

void LineTap::Append(const uint8_t* bytes, size_t count) {
  const size_t room = m_headBytes - m_line.head.size();
  m_line.head.append(reinterpret_cast<const char*>(bytes), count < room ? count : room);
  if (m_line.firstBlank == LineShape::kNoBlank) {
    const void* blank = std::memchr(bytes, kBlank, count);
    if (blank != nullptr) {
      m_line.firstBlank =
          m_line.length + static_cast<uint64_t>(static_cast<const uint8_t*>(blank) - bytes);
    }
  }
  // The byte after the first blank, when it is among these.
  if (m_line.firstBlank != LineShape::kNoBlank && m_line.afterBlank == -1) {
    const uint64_t after = m_line.firstBlank + 1;
    if (after >= m_line.length && after < m_line.length + count) {
      m_line.afterBlank = bytes[after - m_line.length];
    }
  }
  m_line.length += count;
}

}  // namespace PelorinRecording
