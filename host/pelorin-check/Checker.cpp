#include "host/pelorin-check/Checker.h"

#include <cerrno>
#include <cstring>

#include "host/pelorin-check/CheckObserver.h"
#include "host/pelorin-check/LineTap.h"
#include "host/pelorin-check/RecordChecks.h"
#include "player/InputFile.h"
#include "player/Record.h"
#include "player/RecordReader.h"

namespace PelorinCheck {
namespace {

const char kStandardInputPath[] = "/dev/stdin";

const char* OpenFailureText(Quillan::FileStatus status) {
  switch (status) {
    case Quillan::FileStatus::kOpenFailed:
      return std::strerror(errno);
    case Quillan::FileStatus::kIoError:
      return "empty path";
    default:
      return "open failed";
  }
}

}  // namespace

Checker::Checker(double otherSpeed, const TpegDirectory& tpegs, ReportWriter& writer)
    : m_otherSpeed(otherSpeed), m_tpegs(tpegs), m_writer(writer) {}

FileSummary Checker::CheckFile(const std::string& name) {
  FileSummary summary(name, m_otherSpeed);
  const bool standardInput = name == kStandardInput;
  // The TPEG directory defaults to the events file's folder; for standard
  // input that is the current folder.
  const std::string eventsPath = standardInput ? std::string() : name;
  Quillan::InputFile file(standardInput ? std::string(kStandardInputPath) : name, 0);
  errno = 0;
  const Quillan::FileStatus status = file.Open();
  if (status != Quillan::FileStatus::kSuccess) {
    Diagnostic diagnostic;
    diagnostic.file = name;
    diagnostic.severity = Severity::kError;
    diagnostic.kind = DiagnosticKind::kOpenFailed;
    diagnostic.message = std::string("cannot open the events file: ") + OpenFailureText(status);
    Emit(diagnostic, summary);
    return summary;
  }
  LineTap tap(file);
  ReadRecords(name, eventsPath, tap, summary);
  if (m_observer != nullptr) m_observer->OnFileChecked(summary);
  m_writer.WriteSummary(summary);
  return summary;
}

void Checker::ReadRecords(const std::string& name, const std::string& eventsPath, LineTap& tap,
                          FileSummary& summary) {
  Quillan::RecordReader reader(tap);
  RecordChecks checks(name, eventsPath, m_tpegs);
  Quillan::Record record;
  uint64_t line = 0;
  for (;;) {
    tap.BeginLine();
    const Quillan::ReadStatus status = reader.ReadRecord(record);
    if (status == Quillan::ReadStatus::kEndOfInput) return;
    ++line;
    if (status == Quillan::ReadStatus::kReadError) {
      ReportReadError(name, line, tap, summary);
      return;
    }
    if (status == Quillan::ReadStatus::kMalformedLine) {
      ReportMalformedLine(name, line, tap, summary);
      continue;
    }
    summary.AddRecord(record.time, record.tag);
    if (m_observer != nullptr) m_observer->OnRecord(line, record);
    m_found.clear();
    checks.Check(line, record, tap.Line(), m_found);
    for (const Diagnostic& diagnostic : m_found) Emit(diagnostic, summary);
  }
}

void Checker::ReportMalformedLine(const std::string& name, uint64_t line, const LineTap& tap,
                                  FileSummary& summary) {
  const std::string reason = tap.Line().MalformedReason();
  const bool first = summary.StopLine() == 0;
  summary.AddMalformedLine(line, reason);
  Diagnostic diagnostic;
  diagnostic.file = name;
  diagnostic.line = line;
  diagnostic.severity = Severity::kError;
  diagnostic.kind = DiagnosticKind::kMalformedLine;
  diagnostic.message = "malformed line: " + reason +
                       (first ? "; playback ends here" : "; playback would end here too");
  Emit(diagnostic, summary);
}

void Checker::ReportReadError(const std::string& name, uint64_t line, const LineTap& tap,
                              FileSummary& summary) {
  const bool first = summary.StopLine() == 0;
  summary.SetReadError(line);
  Diagnostic diagnostic;
  diagnostic.file = name;
  diagnostic.line = line;
  diagnostic.severity = Severity::kError;
  diagnostic.kind = DiagnosticKind::kReadError;
  diagnostic.message = "read error at byte " + std::to_string(tap.Offset()) +
                       (first ? "; playback ends here" : "; reading stops here");
  diagnostic.hasOffset = true;
  diagnostic.offset = tap.Offset();
  Emit(diagnostic, summary);
}

void Checker::Emit(const Diagnostic& diagnostic, FileSummary& summary) {
  summary.AddDiagnostic(diagnostic.severity);
  if (m_observer != nullptr) m_observer->OnDiagnostic(diagnostic);
  m_writer.WriteDiagnostic(diagnostic);
}

}  // namespace PelorinCheck
