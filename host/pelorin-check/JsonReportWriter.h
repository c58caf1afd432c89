#pragma once
// JsonReportWriter: the report for programs, as JSON Lines: one object per
// diagnostic ("type": "diagnostic") and one per file summary ("type":
// "summary"), each on a line of its own, written as soon as it is known.
// Fields that do not apply are null (summaries) or left out (diagnostics).
// Byte strings that are not UTF-8 are read as Latin-1.

#include <ostream>
#include <string>

#include "host/pelorin-check/ReportWriter.h"

namespace PelorinCheck {

class JsonReportWriter : public ReportWriter {
 public:
  explicit JsonReportWriter(std::ostream& out) : m_out(out) {}

  void WriteDiagnostic(const Diagnostic& diagnostic) override;
  void WriteSummary(const FileSummary& summary) override;

 private:
  static void AppendTags(std::string& out, const FileSummary& summary);
  static void AppendTimes(std::string& out, const FileSummary& summary);
  static void AppendStop(std::string& out, const FileSummary& summary);

  std::ostream& m_out;
};

}  // namespace PelorinCheck
