#pragma once
// ReportWriter: where the Checker sends what it finds, as it finds it:
// diagnostics in file order, then one summary per file, and a total when
// several files were checked. Implementations
// write text (TextReportWriter) or JSON Lines (JsonReportWriter) to a stream
// they do not own. One thread.

#include <cstdint>

#include "host/pelorin-check/Diagnostic.h"
#include "host/pelorin-check/FileSummary.h"

namespace PelorinCheck {

// The figures of a run over several files.
struct RunTotal {
  uint64_t files = 0;
  uint64_t unusableFiles = 0;  // not checked: missing, unreadable, a directory
  uint64_t errors = 0;
  uint64_t warnings = 0;
};

class ReportWriter {
 public:
  virtual ~ReportWriter() = default;
  virtual void WriteDiagnostic(const Diagnostic& diagnostic) = 0;
  virtual void WriteSummary(const FileSummary& summary) = 0;
  virtual void WriteTotal(const RunTotal& total) = 0;
};

}  // namespace PelorinCheck
