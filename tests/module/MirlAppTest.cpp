// The application object against recording host interfaces: run levels and
// tear-down, HMI events, speed changes and the runner's clock in the data
// pool. Playback never runs here; each test writes the speed it reads.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "DataPoolDirectory.h"
#include "module/MirlApp.h"
#include "player/PlayerService.h"
#include "tests/module/FakeHmiHost.h"
#include "tests/support/TraceCapture.h"

namespace {

using namespace pelorin_test;  // NOLINT: the fakes and ids
using Quillan::MirlApp;

class MirlAppTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(app.Startup(&host)); }

  void GiveInterfaces() {
    app.SetInterface(100, 0, 0, &events);
    app.SetInterface(101, 0, 0, &pool);
  }

  StorageFolder storage{"interactive=1\nautostart=0\n", "100 $TMC\n"};
  TraceCapture trace{2};
  FakeRegistration registration;
  FakeHost host{&registration};
  FakeEvents events;
  FakeDataPool pool;
  FakeDataPool otherPool;
  MirlApp app;
};

TEST_F(MirlAppTest, RunLevelsAroundTwoHundredPublishAndTearDown) {
  GiveInterfaces();
  EXPECT_EQ(app.OnRunLevel(150, 1), 200);
  EXPECT_EQ(app.OnRunLevel(250, 1), 250);
  EXPECT_EQ(app.OnRunLevel(200, 0), 200);
  EXPECT_EQ(app.OnRunLevel(250, -1), 200);
  EXPECT_EQ(app.OnRunLevel(150, -1), 150);
  EXPECT_TRUE(registration.published.All().empty());

  EXPECT_EQ(app.OnRunLevel(200, 1), 200);
  const auto published = registration.published.All();
  ASSERT_EQ(published.size(), 1u);
  EXPECT_EQ(published[0].kind, 54);
  EXPECT_EQ(published[0].version, 1);
  EXPECT_EQ(published[0].runLevel, 201);
  auto* service = static_cast<Quillan::PlayerService*>(published[0].service);
  ASSERT_NE(service, nullptr);
  EXPECT_NE(service->GetRecordDispatcher(), nullptr);

  // Going down through 200 deletes the player and the data-pool objects:
  // nothing to publish again, and later events find nothing to act on.
  EXPECT_EQ(app.OnRunLevel(200, -1), 200);
  EXPECT_EQ(DataPoolDirectory::FindProvider(77), nullptr);
  EXPECT_EQ(DataPoolDirectory::FindClient(76), nullptr);
  EXPECT_EQ(pool.unregistered.All(), (std::vector<uint32_t>{77}));
  EXPECT_EQ(app.OnRunLevel(200, 1), 200);
  EXPECT_EQ(registration.published.All().size(), 1u);
  trace.Clear();
  const uint32_t speed[] = {kSpeedId};
  app.OnEvent(kStartEvent, 0);
  app.OnValuesChanged(speed, 1);
  app.OnTick(nullptr, 5.0);
  EXPECT_TRUE(trace.Texts().empty());
  EXPECT_TRUE(events.notifications.All().empty());
}

// The speed table behind client 76 serves entries 1 and 2 under the mask
// 0x00FFFFFF; a second data pool replaces the first one's objects.
TEST_F(MirlAppTest, TheSpeedTableServesEntriesOneAndTwoOfClient76) {
  GiveInterfaces();
  DataPoolClientInterface* table = DataPoolDirectory::FindClient(76);
  ASSERT_NE(table, nullptr);
  table->LockWrite();
  EXPECT_FALSE(table->SetInt(0x4c000000, 1));
  EXPECT_FALSE(table->SetInt(0x4c000003, 1));
  EXPECT_TRUE(table->SetInt(0x7f000001, 120));
  table->UnlockWrite();
  EXPECT_EQ(ReadSpeedPercent(), 120);

  app.SetInterface(101, 0, 0, &otherPool);
  EXPECT_EQ(pool.unregistered.All(), (std::vector<uint32_t>{77}));
  EXPECT_EQ(otherPool.subscriptions.All().size(), 1u);
  EXPECT_NE(DataPoolDirectory::FindProvider(77), nullptr);
}

