#pragma once
// SelectedRecords: the records of a recording that a Selection plays, in
// file order, each with its original line number and what it will yield,
// read by the tools' RecordingReader. A cut at --from that carries the
// state begins with the state records (CutState), each with its own line
// and record time but played at the cut's first record's time, so that it
// plays at once; its text then holds that time. A pass ends at the end of the file or
// at the first line the module rejects (playback ends there). The same walk
// is made to write the private events file and to follow what the module
// played, so both agree on every record. Constant memory in the file's
// size; used by one thread at a time.

#include <cstdint>
#include <string>
#include <string_view>

#include <vector>

#include "host/recording/CutState.h"
#include "host/recording/RecordingReader.h"
#include "host/recording/Selection.h"

namespace PelorinRecording {

struct SelectedRecord {
  uint64_t line = 0;
  std::string_view text;  // the line as played, without its line end, when
                          // kept; valid until the next record is read
  std::string timeText;   // the bytes before the first blank, as recorded
  std::string tag;
  double time = 0.0;    // as the module reads it; 0 when not a number
  double played = 0.0;  // the time it plays at: `time`, or the cut's
  RecordYield yield;    // when asked for (always for the state)
  bool state = false;   // a record of the head unit's state at the cut
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
  // The next record the selection takes; false at the end of the pass.
  bool NextSelected(SelectedRecord* record);
  // Holds the cut's first record back and gives the first state record.
  void BeginState(SelectedRecord* record);
  void GiveState(SelectedRecord* record);

  const Selection& m_selection;
  const Keep m_keep;
  RecordingReader m_reader;
  bool m_ended = false;
  bool m_firstKnown = false;
  double m_firstTime = 0.0;
  // The state at the cut, while its records and the held record go out.
  CutState m_state;
  bool m_cutReached = false;
  std::vector<StateRecord> m_stateRecords;
  size_t m_stateAt = 0;
  SelectedRecord m_held;
  std::string m_heldText;
  bool m_holding = false;
  std::string m_stateText;
};

}  // namespace PelorinRecording
