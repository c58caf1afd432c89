#pragma once
// SDDataProvider: base of the module's data-pool providers. A concrete
// provider answers the typed getters for its own value ids; this base gives
// it re-entrant write sections and the report of the ids a section changed.
//
// Writes: one thread at a time writes (the write gate); that thread may nest
// LockWrite/UnlockWrite. Only the outermost UnlockWrite releases the
// ReadWriteLock and then reports the marked ids to the data pool
// (ReportChangedValues) in marking order, duplicates kept; a section that
// marked nothing reports nothing. The report is made while the gate is still
// held, so the next writer cannot interleave its changes with it, but readers
// may already read. Reads: LockRead/UnlockRead of the ReadWriteLock.
// Lock order: write gate, write hold, ReadWriteLock, then whatever value lock
// the concrete provider keeps.
//
// StartUp/ShutDown register and unregister the provider with the data pool
// (and trace on the "SD_DATAPOOL" channel); nothing in the module calls them.
// The provider enters the DataPoolDirectory under its id while it lives and
// unregisters itself from the data pool when destroyed. The data pool it was
// built on must outlive it.

#include <cstdint>
#include <vector>

#include "DataPoolProviderInterface.h"
#include "runtime/Mutex.h"
#include "runtime/ReadWriteLock.h"

class DataPoolInterface;

namespace Quillan {

class SDDataProvider : public DataPoolProviderInterface {
 public:
  // Count that GetCount answers for values without a range.
  static constexpr uint32_t kNoCount = 0xFFFFFFFFu;

  SDDataProvider(DataPoolInterface* host, uint32_t providerId);
  ~SDDataProvider() override;
  SDDataProvider(const SDDataProvider&) = delete;
  SDDataProvider& operator=(const SDDataProvider&) = delete;

  void LockRead() override;
  void UnlockRead() override;
  bool GetBuffer(uint32_t id, const uint8_t** bytes, uint32_t* size) override;
  bool GetBufferAt(uint32_t id, uint32_t index, const uint8_t** bytes, uint32_t* size) override;
  // First 0 and GetCount(id); false when the count is kNoCount.
  bool GetRange(uint32_t id, uint32_t* first, uint32_t* count) override;
  void StartUp() override;
  void ShutDown() override;
  void LockWrite() override;
  void UnlockWrite() override;
  // Reports the marked ids, if any, and forgets them. Waits for a write
  // section of another thread to end.
  void PublishChanges() override;

  uint32_t GetProviderId() const { return m_providerId; }

 protected:
  // Notes a changed id for the report; called inside a write section.
  void MarkChanged(uint32_t id);

 private:
  void BeginOutermostWrite();
  void EndOutermostWrite();

  Mutex m_writeHold;
  ReadWriteLock m_lock;
  uint32_t m_writersEntered = 0;
  uint32_t m_writeLocksHeld = 0;
  Mutex m_writeGate;
  uint32_t m_writeDepth = 0;
  std::vector<uint32_t> m_changedIds;
  DataPoolInterface* m_host;
  uint32_t m_providerId;
};

}  // namespace Quillan
