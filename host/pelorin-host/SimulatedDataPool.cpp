#include "SimulatedDataPool.h"

#include "DataListener.h"
#include "DataPoolClientInterface.h"
#include "DataPoolDirectory.h"
#include "DataPoolProviderInterface.h"
#include "Reporter.h"

namespace PelorinHost {
namespace {

bool ReadInside(DataPoolReadInterface* source, uint32_t id, int32_t* value) {
  if (source == nullptr) return false;
  source->LockRead();
  const bool ok = source->GetValue(id, value);
  source->UnlockRead();
  return ok;
}

}  // namespace

int SimulatedDataPool::RegisterProvider(DataPoolReadInterface* provider, uint32_t id) {
  std::lock_guard<std::mutex> guard(m_lock);
  m_registered[id] = provider;
  return 0;
}

int SimulatedDataPool::Subscribe(DataListener* listener, uint32_t valueId) {
  if (listener == nullptr) return 1;
  std::lock_guard<std::mutex> guard(m_lock);
  for (const auto& subscriber : m_subscribers) {
    if (subscriber.first == valueId && subscriber.second == listener) return 0;
  }
  m_subscribers.emplace_back(valueId, listener);
  return 0;
}

int SimulatedDataPool::UnregisterProvider(uint32_t id) {
  std::lock_guard<std::mutex> guard(m_lock);
  m_registered.erase(id);
  return 0;
}

// The module's objects are alive while they report, so reading them back
// here is safe; the provider has already released its write lock.
bool SimulatedDataPool::ReadBack(uint32_t id, int32_t* value) {
  if (ReadInside(DataPoolDirectory::FindProvider(kPlaybackProviderId), id, value)) return true;
  return ReadInside(DataPoolDirectory::FindClient(kSpeedTableClientId), id, value);
}

int SimulatedDataPool::ReportChangedValues(const uint32_t* ids, uint32_t count) {
  if (ids == nullptr) return 0;
  for (uint32_t i = 0; i < count; ++i) {
    int32_t value = 0;
    const bool known = ReadBack(ids[i], &value);
    m_reporter.DataPoolValue(ids[i], known, value);
  }
  return 0;
}

std::vector<DataListener*> SimulatedDataPool::SubscribersOf(uint32_t valueId) {
  std::vector<DataListener*> listeners;
  std::lock_guard<std::mutex> guard(m_lock);
  for (const auto& subscriber : m_subscribers) {
    if (subscriber.first == valueId) listeners.push_back(subscriber.second);
  }
  return listeners;
}

bool SimulatedDataPool::SetSpeedPercent(int32_t percent) {
  DataPoolClientInterface* table = DataPoolDirectory::FindClient(kSpeedTableClientId);
  if (table == nullptr) return false;
  table->LockWrite();
  const bool stored = table->SetInt(kSpeedValueId, percent);
  table->UnlockWrite();
  if (!stored) return false;
  const uint32_t ids[1] = {kSpeedValueId};
  for (DataListener* listener : SubscribersOf(kSpeedValueId)) listener->OnValuesChanged(ids, 1);
  return true;
}

void SimulatedDataPool::Clear() {
  std::lock_guard<std::mutex> guard(m_lock);
  m_subscribers.clear();
  m_registered.clear();
}

}  // namespace PelorinHost
