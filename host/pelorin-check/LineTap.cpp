#include "host/pelorin-check/LineTap.h"

namespace PelorinCheck {
namespace {

constexpr uint8_t kLineFeed = 10;
constexpr uint8_t kCarriageReturn = 13;
constexpr uint8_t kBlank = ' ';

}  // namespace

std::string LineShape::MalformedReason() const {
  if (length == 0) return "empty line";
  if (firstBlank == kNoBlank) return "no blank after the time stamp";
  if (firstBlank == 0) return "empty time stamp (the line starts with a blank)";
  if (afterBlank == kBlank) return "empty tag (two blanks after the time stamp)";
  return "empty tag (nothing after the time stamp)";
}

Quillan::FileStatus LineTap::Read(void* buffer, uint32_t length, uint32_t* count) {
  const Quillan::FileStatus status = m_source.Read(buffer, length, count);
  if (count != nullptr) {
    const uint8_t* bytes = static_cast<const uint8_t*>(buffer);
    for (uint32_t i = 0; i < *count; ++i) Observe(bytes[i]);
  }
  return status;
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
    Append(m_carried);
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
        Append(byte);
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

void LineTap::Append(uint8_t byte) {
  if (m_line.head.size() < LineShape::kHeadBytes) m_line.head.push_back(static_cast<char>(byte));
  if (m_line.firstBlank == LineShape::kNoBlank) {
    if (byte == kBlank) m_line.firstBlank = m_line.length;
  } else if (m_line.length == m_line.firstBlank + 1) {
    m_line.afterBlank = byte;
  }
  ++m_line.length;
}

}  // namespace PelorinCheck
