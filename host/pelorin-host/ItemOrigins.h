#pragma once
// ItemOrigins: tells for each item that a record produced (TMC message,
// service list, online traffic call) the recording's line and record time it
// came from, and the pass, and recognises the host's own marker calls.
// The module plays records in order and makes at most one item of each, so
// ItemOrigins walks the same selection of the recording as PrivateEvents
// wrote, one record ahead at most: records that yield nothing are passed
// over, and where the host could not tell whether a record yields its item,
// the marker call written before the next record settles it. A new pass
// begins when the walk has passed the last record. Constant memory.
// Called on the module's work-loop thread (and the answering thread of the
// online traffic service while it drains); serialised by its own lock.

#include <cstdint>
#include <mutex>
#include <string>

#include "RecordYield.h"
#include "SelectedRecords.h"
#include "Selection.h"

namespace PelorinHost {

struct ItemOrigin {
  uint64_t line = 0;
  std::string recordTime;  // a JSON number
  uint32_t pass = 1;
};

class ItemOrigins {
 public:
  enum class Found { kRecord, kMarker, kUnknown };

  explicit ItemOrigins(const Selection& selection) : m_records(selection) {}

  bool Open(const std::string& recording, std::string* error);

  // `markerCall` with `value`: the item is a "setTimeoutForFallback" call
  // with that argument, which may be the host's marker.
  Found Find(ItemKind kind, bool markerCall, int64_t value, ItemOrigin* origin);

 private:
  bool PeekNext();
  bool CurrentAwaits(ItemKind kind) const;

  std::mutex m_lock;
  SelectedRecords m_records;
  SelectedRecord m_current;
  bool m_hasCurrent = false;
  bool m_served = false;
  SelectedRecord m_next;
  bool m_hasNext = false;
  bool m_nextMarkerSeen = false;
  uint32_t m_pass = 1;
};

}  // namespace PelorinHost
