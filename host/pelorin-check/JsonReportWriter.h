#pragma once
// JsonReportWriter: the report for programs, as JSON Lines: one object per
// diagnostic ("type": "diagnostic"), one per file summary ("type":
// "summary") and one total ("type": "total") after several files, each on a
// line of its own, written as soon as it is known. Keys are lowerCamelCase;
// docs/json-check.md is the schema.
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
  void WriteTotal(const RunTotal& total) override;

 private:
  static void AppendTags(std::string& out, const FileSummary& summary);
  static void AppendTimes(std::string& out, const FileSummary& summary);
  static void AppendStop(std::string& out, const FileSummary& summary);

  std::ostream& m_out;
};

}  // namespace PelorinCheck
