#pragma once
// ItemOrigins: tells for each item that a record produced (TMC message,
// service list, online traffic call) the recording's line and record time it
// came from, and the pass. The module plays the selected records in order
// and makes at most one item of each, which RecordYields tells from the
// record; so the item goes to the next record, in the same walk of the
// recording that the module plays, that yields an item of its kind. A new
// pass begins when the walk has passed the last record. Every record passed
// is counted in a RecordTally (per tag, dropped, recorded time played).
// Constant memory; the recording is read ahead on the thread of RecordsAhead.
// Find, EndOfPass and Tally are called on the module's work-loop thread
// (Find also on the answering thread of the online traffic service while it
// drains) and at the end on the main thread; not thread-safe: the Reporter
// calls them holding an Output::Line, so that items go out in the order
// their origins were found. Line and Clock may be read from any thread.

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

#include "GapCap.h"
#include "PlaybackSummary.h"
#include "RecordsAhead.h"
#include "host/recording/SelectedRecords.h"
#include "host/recording/Selection.h"

namespace PelorinHost {

using PelorinRecording::ItemKind;
using PelorinRecording::SelectedRecord;
using PelorinRecording::SelectedRecords;
using PelorinRecording::Selection;

struct ItemOrigin {
  uint64_t line = 0;
  std::string_view recordTime;  // a JSON number, valid until the next Find
  double seconds = 0.0;         // the time the module plays the record at
  bool state = false;           // a record of the state at --from
  uint32_t pass = 1;
  uint64_t micros = 0;          // HostClock::Micros() when the item was located
};

class ItemOrigins {
 public:
  // `maxGapSeconds` (--max-gap) > 0: the tally also sums the time skipped.
  ItemOrigins(const Selection& selection, double maxGapSeconds)
      : m_records(selection), m_gaps(maxGapSeconds) {
    m_tally.capsGaps = m_gaps.Limits();
  }

  bool Open(const std::string& recording, std::string* error);

  // False when no record is left to have made an item of `kind`.
  bool Find(ItemKind kind, ItemOrigin* origin);
  // Playback reached the end of a pass: the records left in it were read
  // and dropped by the module.
  void EndOfPass();
  RecordTally Tally();

  // The line of the record last passed, 0 before the first.
  uint32_t Line() const { return m_line.load(std::memory_order_relaxed); }
  // Its record time in whole seconds as the module's consumers get it
  // (unsigned 32-bit, past 2038 too), 0 before the first.
  int64_t Clock() const { return m_clock.load(std::memory_order_relaxed); }

 private:
  // The next record of the walk, counted; false at the end of a pass.
  bool Pass();

  RecordsAhead m_records;
  const SelectedRecord* m_record = nullptr;  // the record last passed, held by m_records
  uint32_t m_pass = 1;
  bool m_passStarted = false;
  double m_passFirst = 0.0;
  double m_passLast = 0.0;
  GapCap m_gaps;
  RecordTally m_tally;
  // 32-bit atomics: lock-free on the 32-bit ARM head unit too.
  std::atomic<uint32_t> m_line{0};
  std::atomic<uint32_t> m_clock{0};
};

}  // namespace PelorinHost
