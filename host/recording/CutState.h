#pragma once
// CutState: the head unit's state at the point where a cut begins, taken
// from the records before it: the last "$TSL" service list, and of the
// online traffic calls the last one of each call that sets the service's
// state (setOnlineTrafficDataStatus, setNewSession, setTimeoutForFallback,
// dsiConnectionStateChanged, and setNewData, whose data is what the
// service shows). The queries (getInventory, getNewData) set nothing: their
// answers were consumed by the calls that waited for them. Only records
// that playback turns into an item count. Records are offered in each
// input's order; with several inputs the last in merged order (time, then
// input, then line) wins. Holds at most one line per kind. Shared by
// pelorin-edit's cuts and pelorin-host's --from (SelectedRecords); one
// thread.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/recording/RecordingReader.h"
#include "producers/TotCall.h"

namespace PelorinRecording {

struct StateRecord {
  double time = 0.0;  // the record time, as moved for the merge
  size_t input = 0;
  uint64_t line = 0;
  std::string text;  // the line as read, without its line end
  size_t timeTextLength = 0;
  std::string tag;
  RecordYield yield;
  std::string dataFile;  // the file a setNewData names; empty for others
};

// The file that a "setNewData" record that playback replays names; empty
// for every other record.
std::string DataFile(const Quillan::Record& record);

class CutState {
 public:
  // Takes the record that `reader` last read, when it is one of the state.
  void Offer(RecordingReader& reader, double time, size_t input);
  // The records of the state, in merged order.
  std::vector<StateRecord> Records() const;

 private:
  // The slot of a record's kind; kSlots when it sets no state.
  static size_t SlotOf(const Quillan::Record& record);
  static constexpr size_t kSlots = 1 + Quillan::TotCall::kMethodCount;

  bool m_set[kSlots] = {};
  StateRecord m_records[kSlots];
};

}  // namespace PelorinRecording
