#pragma once
// FileSummary: what one events file does when it plays, gathered while it is
// read: lines, the records that play (up to the first line where playback
// ends) by tag, the records that reach no consumer (dropped), their first
// and last time stamps, the play time at speed 1.0 and at an optional second
// speed and what waits for online traffic answers add to it at the least,
// where playback ends and how many lines follow that never play, and how
// many errors and warnings were found.
// Constant memory. Fed by the Checker, read by the report writers.

#include <cstdint>
#include <string>
#include <utility>

#include "host/pelorin-check/Diagnostic.h"
#include "host/pelorin-check/PlayDuration.h"
#include "host/pelorin-check/TagCounter.h"

namespace PelorinCheck {

class FileSummary {
 public:
  // `otherSpeed` 0 means that only speed 1.0 is asked for.
  FileSummary(std::string file, double otherSpeed);

  // A line that holds a record, in file order. It plays unless playback has
  // already ended; `delivered` false: it takes its time but reaches no
  // consumer (dropped).
  // `payload` tells the online traffic calls whose answer playback waits for.
  void AddRecord(double time, const std::string& tag, const std::string& payload, bool delivered);
  // A line that ends playback, or would end it if an earlier one did not.
  void AddMalformedLine(uint64_t line, const std::string& reason);
  // Reading failed at `line`: playback ends there and the lines after it are
  // unknown.
  void SetReadError(uint64_t line);
  void AddDiagnostic(Severity severity);
  // A diagnostic counted but not shown (beyond --max-errors).
  void AddHiddenDiagnostic() { ++m_hiddenDiagnostics; }
  // The file cannot be checked at all; `reason` as the OS says it.
  void SetUnusable(std::string reason) { m_unusable = std::move(reason); }

  const std::string& File() const { return m_file; }
  uint64_t Lines() const { return m_lines; }
  uint64_t PlayedRecords() const { return m_playedRecords; }
  // Records before the stop line that no consumer takes.
  uint64_t DroppedRecords() const { return m_droppedRecords; }
  // Tags of the records that play.
  const TagCounter& Tags() const { return m_tags; }
  // Whether any record is read before the stop line (played or dropped); the
  // times below cover all of them.
  bool HasRecords() const { return m_playedRecords + m_droppedRecords > 0; }
  double FirstTime() const { return m_firstTime; }
  double LastTime() const { return m_lastTime; }
  // Last minus first time stamp, in milliseconds.
  int64_t SpanMs() const;
  const PlayDuration& AtRecordedSpeed() const { return m_recordedSpeed; }
  bool HasOtherSpeed() const { return m_hasOtherSpeed; }
  // Meaningful only when HasOtherSpeed.
  const PlayDuration& AtOtherSpeed() const { return m_otherSpeed; }
  // The online traffic calls that play and whose answer playback waits for
  // ("getInventory", "getNewData"), and the time they add at any speed at
  // the least: the module looks for the answer right after the call and
  // then every 50 ms, so a service that answers after the call has returned
  // costs a step at least one look.
  uint64_t AnsweredCalls() const { return m_answeredCalls; }
  uint64_t AnswerWaitMs() const { return m_answeredCalls * kAnswerPollMs; }
  static constexpr uint64_t kAnswerPollMs = 50;

  // Where playback ends before the end of the file; 0 when it plays to the end.
  uint64_t StopLine() const { return m_stopLine; }
  const std::string& StopReason() const { return m_stopReason; }
  // Lines after the stop line; unknown after a read error.
  uint64_t LinesNeverPlayed() const { return m_lines - m_stopLine; }
  bool LinesAfterStopKnown() const { return !m_readError; }

  uint64_t Errors() const { return m_errors; }
  uint64_t Warnings() const { return m_warnings; }
  uint64_t HiddenDiagnostics() const { return m_hiddenDiagnostics; }
  // Why the file cannot be checked; empty when it can.
  const std::string& Unusable() const { return m_unusable; }

 private:
  static bool WaitsForAnswer(const std::string& payload);

  std::string m_file;
  uint64_t m_lines = 0;
  uint64_t m_playedRecords = 0;
  uint64_t m_droppedRecords = 0;
  TagCounter m_tags;
  double m_firstTime = 0.0;
  double m_lastTime = 0.0;
  PlayDuration m_recordedSpeed{1.0};
  bool m_hasOtherSpeed;
  PlayDuration m_otherSpeed;
  uint64_t m_answeredCalls = 0;
  uint64_t m_stopLine = 0;
  std::string m_stopReason;
  bool m_readError = false;
  uint64_t m_errors = 0;
  uint64_t m_warnings = 0;
  uint64_t m_hiddenDiagnostics = 0;
  std::string m_unusable;
};

}  // namespace PelorinCheck
