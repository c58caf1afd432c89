#include "SelectedRecords.h"

#include <cstring>

#include "RecordTime.h"

namespace PelorinHost {

bool SelectedRecords::Open(const std::string& path, std::string* error) {
  if (!m_lines.Open(path, error)) return false;
  m_ended = false;
  m_passStart = true;
  m_previousMaybe = false;
  return true;
}

bool SelectedRecords::Rewind() {
  m_ended = false;
  m_passStart = true;
  m_previousMaybe = false;
  return m_lines.Rewind();
}

bool SelectedRecords::Split(const std::string& text, std::string* timeText, std::string* tag,
                            std::string* payload) {
  const size_t blank = text.find(' ');
  if (blank == std::string::npos || blank == 0) return false;
  const size_t tagEnd = std::min(text.find(' ', blank + 1), text.size());
  if (tagEnd == blank + 1) return false;
  timeText->assign(text, 0, blank);
  tag->assign(text, blank + 1, tagEnd - blank - 1);
  payload->clear();
  if (tagEnd + 1 < text.size()) {
    const char* begin = text.data() + tagEnd + 1;
    const size_t size = text.size() - tagEnd - 1;
    const void* nul = std::memchr(begin, '\0', size);
    payload->assign(begin, nul ? static_cast<const char*>(nul) - begin : size);
  }
  return true;
}

bool SelectedRecords::Next(SelectedRecord* record) {
  while (!m_ended && m_lines.Next(&record->text)) {
    const uint64_t line = m_lines.Number();
    if (m_selection.EndsBefore(line) ||
        !Split(record->text, &record->timeText, &m_tag, &m_payload)) {
      break;
    }
    double time = 0.0;
    RecordTime::Parse(record->timeText, &time);
    if (!m_firstKnown) {
      m_firstKnown = true;
      m_firstTime = time;
    }
    if (!m_selection.Accepts(line, time, m_firstTime, m_tag)) continue;
    record->line = line;
    record->yield = RecordYield::Of(m_tag, m_payload);
    record->markedBefore = m_passStart || m_previousMaybe;
    m_passStart = false;
    m_previousMaybe = record->yield.count == RecordYield::kMaybe;
    return true;
  }
  m_ended = true;
  return false;
}

}  // namespace PelorinHost
