// The application object against recording host interfaces: the run-level
// table, HMI events and data-pool speed changes, and the mirroring of the
// runner's clock into the data pool, rounding included. Playback never runs
// here (nobody calls Run); the module test drives the whole path.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "DataPoolDirectory.h"
#include "module/MirlApp.h"
#include "module/SpeedTable.h"
#include "player/PlayerService.h"
#include "runtime/DataPoolReader.h"
#include "tests/module/FakeHmiHost.h"
#include "tests/support/TraceCapture.h"

namespace {

using namespace pelorin_test;  // NOLINT: the fakes and ids
using Quillan::MirlApp;

// Position of the first message containing `fragment`, or -1.
int IndexOf(const std::vector<std::string>& texts, const std::string& fragment) {
  for (size_t i = 0; i < texts.size(); ++i) {
    if (texts[i].find(fragment) != std::string::npos) return static_cast<int>(i);
  }
  return -1;
}

// The speed table is module-wide: each test starts it at 100 percent.
class MirlAppTest : public ::testing::Test {
 protected:
  void SetUp() override {
    {
      std::unique_ptr<Quillan::DataPoolReader> table(Quillan::SpeedTable::CreateReader(&pool));
      ASSERT_TRUE(SetSpeedPercent(100));
    }
    pool.reports.Clear();
    ASSERT_TRUE(app.Startup(&host));
  }

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
  EXPECT_NE(service->GetTimeAdjuster(), nullptr);

  // Going down through 200 leaves nothing to publish again.
  EXPECT_EQ(app.OnRunLevel(200, -1), 200);
  EXPECT_EQ(app.OnRunLevel(200, 1), 200);
  EXPECT_EQ(registration.published.All().size(), 1u);
}

// The speed table behind client 76 holds the speed at 0x4c000001 and one
// more entry; ids outside entries 1 and 2 are refused.
TEST_F(MirlAppTest, TheSpeedTableServesEntriesOneAndTwoOfClient76) {
  GiveInterfaces();
  DataPoolClientInterface* table = DataPoolDirectory::FindClient(76);
  ASSERT_NE(table, nullptr);
  int32_t percent = 0;
  table->LockRead();
  EXPECT_TRUE(table->GetValue(kSpeedId, &percent));
  table->UnlockRead();
  EXPECT_EQ(percent, 100);
  table->LockWrite();
  EXPECT_FALSE(table->SetInt(0x4c000000, 1));
  EXPECT_FALSE(table->SetInt(0x4c000003, 1));
  EXPECT_TRUE(table->SetInt(0x7f000001, 120));  // the high byte is masked off
  table->UnlockWrite();
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

TEST_F(MirlAppTest, StartEventSetsTheSpeedFromTheDataPoolThenStarts) {
  GiveInterfaces();
  ASSERT_TRUE(SetSpeedPercent(150));
  trace.Clear();
  app.GetEventListenerFace()->OnEvent(kStartEvent, 0);
  const auto texts = trace.Texts();
  const int speedRead = IndexOf(texts, "MirlApp::SetPlayerSpeedFromDP:playbackSpeed=150");
  const int speedSet = IndexOf(texts, "InteractiveRunner::SetSpeed: 1.5");
  const int started = IndexOf(texts, "Player::StartPlayback");
  EXPECT_GE(speedRead, 0);
  EXPECT_GT(speedSet, speedRead);
  EXPECT_GT(started, speedSet);

  trace.Clear();
  ASSERT_TRUE(SetSpeedPercent(100));
  app.OnEvent(kStartEvent, 0);  // the primary face reaches the same handler
  EXPECT_TRUE(trace.Contains("MirlApp::SetPlayerSpeedFromDP:playbackSpeed=100"));
  EXPECT_TRUE(trace.Contains("InteractiveRunner::SetSpeed: 1"));

  trace.Clear();
  app.GetEventListenerFace()->OnEvent(kStopEvent, 0);
  EXPECT_TRUE(trace.Contains("InteractiveRunner::Stop"));
  EXPECT_FALSE(trace.Contains("SetPlayerSpeedFromDP"));

  trace.Clear();
  app.GetEventListenerFace()->OnEvent(0x4c000002, 0);
  EXPECT_TRUE(trace.Texts().empty());
}

TEST_F(MirlAppTest, OnlyASpeedChangeInTheListSetsTheSpeed) {
  const uint32_t ids[] = {kTickId, kSpeedId, 0x4c000002};
  app.OnValuesChanged(ids, 3);  // before the data pool: nothing to read
  EXPECT_FALSE(trace.Contains("SetPlayerSpeedFromDP"));

  GiveInterfaces();
  ASSERT_TRUE(SetSpeedPercent(250));
  trace.Clear();
  app.GetDataListenerFace()->OnValuesChanged(ids, 3);
  EXPECT_EQ(trace.Count("MirlApp::SetPlayerSpeedFromDP:playbackSpeed=250"), 1u);
  EXPECT_TRUE(trace.Contains("InteractiveRunner::SetSpeed: 2.5"));
  EXPECT_FALSE(trace.Contains("Player::StartPlayback"));

  trace.Clear();
  app.OnValuesChanged(ids, 0);
  app.OnValuesChanged(ids, 1);  // only the tick id
  app.OnValuesChanged(nullptr, 2);
  EXPECT_TRUE(trace.Texts().empty());
}

}  // namespace
