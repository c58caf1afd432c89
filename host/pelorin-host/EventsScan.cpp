#include "EventsScan.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "EventLines.h"
#include "RecordTime.h"

namespace PelorinHost {
namespace {

using PelorinTools::LineShape;

constexpr size_t kTagBytes = 5;

bool IsPlayableTag(std::string_view tag) {
  using namespace std::string_view_literals;
  return tag == "$TMC"sv || tag == "$TSL"sv || tag == "$TOT"sv;
}

}  // namespace

void EventsScan::Take(const char* bytes, size_t size, uint64_t offset) {
  if (!m_lineStarted) {
    m_lineStarted = true;
    // Reset in place: the head keeps its capacity from line to line.
    m_line.start = offset;
    m_line.length = 0;
    m_line.head.clear();
    m_line.firstBlank = LineShape::kNoBlank;
    m_line.afterBlank = -1;
    m_tag.clear();
    m_inTag = false;
    m_shapeKnown = false;
  }
  if (m_shapeKnown) {
    m_line.length += size;
    return;
  }
  const size_t head = m_line.head.size();
  if (head < LineShape::kHeadBytes) m_line.head.append(bytes, std::min(size, LineShape::kHeadBytes - head));
  size_t i = 0;
  if (m_line.firstBlank == LineShape::kNoBlank) {
    const void* blank = std::memchr(bytes, ' ', size);
    if (blank != nullptr) {
      i = static_cast<size_t>(static_cast<const char*>(blank) - bytes);
      m_line.firstBlank = m_line.length + i;
      m_inTag = true;
      ++i;
    } else {
      i = size;
    }
  }
  // Only the byte after the first blank and the tag's first bytes matter.
  for (; i < size && (m_line.afterBlank < 0 || m_inTag); ++i) {
    const unsigned char byte = static_cast<unsigned char>(bytes[i]);
    if (m_line.afterBlank < 0) m_line.afterBlank = byte;
    if (byte == ' ' || m_tag.size() > kTagBytes) {
      m_inTag = false;
    } else {
      m_tag += static_cast<char>(byte);
    }
  }
  m_line.length += size;
  // A line with a time, a tag and its tag bytes read is a record whatever
  // follows: the rest of it (binary bytes included) needs no look. A line
  // that may still be malformed keeps its head, where binary bytes are
  // looked for once it is.
  m_shapeKnown = m_line.firstBlank != LineShape::kNoBlank && m_line.firstBlank > 0 &&
                 m_line.afterBlank >= 0 && m_line.afterBlank != ' ' && !m_inTag;
}

void EventsScan::Stop(const std::string& reason) {
  m_result.complete = false;
  m_result.stopLine = m_lines;
  m_result.reason = reason;
}

void EventsScan::EndLine() {
  ++m_lines;
  m_lineStarted = false;
  const bool malformed = m_line.length == 0 || m_line.firstBlank == LineShape::kNoBlank ||
                         m_line.firstBlank == 0 || m_line.afterBlank < 0 ||
                         m_line.afterBlank == ' ';
  if (malformed) {
    Stop(m_line.StopReason());
    return;
  }
  ++m_result.records;
  if (IsPlayableTag(m_tag)) ++m_result.playable;
  if (m_line.TimeTextKnown()) m_lastTimeText.assign(m_line.head, 0, m_line.firstBlank);
}

void EventsScan::Scan(EventLines& lines, const std::atomic<bool>& cancel, ScanResult* result) {
  EventsScan scan;
  const char* bytes = nullptr;
  size_t size = 0;
  bool lineEnds = false;
  while (!scan.Stopped() && !cancel.load(std::memory_order_relaxed) &&
         lines.NextPiece(&bytes, &size, &lineEnds)) {
    scan.Take(bytes, size, lines.PieceOffset());
    if (lineEnds) scan.EndLine();
  }
  if (!scan.Stopped() && lines.ReadError() != 0) {
    ++scan.m_lines;
    scan.Stop("read error");
  }
  scan.m_result.lines = scan.m_lines;
  RecordTime::Parse(scan.m_lastTimeText, &scan.m_result.lastTime);
  *result = scan.m_result;
}

}  // namespace PelorinHost
