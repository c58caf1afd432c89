#include "module/MirlApp.h"

#include <cmath>
#include <limits>

#include "DataPoolInterface.h"
#include "EventInterface.h"
#include "HostInterface.h"
#include "ModuleRegistration.h"
#include "module/PlaybackDataProvider.h"
#include "module/SpeedTable.h"
#include "player/Config.h"
#include "player/DataPlayer.h"
#include "player/Runner.h"
#include "runtime/DataPoolReader.h"
#include "runtime/ScopedLock.h"
#include "runtime/Trace.h"

namespace Quillan {
namespace {

const char kConfigPath[] = "/fs/sda0/quillan/Pelorin.cfg";
const char kName[] = "Quillan::MirlApp";

// What the host asks for its registration with.
constexpr int kRegistrationVersion = 2;
// What the player service is published with; the host's numbers.
constexpr int kServiceKind = 54;
constexpr int kServiceVersion = 1;
constexpr int kServiceRunLevel = 201;

// Adds 0.5 and truncates toward zero, saturating at the 32-bit range.
int32_t RoundSeconds(double time) {
  const double rounded = std::trunc(time + 0.5);
  if (std::isnan(rounded)) return 0;
  if (rounded <= static_cast<double>(std::numeric_limits<int32_t>::min())) {
    return std::numeric_limits<int32_t>::min();
  }
  if (rounded >= static_cast<double>(std::numeric_limits<int32_t>::max())) {
    return std::numeric_limits<int32_t>::max();
  }
  return static_cast<int32_t>(rounded);
}

}  // namespace

MirlApp::MirlApp() = default;

MirlApp::~MirlApp() { TearDown(); }

bool MirlApp::Startup(HostInterface* host) {
  PELORIN_TRACE(2, "MirlApp::Startup");
  if (m_player == nullptr) {
    const Config config = Config::FromFile(kConfigPath);
    m_player = new DataPlayer(config);
    Runner* runner = m_player->GetRunner();
    if (runner != nullptr) runner->AddListener(GetRunnerListenerFace());
  }
  AttachHost(host);
  if (m_registration != nullptr) m_registration->AttachModule(GetModuleFace());
  return true;
}

void MirlApp::Shutdown() {
  PELORIN_TRACE(2, "MirlApp::Shutdown");
  if (m_registration != nullptr) m_registration->DetachModule(GetModuleFace());
  TearDown();
}

void MirlApp::TearDown() {
  // The player goes first and without the interface lock: its work loop may
  // still be delivering a tick that needs the lock and the provider.
  delete m_player;
  m_player = nullptr;
  ScopedLock lock(m_interfaceLock);
  DeleteDataPoolObjects();
}

void MirlApp::DeleteDataPoolObjects() {
  delete m_dataPoolReader;
  m_dataPoolReader = nullptr;
  delete m_provider;
  m_provider = nullptr;
}

int MirlApp::OnRunLevel(int level, int direction) {
  if (direction == 0) return level;
  if (direction > 0) {
    if (level < kRunLevel) return kRunLevel;
    if (level == kRunLevel) PublishPlayerService();
    return level;
  }
  if (level < kRunLevel) return level;
  if (level == kRunLevel) TearDown();
  return kRunLevel;
}

void MirlApp::PublishPlayerService() {
  if (m_player == nullptr || m_registration == nullptr) return;
  PlayerService* service = m_player;
  m_registration->PublishService(kServiceKind, kServiceVersion, kServiceRunLevel, service);
}

int MirlApp::SetInterface(int id, int version, int /*unused*/, void* pointer) {
  if (pointer == nullptr || version != 0) return 0;
  if (id == kEventInterfaceId) {
    TakeEventInterface(static_cast<EventInterface*>(pointer));
  } else if (id == kDataPoolInterfaceId) {
    TakeDataPool(static_cast<DataPoolInterface*>(pointer));
  }
  return 0;
}

void MirlApp::TakeEventInterface(EventInterface* events) {
  {
    ScopedLock lock(m_interfaceLock);
    m_eventInterface = events;
  }
  events->AddEventListener(GetEventListenerFace(), 0);
}

void MirlApp::TakeDataPool(DataPoolInterface* dataPool) {
  {
    ScopedLock lock(m_interfaceLock);
    DeleteDataPoolObjects();
    m_dataPool = dataPool;
    m_dataPoolReader = SpeedTable::CreateReader(dataPool);
    m_provider = new PlaybackDataProvider(dataPool);
  }
  dataPool->Subscribe(GetDataListenerFace(), kSpeedId);
}

void MirlApp::AttachHost(HostInterface* host) {
  m_host = host;
  m_registration = host != nullptr ? host->GetRegistration(kRegistrationVersion, nullptr) : nullptr;
}

int MirlApp::OnEvent(uint32_t id, uint32_t /*argument*/) {
  if (m_player == nullptr) return 0;
  if (id == kStartEvent) {
    ApplySpeedFromDataPool();
    m_player->StartPlayback();
  } else if (id == kStopEvent) {
    m_player->Stop();
  }
  return 0;
}

const char* MirlApp::GetName() { return kName; }

int MirlApp::OnValuesChanged(const uint32_t* ids, uint32_t count) {
  if (ids == nullptr) return 0;
  for (uint32_t i = 0; i < count; ++i) {
    if (ids[i] == kSpeedId && m_player != nullptr) ApplySpeedFromDataPool();
  }
  return 0;
}

bool MirlApp::ReadSpeedPercent(int32_t* percent) {
  ScopedLock lock(m_interfaceLock);
  if (m_dataPoolReader == nullptr) return false;
  m_dataPoolReader->LockRead();
  const bool read = m_dataPoolReader->GetValue(kSpeedId, percent);
  m_dataPoolReader->UnlockRead();
  return read;
}

// The speed is handed to the player after the table's read section: the
// player's runner lock is never taken under the interface lock.
void MirlApp::ApplySpeedFromDataPool() {
  int32_t percent = -1;
  if (!ReadSpeedPercent(&percent)) return;
  PELORIN_TRACE(2, "MirlApp::SetPlayerSpeedFromDP:", "playbackSpeed=", percent);
  m_player->SetSpeed(percent / 100.0);
}

void MirlApp::OnTick(Runner* /*runner*/, double time) {
  PublishTime(PlaybackDataProvider::kTickId, time);
}

void MirlApp::OnNextEvent(Runner* /*runner*/, double time) {
  PublishTime(PlaybackDataProvider::kNextEventId, time);
}

void MirlApp::PublishTime(uint32_t id, double time) {
  ScopedLock lock(m_interfaceLock);
  if (m_provider == nullptr) return;
  m_provider->BeginWrite();
  const bool changed = m_provider->SetValue(id, RoundSeconds(time));
  m_provider->EndWrite();
  if (changed && m_eventInterface != nullptr) m_eventInterface->NotifyValueChanged(id, 0);
}

}  // namespace Quillan
