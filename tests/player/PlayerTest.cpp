// Player: running, failing to run, the end of the file and its replay, and
// one playback under contention from host threads.

#include "player/Player.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "player/InputFile.h"
#include "player/Runner.h"
#include "runtime/WorkLoopInterface.h"
#include "tests/player/PlaybackRig.h"
#include "tests/support/PlaybackProbe.h"
#include "tests/support/RecordingWorkLoop.h"
#include "tests/support/TempFile.h"
#include "tests/support/TestTime.h"
#include "tests/support/TraceCapture.h"

namespace Quillan {
namespace {

using pelorin_test::MakeConfig;
using pelorin_test::PlaybackProbe;
using pelorin_test::RecordingWorkLoop;
using pelorin_test::ScaledMs;
using pelorin_test::TempFile;
using pelorin_test::TraceCapture;
using pelorin_test::WaitUntil;
using Strings = std::vector<std::string>;

// A player whose only consumer (and second listener) is a probe or a
// stopwatch, on a work loop of the test's choice.
class TestPlayer : public Player {
 public:
  template <typename Watcher>
  TestPlayer(const std::string& config, Watcher* watcher)
      : Player(MakeConfig(config)), m_consumer(watcher) {
    GetRunner()->AddListener(watcher);
  }
  ~TestPlayer() override { ShutDownPlayback(); }
  std::vector<RecordConsumer*> GetConsumers() override { return {m_consumer}; }
  using Player::SetWorkLoopFactory;

  // Plays on a recording loop whose steps the test runs.
  RecordingWorkLoop* UseRecordingLoop() {
    auto* loop = new RecordingWorkLoop();
    SetWorkLoopFactory([loop] { return loop; });
    return loop;
  }
  bool InputOpen() const { return m_inputFile != nullptr && m_inputFile->IsOpen(); }

 private:
  RecordConsumer* m_consumer;
};

std::string Numbered(int count, double start, double step) {
  std::string events;
  for (int i = 0; i < count; ++i) {
    events += std::to_string(start + i * step) + " $TMC " + std::to_string(i) + "\n";
  }
  return events;
}

TEST(PlayerTest, RunStartsTheNamedLoopOnceAndOnlyOnceAndTheEndIsFinal) {
  TraceCapture capture(2);
  TempFile events("1 $TMC a\n");
  PlaybackProbe probe;
  TestPlayer player("eventsFile=" + events.Path() + "\ninteractive=false\n", &probe);
  RecordingWorkLoop* loop = player.UseRecordingLoop();
  EXPECT_EQ(player.Run(), 0);
  EXPECT_EQ(loop->Name(), "Quillan::DataPlayer");
  EXPECT_EQ(loop->Posts().size(), 1u);

  EXPECT_EQ(player.Run(), 2);
  EXPECT_EQ(capture.Lines().back().text, "Player::Run workloop already running");
  EXPECT_EQ(capture.Lines().back().level, 4);
  EXPECT_EQ(loop->Posts().size(), 1u);
  loop->RunAll();
  EXPECT_EQ(probe.Log(), (Strings{"record 1 $TMC a", "finished"}));
  EXPECT_FALSE(player.InputOpen());

  // Start, speed and stop leave a fixed-pace runner alone, at its end too.
  capture.Clear();
  player.StartPlayback();
  player.SetSpeed(3.0);
  player.Stop();
  EXPECT_EQ(capture.Texts(), Strings{"Player::StartPlayback"});
  EXPECT_EQ(loop->Held(), 0u);
}

TEST(PlayerTest, AMissingEventsFileOrLoopFailsRunOnceThenRunReportsRunning) {
  TraceCapture capture(2);
  PlaybackProbe probe;
  TestPlayer player("eventsFile=/nonexistent/pelorin/events\n", &probe);
  EXPECT_EQ(player.Run(), 1);
  EXPECT_TRUE(
      capture.Contains("DataPlayer::CreateInput: failed to open /nonexistent/pelorin/"
                       "events, error=1"));
  EXPECT_TRUE(capture.Contains("Player::Initialize: Failed to create input."));
  EXPECT_EQ(player.Run(), 2);
  EXPECT_FALSE(player.RewindInput());

  TestPlayer loopless("", &probe);
  loopless.SetWorkLoopFactory([]() -> WorkLoopInterface* { return nullptr; });
  EXPECT_EQ(loopless.Run(), 1);
  EXPECT_TRUE(capture.Contains("Player::Initialize: m_workLoop failed to initialize."));
}

// After the end the file is closed; a start rewinds it. Gone, it cannot be
// rewound and nothing plays; back again, a start (a stop first changes
// nothing) replays it from the first record.
TEST(PlayerTest, StartAfterTheEndReplaysTheFileFromItsStart) {
  TraceCapture capture(2);
  const std::string records = "10 $TMC a\n11 $TMC b\n15 $TMC c\n";
  TempFile events(records);
  PlaybackProbe probe;
  TestPlayer player("eventsFile=" + events.Path() + "\nautostart=1\n", &probe);
  RecordingWorkLoop* loop = player.UseRecordingLoop();
  ASSERT_EQ(player.Run(), 0);
  loop->RunAll();
  EXPECT_FALSE(player.InputOpen());

  std::remove(events.Path().c_str());
  player.StartPlayback();
  EXPECT_TRUE(capture.Contains("Player::RewindInput: failed to (re)open input file error="));
  EXPECT_TRUE(capture.Contains("Player::StartPlayback: failed to rewind input file"));
  EXPECT_EQ(loop->Held(), 0u);

  pelorin_test::WriteFile(events.Path(), records);
  player.Stop();
  player.StartPlayback();
  loop->RunAll();
  EXPECT_EQ(probe.Payloads(), (Strings{"a", "b", "c", "a", "b", "c"}));
  EXPECT_EQ(probe.Finishes(), 2u);
}

// Four host threads start and stop at once; afterwards the log must be
// whole passes: each record once, in order, each end right after the last.
TEST(PlayerTest, HostThreadsStartingAndStoppingGetOnePlayback) {
  const int kRecords = 120;
  TempFile events(Numbered(kRecords, 1000.0, 0.01));
  PlaybackProbe probe;
  TestPlayer player("eventsFile=" + events.Path() + "\nplaybackSpeed=5\n", &probe);
  ASSERT_EQ(player.Run(), 0);
  std::vector<std::thread> hosts;
  for (int t = 0; t < 4; ++t) {
    hosts.emplace_back([&player, t] {
      for (int i = 0; i < 150; ++i) {
        player.StartPlayback();
        if ((i + t) % 3 == 0) std::this_thread::sleep_for(std::chrono::microseconds(200));
        player.SetSpeed(5.0);
        player.Stop();
      }
    });
  }
  for (std::thread& host : hosts) host.join();
  player.StartPlayback();
  ASSERT_TRUE(WaitUntil([&] { return player.GetRunner()->IsFinished(); }, ScaledMs(20000)));
  int expected = 0;
  for (const std::string& entry : probe.Log()) {
    if (entry == "finished") {
      ASSERT_EQ(expected, kRecords) << "an end in the middle of a pass";
      expected = 0;
    } else if (entry.rfind("record ", 0) == 0) {
      ASSERT_EQ(entry.substr(entry.rfind(' ') + 1), std::to_string(expected++));
    }
  }
  EXPECT_EQ(expected, 0);
}

}  // namespace
}  // namespace Quillan
