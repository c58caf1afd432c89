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
using Strings = std::vector<std::string>;
using Reports = std::vector<std::vector<uint32_t>>;
using Notifications = std::vector<std::pair<uint32_t, int>>;

// The module as the host sees it: a handle and the three entry points.
class LoadedModule {
 public:
  LoadedModule() : m_handle(dlopen(PELORIN_MODULE_PATH, RTLD_NOW | RTLD_LOCAL)) {
    if (m_handle == nullptr) return;
    setInterface = reinterpret_cast<void (*)(int, int, void*)>(dlsym(m_handle, "hmi_setInterface"));
    create = reinterpret_cast<int16_t (*)()>(dlsym(m_handle, "hmi_createModule"));
    destroy = reinterpret_cast<void (*)()>(dlsym(m_handle, "hmi_destroyModule"));
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
    if (still != nullptr) dlclose(still);
    return still == nullptr;
  }

  void (*setInterface)(int, int, void*) = nullptr;
  int16_t (*create)() = nullptr;
  void (*destroy)() = nullptr;

 private:
  void* m_handle;
};

// The entry points on their own: only they are exported; they log at the
// progress level; the first host of the right id and version wins until a
// destroy; a host without a registration still gets asked once; a second
// create shuts the first application down.
TEST(ModuleLoadTest, EntryPointsAndTheChoiceOfHost) {
  StorageFolder storage("", "");
  TraceCapture trace(2);
  LoadedModule module;
  ASSERT_TRUE(module.Loaded()) << dlerror();
  EXPECT_EQ(module.Symbol("_ZN7Quillan7MirlAppC1Ev"), nullptr);

  module.destroy();  // destroy without create: logs only
  FakeRegistration registration;
  FakeHost first(&registration);
  FakeHost second(&registration);
  module.setInterface(500, 1, &first);
  module.setInterface(501, 2, &first);
  EXPECT_EQ(module.create(), 0) << "no host yet: made, not started";
  module.destroy();
  EXPECT_TRUE(first.requests.All().empty());
  // The application made without a host is still shut down.
  EXPECT_EQ(trace.Texts(), (Strings{"HMI_DESTROY_MODULE_SYMBOL", "HMI_CREATE_MODULE_SYMBOL",
                                    "HMI_DESTROY_MODULE_SYMBOL", "MirlApp::Shutdown"}));
  EXPECT_EQ(trace.Lines()[0].channel, "Pelorin");
  EXPECT_EQ(trace.Lines()[0].level, 2);

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
  const auto attached = registration.attached.All();
  ASSERT_EQ(attached.size(), 3u);
  EXPECT_EQ(registration.detached.All(), (std::vector<HmiModule*>{attached[0], attached[1]}));
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

// The whole path: interfaces, run level, Run, the speed table's initial
// speed, the start event, the playback clock in the data pool and its change
// reports, then destroy in the middle of playback (the third record is far
// away, so playback is still running then).
TEST(ModuleLoadTest, PlaysUnderHmiControlUntilDestroyed) {
  StorageFolder storage("interactive=1\nautostart=0\n", "100 $TMC\n100.2 $TMC\n5000 $TMC\n");
  TraceCapture trace(2);
  LoadedModule module;
  ASSERT_TRUE(module.Loaded()) << dlerror();
  FakeRegistration registration;
  FakeHost host(&registration);
  FakeEvents events;
  FakeDataPool pool;
  module.setInterface(500, 2, &host);
  ASSERT_EQ(module.create(), 1);
  ASSERT_EQ(registration.attached.All().size(), 1u);
  HmiModule* app = registration.attached.All()[0];
  app->SetInterface(101, 1, 0, &pool);  // a wrong version changes nothing
  EXPECT_TRUE(pool.subscriptions.All().empty());
  app->SetInterface(101, 0, 0, &pool);
  app->SetInterface(100, 0, 0, &events);
  ASSERT_EQ(pool.subscriptions.All().size(), 1u);
  ASSERT_EQ(events.listeners.All().size(), 1u);
  EXPECT_EQ(pool.subscriptions.All()[0].second, kSpeedId);
  EXPECT_EQ(app->OnRunLevel(200, 1), 200);
  ASSERT_EQ(registration.published.All().size(), 1u);
  auto* service = static_cast<Quillan::PlayerService*>(registration.published.All()[0].service);
  EXPECT_EQ(service->Run(), 0);
  EXPECT_EQ(service->Run(), 2);
  EXPECT_EQ(ReadSpeedPercent(), 100);  // a freshly loaded module's speed
  // Next event 100, tick 100, next event 100.2 (still 100: neither reported
  // nor announced), next event 5000.
  EventListener* listener = events.listeners.All()[0].first;
  listener->OnEvent(kStartEvent, 0);
  ASSERT_TRUE(WaitUntil([] { return ReadPlaybackValue(kNextId) == 5000; }));
  EXPECT_EQ(ReadPlaybackValue(kTickId), 100);
  const auto clock = pool.reports.All();
  ASSERT_GE(clock.size(), 3u);
  EXPECT_EQ(Reports(clock.begin(), clock.begin() + 3), (Reports{{kNextId}, {kTickId}, {kNextId}}));
  const auto told = events.notifications.All();
  ASSERT_GE(told.size(), 3u);
  EXPECT_EQ(Notifications(told.begin(), told.begin() + 3),
            (Notifications{{kNextId, 0}, {kTickId, 0}, {kNextId, 0}}));
  module.destroy();
  EXPECT_EQ(registration.detached.All(), (std::vector<HmiModule*>{app}));
  EXPECT_EQ(DataPoolDirectory::FindProvider(77), nullptr);
  EXPECT_TRUE(module.Unload());
}

}  // namespace
