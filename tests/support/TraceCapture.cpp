#include "tests/support/TraceCapture.h"

#include "tracing/Channel.h"

namespace pelorin_test {

TraceCapture::TraceCapture(int16_t threshold)
    : m_savedPelorin(tracing::GetThreshold("Pelorin")),
      m_savedDataPool(tracing::GetThreshold("SD_DATAPOOL")) {
  tracing::SetThreshold("Pelorin", threshold);
  tracing::SetThreshold("SD_DATAPOOL", threshold);
  tracing::SetSink(&TraceCapture::Sink, this);
}

TraceCapture::~TraceCapture() {
  tracing::SetSink(nullptr, nullptr);
  tracing::SetThreshold("Pelorin", m_savedPelorin);
  tracing::SetThreshold("SD_DATAPOOL", m_savedDataPool);
}

void TraceCapture::Sink(void* context, const char* channel, int level, const char* text) {
  auto* self = static_cast<TraceCapture*>(context);
  std::lock_guard<std::mutex> guard(self->m_lock);
  self->m_lines.push_back(TraceLine{channel, level, text});
}

std::vector<TraceLine> TraceCapture::Lines() const {
  std::lock_guard<std::mutex> guard(m_lock);
  return m_lines;
}

std::vector<std::string> TraceCapture::Texts(int minLevel) const {
  std::lock_guard<std::mutex> guard(m_lock);
  std::vector<std::string> texts;
  for (const TraceLine& line : m_lines) {
    if (line.level >= minLevel) texts.push_back(line.text);
  }
  return texts;
}

size_t TraceCapture::Count(const std::string& fragment) const {
  std::lock_guard<std::mutex> guard(m_lock);
  size_t count = 0;
  for (const TraceLine& line : m_lines) {
    if (line.text.find(fragment) != std::string::npos) ++count;
  }
  return count;
}

void TraceCapture::Clear() {
  std::lock_guard<std::mutex> guard(m_lock);
  m_lines.clear();
}

}  // namespace pelorin_test
