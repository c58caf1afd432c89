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
//   Halt:     (at the end of a run) the stop event for interactive playback,
//             so that playback goes inert while the module goes down.
//   Shutdown: run level 200 downwards, hmi_destroyModule.
// The module's speed table is set to the runner's configured speed before
// playback starts, as the HMI's data pool would hold it, so that the start
// event (which reads the speed from the data pool) keeps that speed.
// Start, Halt and Shutdown run on the main thread; the ControlTarget
// operations on the controls thread. From Halt on, control calls are
// ignored; Shutdown waits for a control call in progress, so the module is
// never called after it went down. A control call can hang in the module
// (a start or speed change waits for a playback step that waits for an
// online traffic answer): Shutdown then gives up after its patience and
// leaves the module up.

#include <atomic>
#include <condition_variable>
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

class LagMeter;
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
  void Halt();
  // False when a control call still hangs in the module after `patienceMs`:
  // the module was left as it is.
  bool Shutdown(uint32_t patienceMs = kShutdownPatienceMs);

  static constexpr uint32_t kShutdownPatienceMs = 2000;

  // The module reported the end of playback.
  void OnFinished() { m_playing.store(false); }
  StatusInfo Status(uint32_t records, int64_t recordTime) const;

  // Stops interactive playback from inside the module's work-loop thread,
  // while a record item is being made (--pause-at): the module is up while
  // its step runs and the runner's stop never waits, so no call gate.
  void PauseWithin();
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
  LagMeter& m_lag;  // told when playback stops and starts
  SimulatedHost m_host;
  SimulatedEvents m_events;
  SimulatedDataPool m_dataPool;
  TrafficRecorder m_recorder;

  // False when the module is not to be called any more; else the gate is
  // taken until LeaveCall.
  bool EnterCall();
  void LeaveCall();

  // The call gate: one call into the module from a control at a time, and
  // none while the module goes down. m_inCall and m_moduleUp under m_gateLock.
  std::mutex m_gateLock;
  std::condition_variable m_gateFree;
  bool m_inCall = false;
  std::atomic<bool> m_halted{false};
  bool m_moduleUp = false;
  bool m_created = false;
  std::atomic<int32_t> m_speedPercent{100};
  std::atomic<bool> m_playing{false};
};

}  // namespace PelorinHost
