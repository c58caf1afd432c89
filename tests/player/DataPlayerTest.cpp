// DataPlayer: configuration, its lifecycle, moving message date-times to the
// present, and shutting down in the middle of playback with each runner.

#include "player/DataPlayer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "OnlineTrafficReply.h"
#include "OnlineTrafficService.h"
#include "comm/Lifecycle.h"
#include "player/InteractiveRunner.h"
#include "player/Runner.h"
#include "producers/RecordDispatcher.h"
#include "producers/TrafficDataListener.h"
#include "runtime/DateTime.h"
#include "tests/player/PlaybackRig.h"
#include "tests/support/TempFile.h"
#include "tests/support/TestTime.h"
#include "tests/support/TraceCapture.h"

namespace Quillan {
namespace {

using pelorin_test::MakeConfig;
using pelorin_test::ScaledMs;
using pelorin_test::TempFile;
using pelorin_test::WaitUntil;
using Strings = std::vector<std::string>;

// Counts the TMC messages that leave the player.
class CountingListener : public TrafficDataListener {
 public:
  void OnServiceList(ServiceList) override {}
  void OnTmcMessage(std::shared_ptr<TmcMessageData>) override { m_messages.fetch_add(1); }
  size_t Messages() const { return m_messages.load(); }

 private:
  std::atomic<size_t> m_messages{0};
};

std::string TmcLines(int count, double start, double step) {
  std::string events;
  for (int i = 0; i < count; ++i) events += std::to_string(start + i * step) + " $TMC\n";
  return events;
}

// The paths it reports (the TPEG directory defaults to the events file's)
// and the runner it chooses on first use.
TEST(DataPlayerTest, TheConfigurationChoosesPathsAndRunner) {
  const struct {
    const char* config;
    std::string paths;
    std::string runner;
  } cases[] = {
      {"", "eventsFilePath=/fs/sda0/quillan/events tpegsDirPath=/fs/sda0/quillan/",
       "InteractiveRunner autostart=0, speed=0"},
      {"eventsFile=/data/rec/a.txt\nplaybackSpeed=-3\nautostart=on\n",
       "eventsFilePath=/data/rec/a.txt tpegsDirPath=/data/rec/",
       "InteractiveRunner autostart=1, speed=-3"},
      {"eventsFile=a.txt\ninteractive=false\nplaybackSpeed=2\n",
       "eventsFilePath=a.txt tpegsDirPath=", "RealTimeRunner speed=2"},
      {"eventsFile=/data/a.txt\ntpegsDir=/tpeg\ninteractive=false\nplaybackSpeed=0\n",
       "tpegsDirPath=/tpeg", "BatchedRunner"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.config);
    pelorin_test::TraceCapture capture(2);
    DataPlayer player(MakeConfig(c.config));
    std::string paths;
    for (const std::string& text : capture.Texts()) {
      if (text.rfind("DataPlayer::Get", 0) != 0) continue;
      paths += (paths.empty() ? "" : " ") + text.substr(text.find(' ') + 1);
    }
    EXPECT_EQ(paths, c.paths);
    EXPECT_FALSE(capture.Contains("DataPlayer: using "));
    EXPECT_EQ(player.GetRunner(), player.GetRunner());
    EXPECT_EQ(capture.Count("DataPlayer: using " + c.runner), 1u) << capture.Texts().back();
    EXPECT_EQ(dynamic_cast<InteractiveRunner*>(player.GetRunner()) != nullptr,
              c.runner.rfind("Interactive", 0) == 0);
  }
}

// Larger than the events file's read buffer.
TEST(DataPlayerTest, AFileOfTmcRecordsReachesTheTrafficListeners) {
  TempFile events(TmcLines(5000, 1416131460.0, 1.0));
  DataPlayer player(MakeConfig("eventsFile=" + events.Path() + "\ninteractive=false\n"));
  CountingListener listener;
  player.GetRecordDispatcher()->AddListener(&listener);
  PlayerService* service = &player;
  ASSERT_EQ(service->Run(), 0);
  ASSERT_TRUE(WaitUntil([&] { return player.GetRunner()->IsFinished(); }, ScaledMs(5000)));
  EXPECT_EQ(listener.Messages(), 5000u);
  EXPECT_EQ(player.GetRecordDispatcher()->GetLastTmcTime(), 1416136459u);
  EXPECT_EQ(service->Run(), 2);
}

// The lifecycle the host gets from the service: each start and stop is told
// to the peer and shows in the flags the host may ask.
TEST(DataPlayerTest, TheLifecycleTellsItsPeerAndKeepsItsState) {
  struct Peer : comm::LifecyclePeer {
    void OnStarted(comm::Lifecycle* of, const comm::LifecycleRequest&) override {
      seen += "S", from = of;
    }
    void OnStopped(comm::Lifecycle* of, const comm::LifecycleRequest&) override {
      seen += "s", from = of;
    }
    std::string seen;
    comm::Lifecycle* from = nullptr;
  } peer;
  DataPlayer player(MakeConfig(""));
  comm::Lifecycle* lifecycle = player.GetLifecycle();
  ASSERT_NE(lifecycle, nullptr);
  EXPECT_TRUE(lifecycle->IsStopped());
  lifecycle->SetPeer(&peer);
  for (int round = 0; round < 2; ++round) {
    lifecycle->Start();
    EXPECT_TRUE(lifecycle->IsStarted() && !lifecycle->IsStopped());
    lifecycle->Stop();
    EXPECT_TRUE(lifecycle->IsStopped() && !lifecycle->IsStarted());
  }
  EXPECT_EQ(peer.seen, "SsSs");
  EXPECT_EQ(peer.from, lifecycle);
}

// --- Moving message date-times to the present -----------------------------

// 2021-03-01 00:30:00 UTC.
constexpr uint32_t kNow = 1614558600u;

void FixedNow(DateTime& now) { DateTimeFromSeconds(now, kNow); }

// An online traffic service that counts every call and never answers.
class SilentService : public OnlineTrafficService {
 public:
  int setOnlineTrafficDataStatus(int32_t) override { return ++calls, 0; }
  int getInventory() override { return ++calls, 0; }
  int getNewData() override { return ++calls, 0; }
  int setNewData(std::shared_ptr<CIString>) override { return ++calls, 0; }
  int setNewSession() override { return ++calls, 0; }
  int setTimeoutForFallback(int64_t) override { return ++calls, 0; }
  int dsiConnectionStateChanged(int32_t) override { return ++calls, 0; }
  std::atomic<int> calls{0};
};

struct Message {
  uint8_t bytes[24] = {};
  Message(uint8_t kind, std::initializer_list<uint8_t> first,
          std::initializer_list<uint8_t> second) {
    bytes[0] = kind;
    std::copy(first.begin(), first.end(), bytes + 14);
    std::copy(second.begin(), second.end(), bytes + 18);
    for (int i = 1; i < 14; ++i) bytes[i] = static_cast<uint8_t>(0xA0 + i);
    bytes[22] = 0x5A;
    bytes[23] = 0xA5;
  }
  std::vector<uint8_t> Times() const { return std::vector<uint8_t>(bytes + 14, bytes + 22); }
};

class DataPlayerTimeAdjusterTest : public ::testing::Test {
 protected:
  void SetUp() override { m_player.SetDateTimeSource(&FixedNow); }
  // Gives the dispatcher a last TMC time `seconds` before now.
  void RecordTmcBefore(int64_t seconds) {
    m_player.GetRecordDispatcher()->OnRecord(static_cast<uint32_t>(kNow - seconds), "$TMC", "");
  }
  std::vector<uint8_t> Adjust(Message message) {
    m_player.GetTimeAdjuster()->AdjustMessageTimes(message.bytes);
    EXPECT_EQ(message.bytes[13], 0xAD);  // bytes outside the date-times stay
    EXPECT_EQ(message.bytes[22], 0x5A);
    return message.Times();
  }

