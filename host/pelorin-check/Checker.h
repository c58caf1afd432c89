#pragma once
// Checker: checks one events file after another the way playback reads
// them: the tools' RecordingReader takes the file line by line with the
// module's own readers (the lines are numbered the same way) and
// RecordChecks looks at each record. Lines the reader rejects and read
// errors are errors (playback ends at the first of them); everything else is
// a warning. Lines after the end of playback are still checked, so that one
// run shows everything there is to fix, but do not count as played.
//
// A line that the reader rejects and that holds binary bytes (LineShape)
// is binary data: it gets one diagnostic, and nothing after it is shown. At
// most --max-errors diagnostics per file are written; the rest are counted
// in the summary.
//
// Diagnostics go to the ReportWriter as soon as they are found, and one
// summary after each file. Memory does not grow with the file. One thread.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "host/pelorin-check/Diagnostic.h"
#include "host/pelorin-check/FileSummary.h"
#include "host/pelorin-check/Options.h"
#include "host/pelorin-check/ReportWriter.h"
#include "host/common/LineShape.h"
#include "host/pelorin-check/TpegDirectory.h"
#include "host/recording/RecordingReader.h"
#include "player/Record.h"

namespace PelorinCheck {

class CheckObserver;

class Checker {
 public:
  // The name "-" stands for standard input.
  static constexpr const char* kStandardInput = "-";

  // Uses --speed, --strict and --max-errors of `options`. `tpegs` and
  // `writer` must outlive the checker.
  Checker(const Options& options, const TpegDirectory& tpegs, ReportWriter& writer);

  // Asked before every line; true ends the file at once, without a summary
  // (a stop signal, or output that can no longer be written).
  void StopWhen(std::function<bool()> stop) { m_stop = std::move(stop); }
  bool Stopped() const { return m_stopped; }

  // Also shows every record and finding to `observer` (null: none), the
  // findings that the limits hide included. It must outlive the checks it
  // follows.
  void SetObserver(CheckObserver* observer) { m_observer = observer; }

  // Checks one file and writes its diagnostics and summary. Returns the
  // file's summary (errors and warnings included). A file that cannot be
  // opened, or is a directory, gets no report: its summary says why.
  FileSummary CheckFile(const std::string& name);

 private:
  void ReadRecords(const std::string& name, const std::string& eventsPath, PelorinRecording::RecordingReader& reader,
                   FileSummary& summary);
  // A NUL byte in the payload of a record that plays: the reader ends the
  // payload there, so what follows it never reaches a producer.
  void CheckPayloadCut(const std::string& name, uint64_t line, const PelorinTools::LineShape& shape,
                       const Quillan::Record& record, FileSummary& summary);
  void CheckLineBytes(const std::string& name, uint64_t line, const PelorinRecording::RecordingReader& reader,
                      FileSummary& summary);
  void ReportMalformedLine(const std::string& name, uint64_t line, const PelorinRecording::RecordingReader& reader,
                           FileSummary& summary);
  void ReportReadError(const std::string& name, uint64_t line, const PelorinRecording::RecordingReader& reader,
                       FileSummary& summary);
  void ReportEnd(const std::string& name, FileSummary& summary);
  void Emit(const Diagnostic& diagnostic, FileSummary& summary);

  double m_otherSpeed;
  bool m_strict;
  uint32_t m_maxShown;  // per file; 0 for all
  const TpegDirectory& m_tpegs;
  ReportWriter& m_writer;
  CheckObserver* m_observer = nullptr;
  std::function<bool()> m_stop;
  bool m_stopped = false;
  // Of the file being checked.
  uint32_t m_shown = 0;
  bool m_pastBinary = false;        // a line of binary data was reported
  std::vector<Diagnostic> m_found;  // of the record being checked; reused
};

}  // namespace PelorinCheck
