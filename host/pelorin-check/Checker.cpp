#include "host/pelorin-check/Checker.h"

#include <cerrno>
#include <cstring>

#include "host/pelorin-check/CheckObserver.h"
#include "host/pelorin-check/LineTap.h"
#include "host/pelorin-check/LocalFile.h"
#include "host/pelorin-check/RecordChecks.h"
#include "player/InputFile.h"
#include "player/Record.h"
#include "player/RecordReader.h"

namespace PelorinCheck {
namespace {

const char kStandardInputPath[] = "/dev/stdin";
const char kByteOrderMark[] = "\xEF\xBB\xBF";

// Why the module's reader cannot open `local` again as `file`; empty when
// it can.
std::string OpenFailure(const LocalFile& local, Quillan::InputFile& file) {
  errno = 0;
  const Quillan::FileStatus status = file.Open();
  if (status == Quillan::FileStatus::kSuccess) return "";
  if (status == Quillan::FileStatus::kOpenFailed && errno != 0) return std::strerror(errno);
  return "open failed (" + local.ModulePath() + ")";
}

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
  // Opened by this computer's path rules, then read with the module's reader.
  LocalFile local;
  std::string failure;
  if (!local.Open(path, &failure)) {
    summary.SetUnusable(failure);
    return summary;
  }
  Quillan::InputFile file(local.ModulePath(), 0);
  failure = OpenFailure(local, file);
  if (!failure.empty()) {
    summary.SetUnusable(failure);
    return summary;
  }
  m_shown = 0;
  m_pastBinary = false;
  LineTap tap(file);
  ReadRecords(name, eventsPath, tap, summary);
  if (m_stopped) return summary;
  ReportEnd(name, summary);
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
    if (m_stop && m_stop()) {
      m_stopped = true;
      return;
    }
    if (status == Quillan::ReadStatus::kEndOfInput) return;
    ++line;
    if (status == Quillan::ReadStatus::kReadError) {
      ReportReadError(name, line, tap, summary);
      return;
    }
    CheckLineBytes(name, line, tap, summary);
    if (status == Quillan::ReadStatus::kMalformedLine) {
      ReportMalformedLine(name, line, tap, summary);
      continue;
    }
    m_found.clear();
    const bool delivered = checks.Check(line, record, tap.Line(), m_found);
    summary.AddRecord(record.time, record.tag, record.payload, delivered);
    if (m_observer != nullptr) m_observer->OnRecord(line, record);
    for (const Diagnostic& diagnostic : m_found) Emit(diagnostic, summary);
    CheckPayloadCut(name, line, tap.Line(), record, summary);
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

void Checker::CheckLineBytes(const std::string& name, uint64_t line, const LineTap& tap,
                             FileSummary& summary) {
  const LineShape& shape = tap.Line();
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

void Checker::ReportMalformedLine(const std::string& name, uint64_t line, const LineTap& tap,
                                  FileSummary& summary) {
  const std::string reason = tap.Line().StopReason();
  const uint64_t binary = tap.Line().BinaryByte();
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

void Checker::ReportReadError(const std::string& name, uint64_t line, const LineTap& tap,
                              FileSummary& summary) {
  const bool first = summary.StopLine() == 0;
  summary.SetReadError(line);
  Diagnostic diagnostic;
  diagnostic.file = name;
  diagnostic.line = line;
  diagnostic.severity = Severity::kError;
  diagnostic.kind = DiagnosticKind::kReadError;
  diagnostic.hasByte = true;
  diagnostic.byte = tap.Offset() + 1;
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
