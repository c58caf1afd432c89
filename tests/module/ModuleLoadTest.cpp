// The built libpelorin.so as the HMI host uses it: loaded with dlopen,
// driven only through its three entry points and the interfaces it hands
// the host, and unloaded with dlclose, again and again in one process.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "DataListener.h"
#include "DataPoolDirectory.h"
#include "EventListener.h"
#include "HmiModule.h"
#include "player/PlayerService.h"
#include "tests/module/FakeHmiHost.h"
#include "tests/support/TraceCapture.h"
#include "tracing/Channel.h"

#ifndef PELORIN_MODULE_PATH
#error "PELORIN_MODULE_PATH must name the built module"
#endif

namespace {

using namespace pelorin_test;  // NOLINT: the fakes and ids

using Reports = std::vector<std::vector<uint32_t>>;
using Notifications = std::vector<std::pair<uint32_t, int>>;

// The module as the host sees it: a handle and the three entry points.
class LoadedModule {
 public:
  using SetInterfaceFunction = void (*)(int, int, void*);
  using CreateFunction = int16_t (*)();
  using DestroyFunction = void (*)();

  LoadedModule() {
    m_handle = dlopen(PELORIN_MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
    if (m_handle == nullptr) {
      ADD_FAILURE() << "dlopen: " << dlerror();
      return;
    }
    setInterface = reinterpret_cast<SetInterfaceFunction>(dlsym(m_handle, "hmi_setInterface"));
    create = reinterpret_cast<CreateFunction>(dlsym(m_handle, "hmi_createModule"));
    destroy = reinterpret_cast<DestroyFunction>(dlsym(m_handle, "hmi_destroyModule"));
  }
  ~LoadedModule() { Unload(); }
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;

  bool Loaded() const { return m_handle && setInterface && create && destroy; }
  void* Symbol(const char* name) const { return dlsym(m_handle, name); }

  // Closes the handle; true when the library has really left the process.
  bool Unload() {
    if (m_handle == nullptr) return true;
    dlclose(m_handle);
    m_handle = nullptr;
    void* still = dlopen(PELORIN_MODULE_PATH, RTLD_NOW | RTLD_NOLOAD);
    if (still == nullptr) return true;
    dlclose(still);
    return false;
  }

  SetInterfaceFunction setInterface = nullptr;
  CreateFunction create = nullptr;
  DestroyFunction destroy = nullptr;

 private:
  void* m_handle = nullptr;
};

// Records at 100.0 and 100.2 follow each other quickly; the third is far
// away, so playback is still running (ticking every 2 s) when a test ends it.
const char kEvents[] =
    "100 $TMC\n"
    "100.2 $TMC\n"
    "5000 $TMC\n";

// A host that has loaded the module, handed over its interfaces, raised the
// module to run level 200 and run the published player service.
class RunningHost {
 public:
  explicit RunningHost(LoadedModule& loaded) : m_module(loaded) {}

  void Start() {
    m_module.setInterface(500, 2, &host);
    ASSERT_EQ(m_module.create(), 1);
    ASSERT_EQ(registration.attached.All().size(), 1u);
    module = registration.attached.All()[0];
    // Data pool first, then events; a wrong version changes nothing.
    module->SetInterface(101, 1, 0, &pool);
    EXPECT_TRUE(pool.subscriptions.All().empty());
    module->SetInterface(101, 0, 0, &pool);
    module->SetInterface(100, 0, 0, &events);
    ASSERT_EQ(pool.subscriptions.All().size(), 1u);
    ASSERT_EQ(events.listeners.All().size(), 1u);
    EXPECT_EQ(pool.subscriptions.All()[0].second, kSpeedId);
    dataListener = pool.subscriptions.All()[0].first;
    eventListener = events.listeners.All()[0].first;

    EXPECT_EQ(module->OnRunLevel(120, 1), 200);
    EXPECT_TRUE(registration.published.All().empty());
    EXPECT_EQ(module->OnRunLevel(200, 1), 200);
    ASSERT_EQ(registration.published.All().size(), 1u);
    service = static_cast<Quillan::PlayerService*>(registration.published.All()[0].service);
    ASSERT_NE(service, nullptr);
    EXPECT_EQ(service->Run(), 0);
    EXPECT_EQ(service->Run(), 2);
  }

