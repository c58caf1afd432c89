#pragma once
// SelectedRecords: the records of a recording that a Selection plays, in
// file order, each with its original line number and what it will yield.
// A pass ends at the end of the file or at the first line the module would
// reject (playback ends there). The same walk is made twice: once to write
// the private events file and once to follow what the module played, so
// both agree on every record and on where a marker line stands before one.
// Constant memory; used by one thread at a time.

#include <cstdint>
#include <string>
#include <string_view>

#include "EventLines.h"
#include "RecordYield.h"
#include "Selection.h"

namespace PelorinHost {

struct SelectedRecord {
  uint64_t line = 0;
  std::string_view text;  // the line as in the file, without its line end;
                          // valid until the next record is read
  std::string timeText;   // the bytes before the first blank
  std::string tag;
  double time = 0.0;  // as the module reads it; 0 when not a number
  RecordYield yield;
};

class SelectedRecords {
 public:
  explicit SelectedRecords(const Selection& selection) : m_selection(selection) {}

  bool Open(const std::string& path, std::string* error);
  // The next record of this pass; false at the end of the pass.
  bool Next(SelectedRecord* record);
  // Starts the next pass; false when the file cannot be read again.
  bool Rewind();
  // The time of the recording's first record (selected or not), once read.
  double FirstTime() const { return m_firstTime; }

 private:
  // Splits a line as the module does; false for a line it rejects.
  static bool Split(std::string_view line, std::string* timeText, std::string_view* tag,
                    std::string_view* payload);

  const Selection& m_selection;
  EventLines m_lines;
  bool m_ended = false;
  bool m_firstKnown = false;
  double m_firstTime = 0.0;
};

}  // namespace PelorinHost
