#pragma once
// MirlApp: the module's one application object, made by hmi_createModule.
// It reads the configuration, owns the DataPlayer, attaches itself to the
// host's module registration, takes the host's event (100) and data-pool
// (101) interfaces, publishes the player's service at run level 200, turns
// HMI events into start and stop of playback, takes the playback speed from
// the data pool's speed table, and mirrors the runner's tick and next-event
// times into the data-pool values 0x4d000000 and 0x4d000001.
//
// Faces, in the host's slot order: the HmiModule primary face (followed by
// OnValuesChanged, OnTick, OnNextEvent), the EventListener face, the
// DataListener face, and the RunnerListener face. The host's interface
// pointers are never owned; the player, the speed-table client and the
// playback provider are owned and deleted in that order.
//
// Threads: everything runs on host threads except OnTick and OnNextEvent,
// which the runner calls on the work-loop thread. The host is expected to
// deliver its own calls one at a time around start-up and tear-down.
// m_interfaceLock guards the fields those two calls share with host calls
// (the provider and the event interface, and the speed-table client beside
// them), so that interfaces may be handed over, again or for the first time,
// while playback runs. It is never held while calling into the player.
// Times are stored rounded (0.5 added, then truncated toward zero) and
// saturated to the 32-bit range. A second data-pool interface replaces the
// first: the speed-table client and the provider built on the old one are
// deleted before new ones are built on the new one.

#include <cstdint>

#include "DataListener.h"
#include "EventListener.h"
#include "HmiModule.h"
#include "player/RunnerListener.h"
#include "runtime/Mutex.h"

class DataPoolInterface;
class EventInterface;
class HostInterface;
class ModuleRegistration;

namespace Quillan {

class DataPlayer;
class DataPoolReader;
class PlaybackDataProvider;

class MirlApp : public HmiModule, public EventListener, public DataListener, public RunnerListener {
 public:
  static constexpr int kRunLevel = 200;
  static constexpr uint32_t kStartEvent = 0x4c000000u;
  static constexpr uint32_t kStopEvent = 0x4c000001u;
  static constexpr uint32_t kSpeedId = 0x4c000001u;
  static constexpr int kEventInterfaceId = 100;
  static constexpr int kDataPoolInterfaceId = 101;

  MirlApp();
  // Deletes the player, the speed-table client and the provider.
  ~MirlApp() override;
  MirlApp(const MirlApp&) = delete;
  MirlApp& operator=(const MirlApp&) = delete;

  // Reads the configuration, creates the player and its runner, joins the
  // runner's listeners and attaches to the host's registration. True.
  bool Startup(HostInterface* host);
  // Detaches from the registration and deletes what the application owns.
  void Shutdown();

  // HmiModule
  int OnRunLevel(int level, int direction) override;
  int SetInterface(int id, int version, int unused, void* pointer) override;
  void AttachHost(HostInterface* host) override;
  int OnEvent(uint32_t id, uint32_t argument) override;
  const char* GetName() override;
  // DataListener, also on the primary face.
  int OnValuesChanged(const uint32_t* ids, uint32_t count) override;
  // RunnerListener, also on the primary face. OnFinished keeps the empty
  // default.
  void OnTick(Runner* runner, double time) override;
  void OnNextEvent(Runner* runner, double time) override;

  HmiModule* GetModuleFace() { return this; }
  EventListener* GetEventListenerFace() { return this; }
  DataListener* GetDataListenerFace() { return this; }
  RunnerListener* GetRunnerListenerFace() { return this; }

 private:
  void TakeEventInterface(EventInterface* events);
  void TakeDataPool(DataPoolInterface* dataPool);
  void PublishPlayerService();
  // Deletes the player, then the speed-table client and the provider.
  void TearDown();
  void DeleteDataPoolObjects();
  // Reads the speed table; false when the speed cannot be read.
  bool ReadSpeedPercent(int32_t* percent);
  void ApplySpeedFromDataPool();
  // Stores the rounded `time` under `id` and tells the event interface when
  // it changed.
  void PublishTime(uint32_t id, double time);

  ModuleRegistration* m_registration = nullptr;
  HostInterface* m_host = nullptr;
  DataPlayer* m_player = nullptr;
  DataPoolInterface* m_dataPool = nullptr;
  EventInterface* m_eventInterface = nullptr;
  PlaybackDataProvider* m_provider = nullptr;
  DataPoolReader* m_dataPoolReader = nullptr;
  Mutex m_interfaceLock;
};

}  // namespace Quillan
