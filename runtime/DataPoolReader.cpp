#include "runtime/DataPoolReader.h"

#include <algorithm>
#include <utility>

#include "DataPoolDirectory.h"
#include "DataPoolInterface.h"

namespace Quillan {

DataPoolReader::DataPoolReader(PoolValue* table, uint32_t minIndex, uint32_t maxIndex,
                               uint32_t mask, DataPoolInterface* host, uint32_t clientId)
    : m_table(table),
      m_mask(mask),
      m_minIndex(minIndex),
      m_maxIndex(maxIndex),
      m_host(host),
      m_clientId(clientId) {
  DataPoolDirectory::EnterClient(m_clientId, this);
}

DataPoolReader::~DataPoolReader() { DataPoolDirectory::LeaveClient(m_clientId, this); }

PoolValue* DataPoolReader::Entry(uint32_t id) const {
  const uint32_t index = id & m_mask;
  if (m_table == nullptr || index < m_minIndex || index > m_maxIndex) return nullptr;
  return &m_table[index];
}

bool DataPoolReader::Marked(uint32_t id, bool changed) {
  if (changed) MarkChanged(id);
  return changed;
}

void DataPoolReader::MarkChanged(uint32_t id) { m_changedIds.push_back(id); }

void DataPoolReader::LockRead() { m_lock.LockRead(); }

void DataPoolReader::UnlockRead() { m_lock.UnlockRead(); }

bool DataPoolReader::GetValue(uint32_t id, int32_t* value) {
  const PoolValue* entry = Entry(id);
  return entry != nullptr && entry->GetInt(value);
}

bool DataPoolReader::GetIntAt(uint32_t id, uint32_t index, int32_t* value) {
  const PoolValue* entry = Entry(id);
  return entry != nullptr && entry->GetIntAt(index, value);
}

bool DataPoolReader::GetText(uint32_t id, std::string* text) {
  const PoolValue* entry = Entry(id);
  return entry != nullptr && entry->GetText(text);
}

bool DataPoolReader::GetTextAt(uint32_t id, uint32_t index, std::string* text) {
  const PoolValue* entry = Entry(id);
  return entry != nullptr && entry->GetTextAt(index, text);
}

bool DataPoolReader::GetBuffer(uint32_t id, const uint8_t** bytes, uint32_t* size) {
  const PoolValue* entry = Entry(id);
  return entry != nullptr && entry->GetBuffer(bytes, size);
}

bool DataPoolReader::GetBufferAt(uint32_t id, uint32_t index, const uint8_t** bytes,
                                 uint32_t* size) {
  const PoolValue* entry = Entry(id);
  return entry != nullptr && entry->GetBufferAt(index, bytes, size);
}

uint32_t DataPoolReader::GetValueType(uint32_t id) {
  const PoolValue* entry = Entry(id);
  return entry != nullptr ? entry->GetType() : kNotServed;
}

uint32_t DataPoolReader::GetCount(uint32_t id) {
  const PoolValue* entry = Entry(id);
  return entry != nullptr ? entry->GetCount() : 0;
}

bool DataPoolReader::SetInt(uint32_t id, int32_t value) {
  PoolValue* entry = Entry(id);
  return entry != nullptr && Marked(id, entry->SetInt(value));
}

bool DataPoolReader::SetText(uint32_t id, const std::string& text) {
  PoolValue* entry = Entry(id);
  return entry != nullptr && Marked(id, entry->SetText(text));
}

bool DataPoolReader::ClearList(uint32_t id) {
  PoolValue* entry = Entry(id);
  return entry != nullptr && Marked(id, entry->ClearList());
}

bool DataPoolReader::AppendInt(uint32_t id, int32_t value) {
  PoolValue* entry = Entry(id);
  return entry != nullptr && Marked(id, entry->AppendInt(value));
}

bool DataPoolReader::AppendText(uint32_t id, const std::string& text) {
  PoolValue* entry = Entry(id);
  return entry != nullptr && Marked(id, entry->AppendText(text));
}

bool DataPoolReader::SetBuffer(uint32_t id, const uint8_t* bytes, uint32_t size) {
  PoolValue* entry = Entry(id);
  return entry != nullptr && Marked(id, entry->SetBuffer(bytes, size));
}

bool DataPoolReader::AppendBuffer(uint32_t id, const uint8_t* bytes, uint32_t size) {
  PoolValue* entry = Entry(id);
  return entry != nullptr && Marked(id, entry->AppendBuffer(bytes, size));
}

void DataPoolReader::LockWrite() { m_lock.LockWrite(); }

void DataPoolReader::UnlockWrite() {
  std::vector<uint32_t> changed;
  changed.swap(m_changedIds);
  m_lock.UnlockWrite();
  Report(std::move(changed));
}

// Sorted ascending, one copy of each id, and sent also when empty.
void DataPoolReader::Report(std::vector<uint32_t> ids) {
  std::sort(ids.begin(), ids.end());
  ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
  if (m_host != nullptr) m_host->ReportChangedValues(ids.data(), static_cast<uint32_t>(ids.size()));
}

void DataPoolReader::Register() {
  if (m_host != nullptr) m_host->RegisterProvider(this, m_clientId);
}

void DataPoolReader::Unregister() {
  if (m_host != nullptr) m_host->UnregisterProvider(m_clientId);
}

}  // namespace Quillan
