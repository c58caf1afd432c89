#include "host/recording/SelectedRecords.h"

namespace PelorinRecording {

bool SelectedRecords::Open(const std::string& path, std::string* error) {
  std::string reason;
  if (!m_reader.Open(path, &reason)) {
    *error = "cannot read the events file " + path + ": " + reason;
    return false;
  }
  m_ended = false;
  return true;
}

bool SelectedRecords::Rewind() {
  m_ended = false;
  return m_reader.Rewind();
}

bool SelectedRecords::Next(SelectedRecord* record) {
  while (!m_ended && m_reader.Next() == Quillan::ReadStatus::kRecord) {
    const uint64_t line = m_reader.Number();
    if (m_selection.EndsBefore(line)) break;
    const Quillan::Record& read = m_reader.Record();
    if (!m_firstKnown) {
      m_firstKnown = true;
      m_firstTime = read.time;
    }
    if (!m_selection.Accepts(line, read.time, m_firstTime, read.tag)) continue;
    record->line = line;
    record->time = read.time;
    record->tag = read.tag;
    record->timeText.assign(m_reader.TimeText());
    if (m_keep == Keep::kText) {
      record->text = m_reader.Shape().head;
    } else {
      record->yield = m_reader.Yield();
    }
    return true;
  }
  m_ended = true;
  return false;
}

}  // namespace PelorinRecording
