#pragma once
// EditInput: one recording given to pelorin-edit, read with the tools'
// RecordingReader and Selection: hands out its selected records one at a
// time, whole lines as read, and offers the records before the cut point
// to the cut's state. Its reading ends where playback would end: at the end
// of the file, past the last line the selection can take, or at the first
// line the module rejects (Stopped() then says where and why). Holds one
// record; constant memory in the file's size.

#include <cstddef>
#include <cstdint>
#include <string>

#include "host/recording/CutState.h"
#include "host/recording/RecordingReader.h"
#include "host/recording/Selection.h"

namespace PelorinEdit {

using PelorinRecording::CutState;
using PelorinRecording::DataFile;
using PelorinRecording::StateRecord;

class EditInput {
 public:
  // `state` null when the state is not wanted (no --from, or --no-state);
  // `shift` moves this input's records for the merge.
  EditInput(const PelorinRecording::Selection& selection, CutState* state, size_t index,
            double shift)
      : m_selection(selection),
        m_state(state),
        m_index(index),
        m_shift(shift),
        m_reader(true) {}

  // `path` "-" reads standard input. False with the OS reason.
  bool Open(const std::string& path, std::string* reason);
  // Reads on to the next selected record; false at the end of the input.
  bool Next();

  // The record last handed out:
  double Time() const { return m_reader.Record().time + m_shift; }  // moved for the merge
  const PelorinRecording::RecordingReader& Reader() const { return m_reader; }
  size_t Index() const { return m_index; }
  double Shift() const { return m_shift; }

  // Where reading ended early: the line (0 when it did not) and why.
  uint64_t StopLine() const { return m_stopLine; }
  const std::string& StopReason() const { return m_stopReason; }
  // Whether the file could not be read to its end (read error).
  bool ReadFailed() const { return m_readFailed; }


 private:
  const PelorinRecording::Selection& m_selection;
  CutState* m_state;
  const size_t m_index;
  const double m_shift;
  PelorinRecording::RecordingReader m_reader;
  bool m_ended = false;
  bool m_firstKnown = false;
  double m_firstTime = 0.0;
  uint64_t m_stopLine = 0;
  std::string m_stopReason;
  bool m_readFailed = false;
};

}  // namespace PelorinEdit
