#include "module/PlaybackDataProvider.h"

#include "runtime/ScopedLock.h"

namespace Quillan {

PlaybackDataProvider::PlaybackDataProvider(DataPoolInterface* dataPool)
    : SDDataProvider(dataPool, kProviderId) {}

int32_t* PlaybackDataProvider::Slot(uint32_t id) {
  if (id == kTickId) return &m_tick;
  if (id == kNextEventId) return &m_nextEvent;
  return nullptr;
}

bool PlaybackDataProvider::GetValue(uint32_t id, int32_t* value) {
  ScopedLock lock(m_valueLock);
  const int32_t* slot = Slot(id);
  if (slot == nullptr || value == nullptr) return false;
  *value = *slot;
  return true;
}

bool PlaybackDataProvider::GetIntAt(uint32_t, uint32_t, int32_t*) { return false; }

bool PlaybackDataProvider::GetText(uint32_t, std::string*) { return false; }

bool PlaybackDataProvider::GetTextAt(uint32_t, uint32_t, std::string*) { return false; }

uint32_t PlaybackDataProvider::GetValueType(uint32_t id) {
  ScopedLock lock(m_valueLock);
  return Slot(id) != nullptr ? 0u : kNotServed;
}

uint32_t PlaybackDataProvider::GetCount(uint32_t) { return kNoCount; }

bool PlaybackDataProvider::GetRange(uint32_t, uint32_t*, uint32_t*) { return false; }

void PlaybackDataProvider::BeginWrite() {
  LockWrite();
  m_valueLock.Lock();
}

bool PlaybackDataProvider::SetValue(uint32_t id, int32_t value) {
  ScopedLock lock(m_valueLock);
  int32_t* slot = Slot(id);
  if (slot == nullptr || *slot == value) return false;
  *slot = value;
  MarkChanged(id);
  return true;
}

void PlaybackDataProvider::EndWrite() {
  m_valueLock.Unlock();
  UnlockWrite();
}

}  // namespace Quillan
