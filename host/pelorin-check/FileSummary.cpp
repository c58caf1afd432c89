#include "host/pelorin-check/FileSummary.h"

#include <utility>

#include "host/common/TimeText.h"
#include "producers/TotCall.h"

namespace PelorinCheck {

using PelorinTools::TimeText;

FileSummary::FileSummary(std::string file, double otherSpeed)
    : m_file(std::move(file)),
      m_hasOtherSpeed(otherSpeed > 0.0),
      m_otherSpeed(otherSpeed > 0.0 ? otherSpeed : 1.0) {}

void FileSummary::AddRecord(double time, const std::string& tag, const std::string& payload,
                            bool delivered) {
  ++m_lines;
  if (m_stopLine != 0) return;
  if (!HasRecords()) m_firstTime = time;
  m_lastTime = time;
  if (delivered) {
    ++m_playedRecords;
    m_tags.Add(tag);
    if (tag == Quillan::TotCall::kTag && WaitsForAnswer(payload)) ++m_answeredCalls;
  } else {
    ++m_droppedRecords;
  }
  m_recordedSpeed.AddRecord(time);
  if (m_hasOtherSpeed) m_otherSpeed.AddRecord(time);
}

bool FileSummary::WaitsForAnswer(const std::string& payload) {
  const std::string method = Quillan::TotCall::Parse(payload).method;
  return method == "getInventory" || method == "getNewData";
}

void FileSummary::AddMalformedLine(uint64_t line, const std::string& reason) {
  ++m_lines;
  if (m_stopLine != 0) return;
  m_stopLine = line;
  m_stopReason = reason;
}

void FileSummary::SetReadError(uint64_t line) {
  m_lines = line;
  m_readError = true;
  if (m_stopLine != 0) return;
  m_stopLine = line;
  m_stopReason = "read error";
}

void FileSummary::AddDiagnostic(Severity severity) {
  if (severity == Severity::kError) {
    ++m_errors;
  } else {
    ++m_warnings;
  }
}

int64_t FileSummary::SpanMs() const { return TimeText::RoundedMs(m_lastTime - m_firstTime); }

}  // namespace PelorinCheck
