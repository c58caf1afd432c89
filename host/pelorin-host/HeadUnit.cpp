#include "HeadUnit.h"

#include <chrono>
#include <cmath>

#include "HmiModule.h"
#include "HostClock.h"
#include "ModuleLoader.h"
#include "OnlineTrafficReply.h"
#include "Reporter.h"
#include "SimulatedOnlineTraffic.h"
#include "TraceFollower.h"
#include "player/PlayerService.h"
#include "producers/RecordDispatcher.h"
#include "producers/TrafficListenerRegistry.h"

namespace PelorinHost {
namespace {

constexpr int kHostInterfaceId = 500;
constexpr int kHostInterfaceVersion = 2;
constexpr int kEventInterfaceId = 100;
constexpr int kDataPoolInterfaceId = 101;
constexpr int kModuleRunLevel = 200;

}  // namespace

HeadUnit::HeadUnit(ModuleLoader& module, Reporter& reporter, SimulatedOnlineTraffic& onlineTraffic,
                   TraceFollower& trace)
    : m_module(module),
      m_onlineTraffic(onlineTraffic),
      m_trace(trace),
      m_lag(reporter.Lag()),
      m_events(reporter),
      m_dataPool(reporter),
      m_recorder(reporter) {}

HeadUnit::~HeadUnit() { Shutdown(); }

bool HeadUnit::EnterCall() {
  std::unique_lock<std::mutex> lock(m_gateLock);
  m_gateFree.wait(lock, [this] { return !m_inCall; });
  if (!m_moduleUp || m_halted.load()) return false;
  m_inCall = true;
  return true;
}

void HeadUnit::LeaveCall() {
  {
    std::lock_guard<std::mutex> lock(m_gateLock);
    m_inCall = false;
  }
  m_gateFree.notify_all();
}

// Never waits: a control call that hangs in the module must not hold the
// end of the run.
void HeadUnit::Halt() {
  {
    std::lock_guard<std::mutex> lock(m_gateLock);
    if (m_halted.exchange(true) || m_inCall || !m_moduleUp) return;
    m_inCall = true;
  }
  if (m_trace.Runner() == RunnerKind::kInteractive) m_events.Raise(SimulatedEvents::kStopEvent);
  LeaveCall();
}

bool HeadUnit::BringUp(std::string* error) {
  m_module.SetInterface()(kHostInterfaceId, kHostInterfaceVersion,
                          static_cast<HostInterface*>(&m_host));
  m_created = true;
  if (m_module.CreateModule()() == 0) {
    *error = "the module did not start (hmi_createModule returned 0)";
    return false;
  }
  HmiModule* module = m_host.Module();
  if (module == nullptr) {
    *error = "the module did not attach itself to the host";
    return false;
  }
  module->SetInterface(kEventInterfaceId, 0, 0, static_cast<EventInterface*>(&m_events));
  module->SetInterface(kDataPoolInterfaceId, 0, 0, static_cast<DataPoolInterface*>(&m_dataPool));
  module->OnRunLevel(kModuleRunLevel, 1);
  {
    std::lock_guard<std::mutex> lock(m_gateLock);
    m_moduleUp = true;
  }
  if (m_host.PlayerService() == nullptr) {
    *error = "the module published no player service at run level 200";
    return false;
  }
  return true;
}

void HeadUnit::AttachServices() {
  Quillan::PlayerService* service = m_host.PlayerService();
  Quillan::TrafficListenerRegistry* registry = service->GetRecordDispatcher();
  if (registry != nullptr) registry->AddListener(&m_recorder);
  OnlineTrafficReply* reply = service->GetOnlineTrafficReply();
  if (reply != nullptr) m_onlineTraffic.Attach(reply);
}

void HeadUnit::PresetSpeed() {
  const double speed = m_trace.RunnerSpeed();
  if (m_trace.Runner() != RunnerKind::kInteractive || speed <= 0.0) return;
  const double percent = std::floor(speed * 100.0 + 0.5);
  if (percent < 1.0 || percent > 2147483647.0) return;
  SetSpeedPercent(static_cast<int32_t>(percent));
}

bool HeadUnit::Start(bool raiseStartEvent, std::string* error) {
  if (!BringUp(error)) return false;
  AttachServices();
  PresetSpeed();
  m_trace.ClearFailures();
  const int status = m_host.PlayerService()->Run();
  if (status != 0) {
    const std::string cause = m_trace.FirstFailure();
    *error = "playback cannot start (Run returned " + std::to_string(status) + ")" +
             (cause.empty() ? std::string() : ": " + cause);
    return false;
  }
  // A module that did not say which runner it chose runs the interactive
  // one, its default; the start event does nothing to the others.
  const RunnerKind runner = m_trace.Runner();
  if (runner == RunnerKind::kInteractive || runner == RunnerKind::kUnknown) {
    if (raiseStartEvent) StartPlayback();
  } else {
    m_playing.store(true);
  }
  return true;
}

bool HeadUnit::Shutdown(uint32_t patienceMs) {
  {
    std::unique_lock<std::mutex> lock(m_gateLock);
    m_halted.store(true);
    const auto patience = std::chrono::milliseconds(patienceMs);
    if (!m_gateFree.wait_for(lock, patience, [this] { return !m_inCall; })) return false;
    m_inCall = true;
  }
  if (m_moduleUp) {
    HmiModule* module = m_host.Module();
    if (module != nullptr) module->OnRunLevel(kModuleRunLevel, -1);
  }
  m_host.ForgetPlayerService();
  m_events.Clear();
  m_dataPool.Clear();
  {
    std::lock_guard<std::mutex> lock(m_gateLock);
    m_moduleUp = false;
  }
  LeaveCall();
  if (m_created) {
    m_module.DestroyModule()();
    m_created = false;
  }
  m_playing.store(false);
  return true;
}

StatusInfo HeadUnit::Status(uint32_t records, int64_t recordTime) const {
  StatusInfo info;
  info.records = records;
  info.recordTime = recordTime;
  switch (m_trace.Runner()) {
    case RunnerKind::kInteractive:
      info.speedFactor = m_speedPercent.load() / 100.0;
      info.speed = StatusLine::FormatSpeed(info.speedFactor);
      break;
    case RunnerKind::kRealtime:
      info.speedFactor = m_trace.RunnerSpeed();
      info.speed = StatusLine::FormatSpeed(info.speedFactor);
      break;
    case RunnerKind::kBatched:
      info.speed = "batched";
      break;
    case RunnerKind::kUnknown:
      break;
  }
  if (m_playing.load()) {
    info.state = "playing";
  } else {
    info.state = m_trace.FinishedCount() > 0 ? "finished" : "stopped";
  }
  return info;
}

void HeadUnit::StartPlayback() {
  if (!EnterCall()) return;
  m_playing.store(true);
  m_lag.Started(HostClock::Micros());
  m_events.Raise(SimulatedEvents::kStartEvent);
  LeaveCall();
}

void HeadUnit::PauseWithin() {
  if (m_halted.load()) return;
  m_playing.store(false);
  m_lag.Stopped(HostClock::Micros());
  m_events.Raise(SimulatedEvents::kStopEvent);
}

void HeadUnit::StopPlayback() {
  if (!EnterCall()) return;
  m_playing.store(false);
  m_lag.Stopped(HostClock::Micros());
  m_events.Raise(SimulatedEvents::kStopEvent);
  LeaveCall();
}

void HeadUnit::SetSpeedPercent(int32_t percent) {
  if (!EnterCall()) return;
  if (m_dataPool.SetSpeedPercent(percent)) m_speedPercent.store(percent);
  LeaveCall();
}

}  // namespace PelorinHost
