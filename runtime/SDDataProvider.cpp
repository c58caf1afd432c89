#include "runtime/SDDataProvider.h"

#include "DataPoolDirectory.h"
#include "DataPoolInterface.h"
#include "TraceChannel.h"

namespace Quillan {
namespace {

// The data-pool machinery's own trace channel: built when the module is
// loaded, destroyed when it is unloaded.
TraceChannel g_dataPoolChannel("SD_DATAPOOL");

void TraceDataPool(const char* text, uint32_t number) {
  TraceClient* client = TraceClient::GetInstance();
  if (client == nullptr || !client->IsActive()) return;
  if ((g_dataPoolChannel.GetFlags() & 1u) == 0) return;
  client->trace(1, TraceMessage(text, number), g_dataPoolChannel);
}

}  // namespace

SDDataProvider::SDDataProvider(DataPoolInterface* host, uint32_t providerId)
    : m_host(host), m_providerId(providerId) {
  DataPoolDirectory::EnterProvider(m_providerId, this);
}

SDDataProvider::~SDDataProvider() {
  DataPoolDirectory::LeaveProvider(m_providerId, this);
  if (m_host != nullptr) m_host->UnregisterProvider(m_providerId);
}

void SDDataProvider::LockRead() { m_lock.LockRead(); }

void SDDataProvider::UnlockRead() { m_lock.UnlockRead(); }

bool SDDataProvider::GetBuffer(uint32_t, const uint8_t**, uint32_t*) { return false; }

bool SDDataProvider::GetBufferAt(uint32_t, uint32_t, const uint8_t**, uint32_t*) { return false; }

bool SDDataProvider::GetRange(uint32_t id, uint32_t* first, uint32_t* count) {
  const uint32_t elements = GetCount(id);
  if (first != nullptr) *first = 0;
  if (count != nullptr) *count = elements;
  return elements != kNoCount;
}

void SDDataProvider::StartUp() {
  TraceDataPool("SDDataProvider::StartUp() providerID=", m_providerId);
  if (m_host != nullptr) m_host->RegisterProvider(this, m_providerId);
}

void SDDataProvider::ShutDown() {
  TraceDataPool("SDDataProvider::ShutDown() providerID=", m_providerId);
  if (m_host != nullptr) m_host->UnregisterProvider(m_providerId);
}

// The outermost LockWrite keeps the gate locked until its UnlockWrite, so
// writers of other threads wait on it; nested calls only count.
void SDDataProvider::LockWrite() {
  m_writeGate.Lock();
  ++m_writeDepth;
  if (m_writeDepth > 1) {
    m_writeGate.Unlock();
    return;
  }
  BeginOutermostWrite();
}

void SDDataProvider::UnlockWrite() {
  m_writeGate.Lock();
  if (m_writeDepth == 0) {
    // Not inside a write section: there is nothing to end.
    m_writeGate.Unlock();
    return;
  }
  --m_writeDepth;
  if (m_writeDepth != 0) {
    m_writeGate.Unlock();
    return;
  }
  EndOutermostWrite();
  m_writeGate.Unlock();
  m_writeGate.Unlock();
}

void SDDataProvider::BeginOutermostWrite() {
  m_writeHold.Lock();
  ++m_writersEntered;
  m_lock.LockWrite();
  ++m_writeLocksHeld;
}

void SDDataProvider::EndOutermostWrite() {
  if (m_writeLocksHeld == 1) {
    m_lock.UnlockWrite();
    m_writeLocksHeld = 0;
  }
  PublishChanges();
  --m_writersEntered;
  m_writeHold.Unlock();
}

void SDDataProvider::PublishChanges() {
  m_writeGate.Lock();
  if (!m_changedIds.empty()) {
    if (m_host != nullptr) {
      m_host->ReportChangedValues(m_changedIds.data(), static_cast<uint32_t>(m_changedIds.size()));
    }
    m_changedIds.clear();
  }
  m_writeGate.Unlock();
}

void SDDataProvider::MarkChanged(uint32_t id) { m_changedIds.push_back(id); }

}  // namespace Quillan
