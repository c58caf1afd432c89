#include "host/recording/SelectedRecords.h"

#include <utility>

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
  m_state = CutState();
  m_cutReached = false;
  m_stateRecords.clear();
  m_stateAt = 0;
  m_holding = false;
  return m_reader.Rewind();
}

bool SelectedRecords::Next(SelectedRecord* record) {
  if (m_stateAt < m_stateRecords.size()) {
    GiveState(record);
    return true;
  }
  if (m_holding) {
    m_holding = false;
    *record = std::move(m_held);
    record->text = m_heldText;
    return true;
  }
  if (!NextSelected(record)) return false;
  if (!m_cutReached && m_selection.CarriesState()) {
    m_cutReached = true;
    m_stateRecords = m_state.Records();
    if (!m_stateRecords.empty()) BeginState(record);
  }
  return true;
}

bool SelectedRecords::NextSelected(SelectedRecord* record) {
  while (!m_ended && m_reader.Next() == Quillan::ReadStatus::kRecord) {
    const uint64_t line = m_reader.Number();
    if (m_selection.EndsBefore(line)) break;
    const Quillan::Record& read = m_reader.Record();
    if (!m_firstKnown) {
      m_firstKnown = true;
      m_firstTime = read.time;
    }
    if (!m_selection.Accepts(line, read.time, m_firstTime, read.tag)) {
      if (m_selection.CarriesState() && m_selection.PlaysTag(read.tag) &&
          m_selection.BeforeFrom(line, read.time, m_firstTime)) {
        m_state.Offer(m_reader, read.time, 0);
      }
      continue;
    }
    record->line = line;
    record->time = read.time;
    record->played = read.time;
    record->tag = read.tag;
    record->state = false;
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

void SelectedRecords::BeginState(SelectedRecord* record) {
  m_heldText.assign(record->text);
  m_held = std::move(*record);
  m_holding = true;
  GiveState(record);
}

void SelectedRecords::GiveState(SelectedRecord* record) {
  const StateRecord& state = m_stateRecords[m_stateAt++];
  record->line = state.line;
  record->time = state.time;
  record->played = m_held.time;
  record->tag = state.tag;
  record->state = true;
  record->yield = state.yield;
  record->timeText.assign(state.text, 0, state.timeTextLength);
  m_stateText = m_held.timeText;
  m_stateText.append(state.text, state.timeTextLength, std::string::npos);
  record->text = m_stateText;
}

}  // namespace PelorinRecording