  // Starts playback and waits until the far record has been read ahead.
  void PlayToTheFarRecord() {
    eventListener->OnEvent(kStartEvent, 0);
    ASSERT_TRUE(WaitUntil([] { return ReadPlaybackValue(kNextId) == 5000; }));
  }

  FakeRegistration registration;
  FakeHost host{&registration};
  FakeEvents events;
  FakeDataPool pool;
  HmiModule* module = nullptr;
  EventListener* eventListener = nullptr;
  DataListener* dataListener = nullptr;
  Quillan::PlayerService* service = nullptr;

 private:
  LoadedModule& m_module;
};

// The entry points on their own: only they are exported; they log at the
// progress level; the first host of the right id and version wins until a
// destroy; a host without a registration still gets asked once; a second
// create shuts the first application down.
TEST(ModuleLoadTest, EntryPointsAndTheChoiceOfHost) {
  StorageFolder storage("", "");
  TraceCapture trace(2);
  LoadedModule module;
  ASSERT_TRUE(module.Loaded());
  EXPECT_EQ(module.Symbol("_ZN7Quillan14PelorinChannelEv"), nullptr);
  EXPECT_EQ(module.Symbol("_ZN7Quillan7MirlAppC1Ev"), nullptr);
  EXPECT_EQ(module.Symbol("_ZN7Quillan14SDDataProvider9LockWriteEv"), nullptr);

  module.destroy();  // destroy without create: logs only
  EXPECT_EQ(trace.Texts(), (std::vector<std::string>{"HMI_DESTROY_MODULE_SYMBOL"}));
  trace.Clear();

  FakeRegistration registration;
  FakeHost first(&registration);
  FakeHost second(&registration);
  module.setInterface(500, 1, &first);
  module.setInterface(501, 2, &first);
  EXPECT_EQ(module.create(), 0) << "no host yet: made, not started";
  module.destroy();
  EXPECT_TRUE(first.requests.All().empty());
  // The application made without a host is still shut down.
  EXPECT_EQ(trace.Texts(), (std::vector<std::string>{"HMI_CREATE_MODULE_SYMBOL",
                                                     "HMI_DESTROY_MODULE_SYMBOL",
                                                     "MirlApp::Shutdown"}));
  EXPECT_EQ(trace.Lines()[0].channel, "Pelorin");
  EXPECT_EQ(trace.Lines()[0].level, 2);
  EXPECT_EQ(trace.Lines()[1].level, 2);

  module.setInterface(500, 2, &first);
  module.setInterface(500, 2, &second);
  EXPECT_EQ(module.create(), 1);
  EXPECT_EQ(first.requests.All().size(), 1u);
  EXPECT_TRUE(second.requests.All().empty());
  module.destroy();

  module.setInterface(500, 2, &second);  // accepted again after a destroy
  EXPECT_EQ(module.create(), 1);
  EXPECT_EQ(module.create(), 1);
  EXPECT_EQ(second.requests.All().size(), 2u);
  EXPECT_TRUE(trace.Contains("HMI_CREATE_MODULE_SYMBOL: module already created, replacing it"));
  ASSERT_EQ(registration.attached.All().size(), 3u);
  EXPECT_EQ(registration.detached.All(), (std::vector<HmiModule*>{registration.attached.All()[0],
                                                                    registration.attached.All()[1]}));
  module.destroy();

  FakeHost lonely(nullptr);
  module.setInterface(500, 2, &lonely);
  EXPECT_EQ(module.create(), 1);
  EXPECT_EQ(lonely.requests.All(), (std::vector<std::pair<int, void*>>{{2, nullptr}}));
  module.destroy();

  // Above the progress level, create and destroy say nothing.
  tracing::SetThreshold("Pelorin", 3);
  trace.Clear();
  module.setInterface(500, 2, &lonely);
  EXPECT_EQ(module.create(), 1);
  module.destroy();
  EXPECT_TRUE(trace.Texts().empty());
  EXPECT_TRUE(module.Unload());
}

// The whole path: interfaces, run level, Run, the speed table of a freshly
// loaded module and a speed change through it, start and stop events, the
// playback clock in the data pool and its change reports, then destroy in
// the middle of playback.
TEST(ModuleLoadTest, PlaysUnderHmiControlAndGoesDownThroughTheRunLevel) {
  StorageFolder storage("interactive=1\nautostart=0\n", kEvents);
  TraceCapture trace(2);
  LoadedModule module;
  ASSERT_TRUE(module.Loaded());
  RunningHost unit(module);
  ASSERT_NO_FATAL_FAILURE(unit.Start());
  EXPECT_TRUE(trace.Contains("Player::Run"));

  int32_t percent = 0;
  DataPoolClientInterface* table = DataPoolDirectory::FindClient(76);
  ASSERT_NE(table, nullptr);
  table->LockRead();
  EXPECT_TRUE(table->GetValue(kSpeedId, &percent));
  table->UnlockRead();
  EXPECT_EQ(percent, 100);

  // The data pool writes the speed and tells the module.
  ASSERT_TRUE(SetSpeedPercent(300));
  EXPECT_EQ(unit.pool.reports.All(), (Reports{{kSpeedId}}));
  unit.pool.reports.Clear();
  const uint32_t changed[] = {kSpeedId};
  unit.dataListener->OnValuesChanged(changed, 1);
  EXPECT_TRUE(trace.Contains("MirlApp::SetPlayerSpeedFromDP:playbackSpeed=300"));
  EXPECT_TRUE(trace.Contains("InteractiveRunner::SetSpeed: 3"));

  ASSERT_NO_FATAL_FAILURE(unit.PlayToTheFarRecord());
  // Next event 100, tick 100, next event 100.2 (still 100: neither reported
  // nor announced), next event 5000.
  EXPECT_EQ(ReadPlaybackValue(kTickId), 100);
  const Reports clock = unit.pool.ReportsOf(0x4d);
  ASSERT_GE(clock.size(), 3u);
  EXPECT_EQ(Reports(clock.begin(), clock.begin() + 3), (Reports{{kNextId}, {kTickId}, {kNextId}}));
  const Notifications told = unit.events.notifications.All();
  ASSERT_GE(told.size(), 3u);
  EXPECT_EQ(Notifications(told.begin(), told.begin() + 3),
            (Notifications{{kNextId, 0}, {kTickId, 0}, {kNextId, 0}}));

  // Stop: the queued step (due at the next tick, 2 s of wall-clock time
  // after the first) finds the runner stopped. Start again: playback resumes
  // at once with that tick.
  unit.eventListener->OnEvent(kStopEvent, 0);
  EXPECT_TRUE(trace.Contains("InteractiveRunner::Stop"));
  EXPECT_TRUE(WaitUntil([&] { return trace.Contains("InteractiveRunner::Execute: stopping"); }));
  unit.eventListener->OnEvent(kStartEvent, 0);
  EXPECT_TRUE(WaitUntil([] { return ReadPlaybackValue(kTickId) >= 102; }));

  module.destroy();
  EXPECT_EQ(unit.registration.detached.All(), (std::vector<HmiModule*>{unit.module}));
  EXPECT_EQ(DataPoolDirectory::FindProvider(77), nullptr);
  EXPECT_TRUE(module.Unload());
}

}  // namespace
