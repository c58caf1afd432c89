#include "ItemOrigins.h"

namespace PelorinHost {

bool ItemOrigins::Open(const std::string& recording, std::string* error) {
  return m_records.Start(recording, error);
}

bool ItemOrigins::Find(ItemKind kind, ItemOrigin* origin) {
  std::lock_guard<std::mutex> guard(m_lock);
  bool wrapped = false;
  for (;;) {
    if (!m_records.Next(&m_record)) {
      // Past the last record: the module plays the selection again.
      if (wrapped) return false;
      wrapped = true;
      ++m_pass;
      continue;
    }
    if (m_record.yield.yields && m_record.yield.kind == kind) break;
  }
  origin->line = m_record.line;
  origin->recordTime = m_record.timeText;
  origin->pass = m_pass;
  return true;
}

}  // namespace PelorinHost
