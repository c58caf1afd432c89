#pragma once
// DataPoolReader: a data-pool client whose values live in a fixed table of
// PoolValue entries that the data pool writes through the setters. The id of
// a value selects its entry: index = id & mask, served while
// minIndex <= index <= maxIndex. Every getter and setter checks the range
// and the entry's type and otherwise answers false (GetValueType 10,
// GetCount 0) without changing anything.
//
// The reader does not own the table; the table must outlive it. It enters
// the DataPoolDirectory under its client id while it lives; it registers with
// the data pool only through Register and Unregister.
//
// Threads: readers bracket getters with LockRead/UnlockRead, writers bracket
// setters with LockWrite/UnlockWrite (a re-entrant ReadWriteLock); getters
// and setters take no lock themselves. Every UnlockWrite reports the ids
// changed since the last report, sorted and without duplicates, to the data
// pool (also when there are none), after the write lock is released.
// The changed ids are taken over while the write lock is still held, so a
// writer that follows never mixes its changes into another writer's report.

#include <cstdint>
#include <string>
#include <vector>

#include "DataPoolClientInterface.h"
#include "runtime/PoolValue.h"
#include "runtime/ReadWriteLock.h"

class DataPoolInterface;

namespace Quillan {

class DataPoolReader : public DataPoolClientInterface {
 public:
  // Code that GetValueType answers for an id outside the served range.
  static constexpr uint32_t kNotServed = 10;

  DataPoolReader(PoolValue* table, uint32_t minIndex, uint32_t maxIndex, uint32_t mask,
                 DataPoolInterface* host, uint32_t clientId);
  ~DataPoolReader() override;
  DataPoolReader(const DataPoolReader&) = delete;
  DataPoolReader& operator=(const DataPoolReader&) = delete;

  void LockRead() override;
  void UnlockRead() override;
  bool GetValue(uint32_t id, int32_t* value) override;
  bool GetIntAt(uint32_t id, uint32_t index, int32_t* value) override;
  bool GetText(uint32_t id, std::string* text) override;
  bool GetTextAt(uint32_t id, uint32_t index, std::string* text) override;
  bool GetBuffer(uint32_t id, const uint8_t** bytes, uint32_t* size) override;
  bool GetBufferAt(uint32_t id, uint32_t index, const uint8_t** bytes, uint32_t* size) override;
  uint32_t GetValueType(uint32_t id) override;
  uint32_t GetCount(uint32_t id) override;

  bool SetInt(uint32_t id, int32_t value) override;
  bool SetText(uint32_t id, const std::string& text) override;
  bool ClearList(uint32_t id) override;
  bool AppendInt(uint32_t id, int32_t value) override;
  bool AppendText(uint32_t id, const std::string& text) override;
  bool SetBuffer(uint32_t id, const uint8_t* bytes, uint32_t size) override;
  bool AppendBuffer(uint32_t id, const uint8_t* bytes, uint32_t size) override;
  void LockWrite() override;
  void UnlockWrite() override;
  void Register() override;
  void Unregister() override;

  // Notes a changed id for the next report; called inside a write section.
  void MarkChanged(uint32_t id);

 private:
  // The entry of `id`, or null when the id is outside the served range.
  PoolValue* Entry(uint32_t id) const;
  // Marks `id` when `changed` and passes `changed` on.
  bool Marked(uint32_t id, bool changed);
  void Report(std::vector<uint32_t> ids);

  ReadWriteLock m_lock;
  std::vector<uint32_t> m_changedIds;
  PoolValue* m_table;
  uint32_t m_mask;
  uint32_t m_minIndex;
  uint32_t m_maxIndex;
  DataPoolInterface* m_host;
  uint32_t m_clientId;
};

}  // namespace Quillan
