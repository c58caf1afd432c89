#pragma once
// HeadUnit: plays the head unit's part around the loaded module, in the
// order a head unit does:
//   Start:    hmi_setInterface(500, 2, host), hmi_createModule, SetInterface
//             100 (events) and 101 (data pool) on the module that attached
//             itself, run level 200 upwards, take the published
//             PlayerService, register the traffic recorder with its
//             RecordDispatcher, attach the online traffic service through
//             its OnlineTrafficReply, Run, and with the interactive runner
//             the start event 0x4c000000.
//   Shutdown: run level 200 downwards, hmi_destroyModule.
// The module's speed table is set to the runner's configured speed before
// playback starts, as the HMI's data pool would hold it, so that the start
// event (which reads the speed from the data pool) keeps that speed.
// Start and Shutdown run on the main thread; the ControlTarget operations on
// the controls thread. Shutdown waits for a control call in progress and
// ignores later ones, so the module is never called after it went down.

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

#include "ControlTarget.h"
#include "SimulatedDataPool.h"
#include "SimulatedEvents.h"
#include "SimulatedHost.h"
#include "StatusLine.h"
#include "TrafficRecorder.h"

namespace PelorinHost {

class ModuleLoader;
class Reporter;
class SimulatedOnlineTraffic;
class TraceFollower;

class HeadUnit : public ControlTarget {
 public:
  HeadUnit(ModuleLoader& module, Reporter& reporter, SimulatedOnlineTraffic& onlineTraffic,
           TraceFollower& trace);
  ~HeadUnit() override;
  HeadUnit(const HeadUnit&) = delete;
  HeadUnit& operator=(const HeadUnit&) = delete;

  // False with `error` (one line naming the cause) when the module cannot be
  // brought up or playback cannot start; Shutdown is still needed then.
  bool Start(bool raiseStartEvent, std::string* error);
  void Shutdown();

  // The module reported the end of playback.
  void OnFinished() { m_playing.store(false); }
  StatusInfo Status(uint32_t records, int64_t recordTime) const;

  void StartPlayback() override;
  void StopPlayback() override;
  void SetSpeedPercent(int32_t percent) override;
  int32_t SpeedPercent() const override { return m_speedPercent.load(); }
  bool IsPlaying() const override { return m_playing.load(); }

 private:
  bool BringUp(std::string* error);
  void AttachServices();
  void PresetSpeed();

  ModuleLoader& m_module;
  SimulatedOnlineTraffic& m_onlineTraffic;
  TraceFollower& m_trace;
  SimulatedHost m_host;
  SimulatedEvents m_events;
  SimulatedDataPool m_dataPool;
  TrafficRecorder m_recorder;

  std::mutex m_callGate;  // held by every call into the module from a control
  bool m_moduleUp = false;
  bool m_created = false;
  std::atomic<int32_t> m_speedPercent{100};
  std::atomic<bool> m_playing{false};
};

}  // namespace PelorinHost
