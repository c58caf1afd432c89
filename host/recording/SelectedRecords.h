#pragma once
// SelectedRecords: the records of a recording that a Selection plays, in
// file order, each with its original line number and what it will yield,
// read by the tools' RecordingReader. A pass ends at the end of the file or
// at the first line the module rejects (playback ends there). The same walk
// is made to write the private events file and to follow what the module
// played, so both agree on every record. Constant memory in the file's
// size; used by one thread at a time.

#include <cstdint>
#include <string>
#include <string_view>

#include "host/recording/Selection.h"
#include "host/recording/RecordingReader.h"

namespace PelorinRecording {




struct SelectedRecord {
  uint64_t line = 0;
  std::string_view text;  // the line as in the file, without its line end,
                          // when kept; valid until the next record is read
  std::string timeText;   // the bytes before the first blank
  std::string tag;
  double time = 0.0;  // as the module reads it; 0 when not a number
  RecordYield yield;  // when asked for
};

class SelectedRecords {
 public:
  // What each record comes with besides its line, time and tag.
  enum class Keep { kYield, kText };
  SelectedRecords(const Selection& selection, Keep keep)
      : m_selection(selection), m_keep(keep), m_reader(keep == Keep::kText) {}

  bool Open(const std::string& path, std::string* error);
  // The next record of this pass; false at the end of the pass.
  bool Next(SelectedRecord* record);
  // Starts the next pass; false when the file cannot be read again.
  bool Rewind();
  // The time of the recording's first record (selected or not), once read.
  double FirstTime() const { return m_firstTime; }

 private:
  const Selection& m_selection;
  const Keep m_keep;
  PelorinRecording::RecordingReader m_reader;
  bool m_ended = false;
  bool m_firstKnown = false;
  double m_firstTime = 0.0;
};

}  // namespace PelorinRecording
