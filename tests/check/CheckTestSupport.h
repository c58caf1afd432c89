#pragma once
// Helpers for the checker's tests: the folder for events files shared with
// the host's tests, and a report writer that keeps what it is given.

#include <vector>

#include "host/pelorin-check/ReportWriter.h"
#include "tests/host/ToolProcess.h"

namespace pelorin_check_test {

using pelorin_tool_test::TestFolder;

class CollectingWriter : public PelorinCheck::ReportWriter {
 public:
  void WriteDiagnostic(const PelorinCheck::Diagnostic& diagnostic) override {
    diagnostics.push_back(diagnostic);
  }
  void WriteSummary(const PelorinCheck::FileSummary& summary) override {
    summaries.push_back(summary);
  }
  void WriteTotal(const PelorinCheck::RunTotal&) override {}
  std::vector<PelorinCheck::Diagnostic> OfKind(PelorinCheck::DiagnosticKind kind) const {
    std::vector<PelorinCheck::Diagnostic> found;
    for (const auto& diagnostic : diagnostics) {
      if (diagnostic.kind == kind) found.push_back(diagnostic);
    }
    return found;
  }

  std::vector<PelorinCheck::Diagnostic> diagnostics;
  std::vector<PelorinCheck::FileSummary> summaries;
};

}  // namespace pelorin_check_test
