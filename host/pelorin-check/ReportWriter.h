#pragma once
// ReportWriter: where the Checker sends what it finds, as it finds it:
// diagnostics in file order, then one summary per file. Implementations
// write text (TextReportWriter) or JSON Lines (JsonReportWriter) to a stream
// they do not own. One thread.

#include "host/pelorin-check/Diagnostic.h"
#include "host/pelorin-check/FileSummary.h"

namespace PelorinCheck {

class ReportWriter {
 public:
  virtual ~ReportWriter() = default;
  virtual void WriteDiagnostic(const Diagnostic& diagnostic) = 0;
  virtual void WriteSummary(const FileSummary& summary) = 0;
};

}  // namespace PelorinCheck
