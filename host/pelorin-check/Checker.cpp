#include "host/pelorin-check/Checker.h"

#include <sys/stat.h>

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
const char kByteOrderMark[] = "\xEF\xBB\xBF";

// Why `path` cannot be read as an events file; empty when it can be opened.
std::string OpenFailure(const std::string& path, Quillan::InputFile& file) {
  struct stat info;
  if (::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) return std::strerror(EISDIR);
  errno = 0;
  const Quillan::FileStatus status = file.Open();
  if (status == Quillan::FileStatus::kSuccess) return "";
  if (status == Quillan::FileStatus::kOpenFailed && errno != 0) return std::strerror(errno);
  return path.empty() ? "empty path" : "open failed";
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
  Quillan::InputFile file(path, 0);
  const std::string failure = OpenFailure(path, file);
  if (!failure.empty()) {
    summary.SetUnusable(failure);
    return summary;
  }
  m_shown = 0;
  m_binaryByte = 0;
  m_binaryLine = 0;
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
  }
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
  if (m_binaryByte != 0) return;
  const void* nul = std::memchr(shape.head.data(), 0, shape.head.size());
  if (nul == nullptr) return;
  m_binaryByte = shape.start + 1 +
                 static_cast<uint64_t>(static_cast<const char*>(nul) - shape.head.data());
  m_binaryLine = line;
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
  diagnostic.hasByte = true;
  diagnostic.byte = tap.Offset() + 1;
  diagnostic.message = "read error at byte " + std::to_string(diagnostic.byte) +
                       (first ? "; playback ends here" : "; reading stops here");
  Emit(diagnostic, summary);
}

// What only the whole file tells: binary data and an empty recording.
void Checker::ReportEnd(const std::string& name, FileSummary& summary) {
  Diagnostic diagnostic;
  diagnostic.file = name;
  if (m_binaryByte != 0) {
    const bool stops = summary.StopLine() != 0;
    diagnostic.line = m_binaryLine;
    diagnostic.severity = stops ? Severity::kError : Severity::kWarning;
    diagnostic.kind = DiagnosticKind::kBinaryData;
    diagnostic.hasByte = true;
    diagnostic.byte = m_binaryByte;
    diagnostic.message =
        "binary data at byte " + std::to_string(m_binaryByte) +
        (stops ? "; playback stops at line " + std::to_string(summary.StopLine())
               : "; playback reads it as records to the end") +
        " (later findings in this file are not shown)";
    // Shown whatever the limit: it explains why the rest is not.
    m_binaryByte = 0;
    summary.AddDiagnostic(diagnostic.severity);
    m_writer.WriteDiagnostic(diagnostic);
    return;
  }
  if (summary.Lines() != 0) return;
  diagnostic.severity = m_strict ? Severity::kError : Severity::kWarning;
  diagnostic.kind = DiagnosticKind::kEmptyRecording;
  diagnostic.message = "empty recording: the file has no line, nothing plays";
  Emit(diagnostic, summary);
}

void Checker::Emit(const Diagnostic& diagnostic, FileSummary& summary) {
  if (m_observer != nullptr) m_observer->OnDiagnostic(diagnostic);
  // Past binary data findings are noise: neither counted nor shown.
  if (m_binaryByte != 0) return;
  summary.AddDiagnostic(diagnostic.severity);
  if (m_maxShown != 0 && m_shown >= m_maxShown) {
    summary.AddHiddenDiagnostic();
    return;
  }
  ++m_shown;
  m_writer.WriteDiagnostic(diagnostic);
}

}  // namespace PelorinCheck
