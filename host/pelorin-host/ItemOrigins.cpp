#include "ItemOrigins.h"

namespace PelorinHost {
namespace {

// A record time cut to whole seconds; 0 for what 32 unsigned bits cannot
// hold (and for what is not a number).
uint32_t WholeSeconds(double time) {
  if (!(time >= 0.0 && time < 4294967296.0)) return 0;
  return static_cast<uint32_t>(time);
}

}  // namespace

bool ItemOrigins::Open(const std::string& recording, std::string* error) {
  return m_records.Start(recording, error);
}

bool ItemOrigins::Pass() {
  m_record = m_records.Next();
  if (m_record == nullptr) {
    if (m_passStarted) m_tally.spanSeconds += m_passLast - m_passFirst;
    m_passStarted = false;
    return false;
  }
  if (!m_passStarted) {
    m_passStarted = true;
    m_passFirst = m_record->played;
    m_gaps.Restart();
  }
  m_tally.skippedSeconds += static_cast<double>(m_gaps.Next(m_record->played)) / 1000.0;
  m_passLast = m_record->played;
  m_tally.Count(m_record->tag, m_record->yield.known, m_record->yield.Yields());
  m_line.store(static_cast<uint32_t>(m_record->line), std::memory_order_relaxed);
  m_clock.store(WholeSeconds(m_record->played), std::memory_order_relaxed);
  return true;
}

bool ItemOrigins::Find(ItemKind kind, ItemOrigin* origin) {
  bool wrapped = false;
  for (;;) {
    if (!Pass()) {
      // Past the last record: the module plays the selection again.
      if (wrapped) return false;
      wrapped = true;
      ++m_pass;
      continue;
    }
    if (m_record->yield.kind == kind) break;
  }
  origin->line = m_record->line;
  origin->recordTime = m_record->timeText;
  origin->seconds = m_record->played;
  origin->state = m_record->state;
  origin->pass = m_pass;
  return true;
}

void ItemOrigins::EndOfPass() {
  while (Pass()) {
  }
  ++m_pass;
}

RecordTally ItemOrigins::Tally() {
  RecordTally tally = m_tally;
  if (m_passStarted) tally.spanSeconds += m_passLast - m_passFirst;
  return tally;
}

}  // namespace PelorinHost
