#include "ItemOrigins.h"

#include <utility>

#include "RecordTime.h"

namespace PelorinHost {

bool ItemOrigins::Open(const std::string& recording, std::string* error) {
  return m_records.Open(recording, error);
}

bool ItemOrigins::PeekNext() {
  if (!m_hasNext) {
    m_hasNext = m_records.Next(&m_next);
    m_nextMarkerSeen = false;
  }
  return m_hasNext;
}

bool ItemOrigins::CurrentAwaits(ItemKind kind) const {
  return m_hasCurrent && !m_served && m_current.yield.kind == kind &&
         m_current.yield.count != RecordYield::kNone;
}

ItemOrigins::Found ItemOrigins::Find(ItemKind kind, bool markerCall, int64_t value,
                                     ItemOrigin* origin) {
  std::lock_guard<std::mutex> guard(m_lock);
  bool wrapped = false;
  for (;;) {
    // A record sure of its item takes it; else the marker before the next
    // record is due.
    const bool currentSure =
        CurrentAwaits(kind) && m_current.yield.count == RecordYield::kOne;
    if (markerCall && !currentSure && PeekNext() && m_next.markedBefore && !m_nextMarkerSeen &&
        value == SelectedRecords::MarkerValue(m_next.line)) {
      // Whatever comes after the marker belongs to later records.
      m_nextMarkerSeen = true;
      m_served = true;
      return Found::kMarker;
    }
    if (CurrentAwaits(kind)) {
      m_served = true;
      origin->line = m_current.line;
      origin->recordTime = RecordTime::JsonNumber(m_current.timeText);
      origin->pass = m_pass;
      return Found::kRecord;
    }
    if (!PeekNext()) {
      // Past the last record: the module plays the selection again.
      if (wrapped || !m_records.Rewind()) return Found::kUnknown;
      wrapped = true;
      ++m_pass;
      m_hasCurrent = false;
      continue;
    }
    std::swap(m_current, m_next);
    m_hasNext = false;
    m_hasCurrent = true;
    m_served = false;
  }
}

}  // namespace PelorinHost
