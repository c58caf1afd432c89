#pragma once
// TextReportWriter: the report for people, one line per diagnostic in the
// usual "file:line: severity: message" form ("file: severity: message" for
// the whole file), a few "file: summary: ..." lines per file and a
// "total: ..." line. Every byte that comes from a recording or the command
// line (file names, tags, stop reasons) is escaped for the terminal; the
// messages arrive with theirs escaped already.

#include <ostream>

#include "host/pelorin-check/ReportWriter.h"

namespace PelorinCheck {

class TextReportWriter : public ReportWriter {
 public:
  explicit TextReportWriter(std::ostream& out) : m_out(out) {}

  void WriteDiagnostic(const Diagnostic& diagnostic) override;
  void WriteSummary(const FileSummary& summary) override;
  void WriteTotal(const RunTotal& total) override;

 private:
  void WriteRecordCounts(const FileSummary& summary);
  void WriteTimes(const FileSummary& summary);
  void WriteStop(const FileSummary& summary);
  // "FILE: summary: " with the file name escaped.
  void BeginSummaryLine(const FileSummary& summary);

  std::ostream& m_out;
};

}  // namespace PelorinCheck
