#include "RecordsAhead.h"

#include <utility>

#include "RecordTime.h"

namespace PelorinHost {

bool RecordsAhead::Start(const std::string& recording, std::string* error) {
  if (!m_records.Open(recording, error)) return false;
  m_walker = std::thread(&RecordsAhead::Walk, this);
  return true;
}

void RecordsAhead::Stop() {
  {
    std::lock_guard<std::mutex> guard(m_lock);
    m_stop = true;
  }
  m_changed.notify_all();
  if (m_walker.joinable()) m_walker.join();
}

RecordsAhead::Slot& RecordsAhead::SlotAt(std::vector<Slot>* batch, size_t index) {
  if (index == batch->size()) batch->emplace_back();
  return (*batch)[index];
}

// Moves a batch into the queue once there is room; false when stopped.
bool RecordsAhead::Hand(std::vector<Slot>* batch, size_t* filled) {
  batch->resize(*filled);
  *filled = 0;
  std::unique_lock<std::mutex> lock(m_lock);
  if (m_queue.size() >= kAhead / kBatch) {
    // Full: wait until the reader has taken half, so that both sides run in
    // long stretches instead of waking each other for every batch.
    m_changed.wait(lock, [this] { return m_stop || m_queue.size() <= kAhead / kBatch / 2; });
  }
  if (m_stop) return false;
  m_queue.push_back(std::move(*batch));
  if (m_spare.empty()) {
    batch->clear();
    batch->reserve(kBatch);
  } else {
    *batch = std::move(m_spare.back());
    m_spare.pop_back();
  }
  if (m_queue.size() == 1) m_changed.notify_all();  // the reader may wait for it
  return true;
}

void RecordsAhead::Walk() {
  std::vector<Slot> batch;
  batch.reserve(kBatch);
  size_t filled = 0;
  bool going = true;
  while (going) {
    uint64_t records = 0;
    while (going) {
      Slot& slot = SlotAt(&batch, filled);
      if (!m_records.Next(&slot.record)) break;
      slot.endOfPass = false;
      slot.record.text = {};
      RecordTime::MakeJsonNumber(&slot.record.timeText);
      ++records;
      if (++filled >= kBatch) going = Hand(&batch, &filled);
    }
    SlotAt(&batch, filled++).endOfPass = true;
    // A pass without records, or a file that cannot be read again, ends it.
    going = going && Hand(&batch, &filled) && records > 0 && m_records.Rewind();
  }
  std::lock_guard<std::mutex> guard(m_lock);
  m_walkEnded = true;
  m_changed.notify_all();
}

const SelectedRecord* RecordsAhead::Next() {
  if (m_takenAt == m_taken.size()) {
    std::unique_lock<std::mutex> lock(m_lock);
    m_changed.wait(lock, [this] { return m_stop || m_walkEnded || !m_queue.empty(); });
    if (m_queue.empty()) return nullptr;
    if (m_taken.capacity() > 0) m_spare.push_back(std::move(m_taken));
    m_taken = std::move(m_queue.front());
    m_queue.pop_front();
    m_takenAt = 0;
    if (m_queue.size() == kAhead / kBatch / 2) m_changed.notify_all();
  }
  const Slot& slot = m_taken[m_takenAt++];
  return slot.endOfPass ? nullptr : &slot.record;
}

}  // namespace PelorinHost
