#pragma once
// CheckObserver: follows the Checker's single pass over an events file, for
// views that need more than the diagnostics (the timeline). The Checker
// calls it on its own thread, in file order: OnRecord for every line that
// holds a record, then OnDiagnostic for what was found on that line (and
// for lines the reader rejects), and OnFileChecked once the whole file has
// been read (not for a file that does not open). Not owned by the Checker.

#include <cstdint>

#include "host/pelorin-check/Diagnostic.h"
#include "host/pelorin-check/FileSummary.h"
#include "player/Record.h"

namespace PelorinCheck {

class CheckObserver {
 public:
  virtual ~CheckObserver() = default;
  virtual void OnRecord(uint64_t line, const Quillan::Record& record) = 0;
  virtual void OnDiagnostic(const Diagnostic& diagnostic) = 0;
  virtual void OnFileChecked(const FileSummary& summary) = 0;
};

}  // namespace PelorinCheck
