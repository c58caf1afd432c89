#pragma once
// RecordsAhead: walks the selection of a recording on a thread of its own,
// pass after pass, up to a fixed number of records ahead of its reader, so
// that following what the module plays costs the module's work-loop thread
// no reading or parsing. Next is called by one thread at a time (ItemOrigins);
// the walking thread only fills the queue, handing over whole batches, so
// that neither side takes the lock per record. Batches the reader is done
// with go back to the walker, which fills them again in place: once warm,
// no side allocates. Stop (also the destructor) ends the thread.

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "host/recording/SelectedRecords.h"
#include "host/recording/Selection.h"

namespace PelorinHost {

using PelorinRecording::SelectedRecord;
using PelorinRecording::SelectedRecords;
using PelorinRecording::Selection;

class RecordsAhead {
 public:
  explicit RecordsAhead(const Selection& selection) : m_records(selection, SelectedRecords::Keep::kYield) {}
  ~RecordsAhead() { Stop(); }
  RecordsAhead(const RecordsAhead&) = delete;
  RecordsAhead& operator=(const RecordsAhead&) = delete;

  // Opens the recording and starts the walk; false with `error` when the
  // recording cannot be read.
  bool Start(const std::string& recording, std::string* error);
  void Stop();

  // The next record of the pass (its text left empty, its time text made a
  // JSON number, RecordTime::MakeJsonNumber), valid until the next call; null at
  // the end of the pass, after which the next pass follows, or when nothing
  // follows.
  const SelectedRecord* Next();

 private:
  struct Slot {
    bool endOfPass = false;
    SelectedRecord record;
  };
  static constexpr size_t kAhead = 4096;
  static constexpr size_t kBatch = 256;

  void Walk();
  // The slot to fill next: a kept one of the batch, or a new one.
  static Slot& SlotAt(std::vector<Slot>* batch, size_t index);
  // Hands the first `filled` slots over and takes a batch to fill next.
  bool Hand(std::vector<Slot>* batch, size_t* filled);

  SelectedRecords m_records;
  std::thread m_walker;
  std::mutex m_lock;
  std::condition_variable m_changed;
  std::deque<std::vector<Slot>> m_queue;   // batches, guarded by m_lock
  std::vector<std::vector<Slot>> m_spare;  // read batches, guarded by m_lock
  bool m_walkEnded = false;                // guarded by m_lock
  bool m_stop = false;                     // guarded by m_lock
  std::vector<Slot> m_taken;               // the reader's own batch
  size_t m_takenAt = 0;
};

}  // namespace PelorinHost
