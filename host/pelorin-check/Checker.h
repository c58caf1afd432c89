#pragma once
// Checker: checks one events file after another the way playback reads
// them: the module's InputFile and RecordReader take the file line by line
// (every ReadRecord call is one line; the lines are numbered the same way)
// and RecordChecks looks at each record. Lines the reader rejects and read
// errors are errors (playback ends at the first of them); everything else is
// a warning. Lines after the end of playback are still checked, so that one
// run shows everything there is to fix, but do not count as played.
//
// Diagnostics go to the ReportWriter as soon as they are found, and one
// summary after each file. Memory does not grow with the file. One thread.

#include <cstdint>
#include <string>
#include <vector>

#include "host/pelorin-check/Diagnostic.h"
#include "host/pelorin-check/FileSummary.h"
#include "host/pelorin-check/ReportWriter.h"
#include "host/pelorin-check/TpegDirectory.h"

namespace PelorinCheck {

class CheckObserver;
class LineTap;

class Checker {
 public:
  // The name "-" stands for standard input.
  static constexpr const char* kStandardInput = "-";

  // `otherSpeed`: a second play speed for the summaries, 0 for none.
  // `tpegs` and `writer` must outlive the checker.
  Checker(double otherSpeed, const TpegDirectory& tpegs, ReportWriter& writer);

  // Checks one file and writes its diagnostics and summary. Returns the
  // file's summary (errors and warnings included).
  FileSummary CheckFile(const std::string& name);

  // Also shows every record and diagnostic to `observer` (null: none). It
  // must outlive the checks it follows.
  void SetObserver(CheckObserver* observer) { m_observer = observer; }

 private:
  void ReadRecords(const std::string& name, const std::string& eventsPath, LineTap& tap,
                   FileSummary& summary);
  void ReportMalformedLine(const std::string& name, uint64_t line, const LineTap& tap,
                           FileSummary& summary);
  void ReportReadError(const std::string& name, uint64_t line, const LineTap& tap,
                       FileSummary& summary);
  void Emit(const Diagnostic& diagnostic, FileSummary& summary);

  double m_otherSpeed;
  const TpegDirectory& m_tpegs;
  ReportWriter& m_writer;
  CheckObserver* m_observer = nullptr;
  std::vector<Diagnostic> m_found;  // of the record being checked; reused
};

}  // namespace PelorinCheck
