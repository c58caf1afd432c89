#include "SelectedRecords.h"

#include <algorithm>

#include "RecordTime.h"

namespace PelorinHost {

bool SelectedRecords::Open(const std::string& path, std::string* error) {
  std::string reason;
  if (!m_lines.Open(path, &reason)) {
    *error = "cannot read the events file " + path + ": " + reason;
    return false;
  }
  m_ended = false;
  return true;
}

bool SelectedRecords::Rewind() {
  m_ended = false;
  return m_lines.Rewind();
}

bool SelectedRecords::Split(std::string_view line, std::string* timeText, std::string_view* tag,
                            std::string_view* payload) {
  const size_t blank = line.find(' ');
  if (blank == std::string_view::npos || blank == 0) return false;
  const size_t tagEnd = std::min(line.find(' ', blank + 1), line.size());
  if (tagEnd == blank + 1) return false;
  timeText->assign(line.data(), blank);
  *tag = line.substr(blank + 1, tagEnd - blank - 1);
  *payload = tagEnd + 1 < line.size() ? line.substr(tagEnd + 1) : std::string_view();
  // The module's payload ends at a NUL byte.
  *payload = payload->substr(0, payload->find('\0'));
  return true;
}

bool SelectedRecords::Next(SelectedRecord* record) {
  while (!m_ended && m_lines.Next(&record->text)) {
    const uint64_t line = m_lines.Number();
    std::string_view tag;
    std::string_view payload;
    if (m_selection.EndsBefore(line) || !Split(record->text, &record->timeText, &tag, &payload)) {
      break;
    }
    double time = 0.0;
    // From the line itself: the fresh copy may still be on its way to memory.
    RecordTime::Parse(record->text.substr(0, record->timeText.size()), &time);
    if (!m_firstKnown) {
      m_firstKnown = true;
      m_firstTime = time;
    }
    if (!m_selection.Accepts(line, time, m_firstTime, tag)) continue;
    record->line = line;
    record->time = time;
    record->tag.assign(tag.data(), tag.size());
    record->yield = RecordYield::Of(tag, payload);
    return true;
  }
  m_ended = true;
  return false;
}

}  // namespace PelorinHost
