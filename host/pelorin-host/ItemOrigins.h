#pragma once
// ItemOrigins: tells for each item that a record produced (TMC message,
// service list, online traffic call) the recording's line and record time it
// came from, and the pass. The module plays the selected records in order
// and makes at most one item of each, which RecordYield tells from the
// record; so the item goes to the next record, in the same walk of the
// recording that the module plays, that yields an item of its kind. A new
// pass begins when the walk has passed the last record. Constant memory;
// the recording is read ahead on the thread of RecordsAhead.
// Find is called on the module's work-loop thread (and the answering thread
// of the online traffic service while it drains); serialised by a lock.

#include <cstdint>
#include <mutex>
#include <string>

#include "RecordYield.h"
#include "RecordsAhead.h"
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
  explicit ItemOrigins(const Selection& selection) : m_records(selection) {}

  bool Open(const std::string& recording, std::string* error);

  // False when no record is left to have made an item of `kind`.
  bool Find(ItemKind kind, ItemOrigin* origin);

 private:
  std::mutex m_lock;
  RecordsAhead m_records;
  SelectedRecord m_record;
  uint32_t m_pass = 1;
};

}  // namespace PelorinHost
