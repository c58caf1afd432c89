#include "host/pelorin-check/Checker.h"

#include <cerrno>
#include <cstring>

#include "host/pelorin-check/CheckObserver.h"
#include "host/pelorin-check/RecordChecks.h"
#include "player/Record.h"

namespace PelorinCheck {
namespace {

const char kStandardInputPath[] = "/dev/stdin";
const char kByteOrderMark[] = "\xEF\xBB\xBF";

}  // namespace

Checker::Checker(const Options& options, const TpegDirectory& tpegs, ReportWriter& writer)
    : m_otherSpeed(options.hasSpeed ? options.speed : 0.0),
      m_strict(options.strict),
      m_maxShown(options.maxErrors),
      m_tpegs(tpegs),
      m_writer(writer) {}

FileSummary Checker::CheckFile(const std::string& name) {
  FileSummary summary(name, m_otherSpeed);
  const bool standardInput = name == kStandardInput;
  // The TPEG directory defaults to the events file's folder; for standard
  // input that is the current folder.
  const std::string eventsPath = standardInput ? std::string() : name;
  const std::string path = standardInput ? std::string(kStandardInputPath) : name;
  PelorinRecording::RecordingReader reader;
  std::string failure;
  if (!reader.Open(path, &failure)) {
    summary.SetUnusable(failure);
    return summary;
  }
  m_shown = 0;
  m_pastBinary = false;
  ReadRecords(name, eventsPath, reader, summary);
  if (m_stopped) return summary;
  ReportEnd(name, summary);
  if (m_observer != nullptr) m_observer->OnFileChecked(summary);
  m_writer.WriteSummary(summary);
  return summary;
}

void Checker::ReadRecords(const std::string& name, const std::string& eventsPath,
                          PelorinRecording::RecordingReader& reader, FileSummary& summary) {
  RecordChecks checks(name, eventsPath, m_tpegs);
  for (;;) {
    const Quillan::ReadStatus status = reader.Next();
    if (m_stop && m_stop()) {
      m_stopped = true;
      return;
    }
    if (status == Quillan::ReadStatus::kEndOfInput) return;
    const uint64_t line = reader.Number();
    if (status == Quillan::ReadStatus::kReadError) {
      ReportReadError(name, line, reader, summary);
      return;
    }
    CheckLineBytes(name, line, reader, summary);
    if (status == Quillan::ReadStatus::kMalformedLine) {
      ReportMalformedLine(name, line, reader, summary);
      continue;
    }
    m_found.clear();
    const Quillan::Record& record = reader.Record();
    const bool delivered = checks.Check(line, record, reader.Shape(), m_found);
    summary.AddRecord(record.time, record.tag, record.payload, delivered);
    if (m_observer != nullptr) m_observer->OnRecord(line, record);
    for (const Diagnostic& diagnostic : m_found) Emit(diagnostic, summary);
    CheckPayloadCut(name, line, reader.Shape(), record, summary);
  }
}

void Checker::CheckPayloadCut(const std::string& name, uint64_t line, const LineShape& shape,
                              const Quillan::Record& record, FileSummary& summary) {
  const size_t nul = shape.head.find('\0');
  if (nul == std::string::npos || nul < record.payload.size() + 1) return;
  // The payload as played lies right before the NUL, behind a blank.
  const size_t begin = nul - record.payload.size();
  if (shape.head[begin - 1] != ' ' || shape.head.compare(begin, record.payload.size(), record.payload) != 0) {
    return;
  }
  Diagnostic diagnostic;
  diagnostic.file = name;
  diagnostic.line = line;
  diagnostic.kind = DiagnosticKind::kPayloadCut;
  diagnostic.tag = record.tag;
  diagnostic.hasByte = true;
  diagnostic.byte = record.payload.size() + 1;
  diagnostic.message = "a NUL byte at byte " + std::to_string(diagnostic.byte) +
                       " ends the payload: playback never sees the bytes after it";
  Emit(diagnostic, summary);
}

void Checker::CheckLineBytes(const std::string& name, uint64_t line, const PelorinRecording::RecordingReader& reader,
                             FileSummary& summary) {
  const LineShape& shape = reader.Shape();
  if (line == 1 && shape.head.compare(0, 3, kByteOrderMark) == 0) {
    Diagnostic diagnostic;
    diagnostic.file = name;
    diagnostic.line = line;
    diagnostic.kind = DiagnosticKind::kByteOrderMark;
    diagnostic.message =
        "the file starts with a UTF-8 byte-order mark; the first time stamp then does not "
        "convert and its record plays as time 0 (the interactive player never reaches it)";
    Emit(diagnostic, summary);
  }
}

void Checker::ReportMalformedLine(const std::string& name, uint64_t line, const PelorinRecording::RecordingReader& reader,
                                  FileSummary& summary) {
  const std::string reason = reader.Shape().StopReason();
  const uint64_t binary = reader.Shape().BinaryByte();
  const bool first = summary.StopLine() == 0;
  summary.AddMalformedLine(line, reason);
  Diagnostic diagnostic;
  diagnostic.file = name;
  diagnostic.line = line;
  diagnostic.severity = Severity::kError;
  diagnostic.kind = binary != 0 ? DiagnosticKind::kBinaryData : DiagnosticKind::kMalformedLine;
  diagnostic.message = (binary != 0 ? "" : "malformed line: ") + reason +
                       (first ? "; playback ends here" : "; playback would end here too");
  if (binary == 0) {
    Emit(diagnostic, summary);
    return;
  }
  if (m_pastBinary) return;
  diagnostic.hasByte = true;
  diagnostic.byte = binary;
  diagnostic.message += " (later findings in this file are not shown)";
  // Shown whatever the limit: it explains why the rest is not.
  if (m_observer != nullptr) m_observer->OnDiagnostic(diagnostic);
  summary.AddDiagnostic(diagnostic.severity);
  m_writer.WriteDiagnostic(diagnostic);
  m_pastBinary = true;
}

void Checker::ReportReadError(const std::string& name, uint64_t line, const PelorinRecording::RecordingReader& reader,
                              FileSummary& summary) {
  const bool first = summary.StopLine() == 0;
  summary.SetReadError(line);
  Diagnostic diagnostic;
  diagnostic.file = name;
  diagnostic.line = line;
  diagnostic.severity = Severity::kError;
  diagnostic.kind = DiagnosticKind::kReadError;
  diagnostic.hasByte = true;
  diagnostic.byte = reader.Offset() + 1;
  diagnostic.message = "read error at byte " + std::to_string(diagnostic.byte) +
                       (first ? "; playback ends here" : "; reading stops here");
  Emit(diagnostic, summary);
}

// What only the whole file tells: an empty recording.
void Checker::ReportEnd(const std::string& name, FileSummary& summary) {
  if (summary.Lines() != 0) return;
  Diagnostic diagnostic;
  diagnostic.file = name;
  diagnostic.severity = m_strict ? Severity::kError : Severity::kWarning;
  diagnostic.kind = DiagnosticKind::kEmptyRecording;
  diagnostic.message = "empty recording: the file has no line, nothing plays";
  Emit(diagnostic, summary);
}

void Checker::Emit(const Diagnostic& diagnostic, FileSummary& summary) {
  if (m_observer != nullptr) m_observer->OnDiagnostic(diagnostic);
  // Past binary data findings are noise: neither counted nor shown.
  if (m_pastBinary) return;
  summary.AddDiagnostic(diagnostic.severity);
  if (m_maxShown != 0 && m_shown >= m_maxShown) {
    summary.AddHiddenDiagnostic();
    return;
  }
  ++m_shown;
  m_writer.WriteDiagnostic(diagnostic);
}

}  // namespace PelorinCheck