  DataPlayer m_player{Config()};
};

using Bytes = std::vector<uint8_t>;

TEST_F(DataPlayerTimeAdjusterTest, TmcMessagesMoveByTheDistanceToTheLastTmcRecord) {
  Message message(0, {12, 31, 23, 30}, {2, 28, 23, 45});
  EXPECT_EQ(Adjust(message), message.Times());  // no TMC record yet
  RecordTmcBefore(3600);
  // One hour on: the year and the month roll over.
  EXPECT_EQ(Adjust(message), (Bytes{1, 1, 0, 30, 3, 1, 0, 45}));
  // A recording ahead of now moves times back, across the year.
  RecordTmcBefore(-7200);
  EXPECT_EQ(Adjust(Message(0, {1, 1, 1, 0}, {6, 15, 12, 5})), (Bytes{12, 31, 23, 0, 6, 15, 10, 5}));
  // A date-time without a month or a day is left alone.
  RecordTmcBefore(86400);
  EXPECT_EQ(Adjust(Message(0, {3, 0, 10, 10}, {0, 5, 10, 10})), (Bytes{3, 0, 10, 10, 0, 5, 10, 10}));
  EXPECT_EQ(Adjust(Message(0, {3, 5, 10, 10}, {3, 0, 10, 10})), (Bytes{3, 6, 10, 10, 3, 0, 10, 10}));
}

TEST_F(DataPlayerTimeAdjusterTest, OnlineMessagesMoveByTheLastOnlineDataTime) {
  RecordTmcBefore(3600);
  const Message online(1, {1, 25, 10, 0}, {2, 1, 8, 59});
  EXPECT_EQ(Adjust(online), online.Times());  // no data file announced yet

  SilentService service;
  OnlineTrafficReply* reply = m_player.GetOnlineTrafficReply();
  reply->SetService(&service);
  reply->OnServiceStatus(0);
  reply->OnServiceValue(1);
  ASSERT_EQ(m_player.GetConsumers()[1]->OnRecord(kNow - 40 * 86400, "$TOT", "setNewData:a.bin"), 0);
  for (uint8_t kind : {1, 2}) {
    Message message = online;
    message.bytes[0] = kind;
    EXPECT_EQ(Adjust(message), (Bytes{3, 6, 10, 0, 3, 13, 8, 59}));
  }
  const Message other(3, {1, 25, 10, 0}, {2, 1, 8, 59});
  EXPECT_EQ(Adjust(other), other.Times());
}

// --- Shutting down in the middle of playback -------------------------------

// Destroyed while line 1 waits for an answer that never comes, the player
// gives up the wait promptly and plays nothing after it: line 2 never
// reaches the listener, whichever runner and however the threads meet.
TEST(DataPlayerShutDownTest, NothingPlaysAfterAShutDownThatReleasedABlockedWait) {
  TempFile events("1416131460 $TOT getInventory\n1416131460 $TMC\n1416131470 $TMC\n");
  const auto start = std::chrono::steady_clock::now();
  for (const char* runner :
       {"interactive=false\n", "interactive=false\nplaybackSpeed=1\n", "autostart=1\n"}) {
    const Config config = MakeConfig("eventsFile=" + events.Path() + "\n" + runner);
    for (int round = 0; round < 100; ++round) {
      SilentService service;
      CountingListener listener;
      auto player = std::make_unique<DataPlayer>(config);
      player->GetRecordDispatcher()->AddListener(&listener);
      player->GetOnlineTrafficReply()->SetService(&service);
      player->GetOnlineTrafficReply()->OnServiceStatus(0);
      ASSERT_EQ(player->Run(), 0);
      ASSERT_TRUE(WaitUntil([&] { return service.calls.load() > 0; }, ScaledMs(5000)));
      player.reset();
      ASSERT_EQ(listener.Messages(), 0u) << runner << " round " << round;
      EXPECT_EQ(service.calls.load(), 1);  // the inventory request, and nothing after it
    }
  }
  // wallclock: a released wait ends at once, not after its poll period.
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(ScaledMs(5000)));
}

}  // namespace
}  // namespace Quillan
