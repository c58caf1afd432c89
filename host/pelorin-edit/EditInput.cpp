#include "host/pelorin-edit/EditInput.h"

#include <cerrno>
#include <cstring>

namespace PelorinEdit {

bool EditInput::Open(const std::string& path, std::string* reason) {
  return m_reader.Open(path == "-" ? "/dev/stdin" : path, reason);
}

bool EditInput::Next() {
  using Quillan::ReadStatus;
  while (!m_ended) {
    errno = 0;
    const ReadStatus status = m_reader.Next();
    if (status == ReadStatus::kMalformedLine) {
      m_stopLine = m_reader.Number();
      m_stopReason = m_reader.Shape().StopReason();
    } else if (status == ReadStatus::kReadError) {
      m_stopLine = m_reader.Number();
      m_stopReason =
          std::string("read error: ") + (errno != 0 ? std::strerror(errno) : "I/O error");
      m_readFailed = true;
    }
    if (status != ReadStatus::kRecord) break;
    const uint64_t line = m_reader.Number();
    if (m_selection.EndsBefore(line)) break;
    const Quillan::Record& record = m_reader.Record();
    if (!m_firstKnown) {
      m_firstKnown = true;
      m_firstTime = record.time;
    }
    if (m_selection.Accepts(line, record.time, m_firstTime, record.tag)) return true;
    if (m_state != nullptr && m_selection.PlaysTag(record.tag) &&
        m_selection.BeforeFrom(line, record.time, m_firstTime)) {
      m_state->Offer(m_reader, Time(), m_index);
    }
  }
  m_ended = true;
  return false;
}

}  // namespace PelorinEdit