TEST_F(MirlAppTest, TickAndNextEventAreRoundedStoredAndAnnounced) {
  app.OnTick(nullptr, 3.0);  // no data pool yet: nothing to store
  app.SetInterface(101, 0, 0, &pool);
  app.OnNextEvent(nullptr, 41.5);  // stored and reported without an event service
  EXPECT_EQ(ReadPlaybackValue(kNextId), 42);
  EXPECT_TRUE(events.notifications.All().empty());
  pool.reports.Clear();
  app.SetInterface(100, 0, 0, &events);
  Quillan::RunnerListener* listener = app.GetRunnerListenerFace();
  listener->OnTick(nullptr, 12.5);
  EXPECT_EQ(ReadPlaybackValue(kTickId), 13);
  listener->OnTick(nullptr, 12.7);  // still 13: neither reported nor announced
  listener->OnNextEvent(nullptr, -1.7);
  EXPECT_EQ(ReadPlaybackValue(kNextId), -1);
  listener->OnNextEvent(nullptr, 2.49);
  EXPECT_EQ(ReadPlaybackValue(kNextId), 2);
  listener->OnNextEvent(nullptr, 1e12);  // beyond the 32-bit range: saturates
  EXPECT_EQ(ReadPlaybackValue(kNextId), 2147483647);
  listener->OnFinished(nullptr);

  using Reports = std::vector<std::vector<uint32_t>>;
  EXPECT_EQ(pool.reports.All(), (Reports{{kTickId}, {kNextId}, {kNextId}, {kNextId}}));
  using Notifications = std::vector<std::pair<uint32_t, int>>;
  EXPECT_EQ(events.notifications.All(),
            (Notifications{{kTickId, 0}, {kNextId, 0}, {kNextId, 0}, {kNextId, 0}}));
}

// The start event reads the speed, sets it, then starts; a speed change in
// a change report only sets it; the stop event and other ids read nothing.
TEST_F(MirlAppTest, EventsAndSpeedChangesReachThePlayer) {
  const uint32_t ids[] = {kTickId, kSpeedId, 0x4c000002};
  trace.Clear();
  app.OnValuesChanged(ids, 3);  // before the data pool: nothing to read
  EXPECT_TRUE(trace.Texts().empty());
  GiveInterfaces();
  ASSERT_TRUE(SetSpeedPercent(150));
  app.GetEventListenerFace()->OnEvent(kStartEvent, 0);
  const std::vector<std::string> texts = trace.Texts();
  ASSERT_GE(texts.size(), 3u);
  EXPECT_EQ(std::vector<std::string>(texts.begin(), texts.begin() + 3),
            (std::vector<std::string>{"MirlApp::SetPlayerSpeedFromDP:playbackSpeed=150",
                                      "InteractiveRunner::SetSpeed: 1.5", "Player::StartPlayback"}));

  trace.Clear();
  ASSERT_TRUE(SetSpeedPercent(250));
  app.GetDataListenerFace()->OnValuesChanged(ids, 3);
  app.OnValuesChanged(ids, 1);  // only the tick id
  app.OnValuesChanged(nullptr, 2);
  EXPECT_EQ(trace.Texts(), (std::vector<std::string>{
                               "MirlApp::SetPlayerSpeedFromDP:playbackSpeed=250",
                               "InteractiveRunner::SetSpeed: 2.5"}));

  trace.Clear();
  app.OnEvent(kStopEvent, 0);
  app.OnEvent(0x4c000002, 0);
  EXPECT_EQ(trace.Texts(), std::vector<std::string>{"InteractiveRunner::Stop"});
}

}  // namespace
