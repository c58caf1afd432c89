// Runners: what every strategy shares, the real-time runner's delays and
// the batched replay in one step.

#include "player/Runner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "player/BatchedRunner.h"
#include "player/RealTimeRunner.h"
#include "tests/player/PlaybackRig.h"
#include "tests/support/TraceCapture.h"

namespace Quillan {
namespace {

using pelorin_test::PlaybackRig;
using Strings = std::vector<std::string>;

std::unique_ptr<Runner> MakeRunner(double speed) {
  if (speed == 0.0) return std::make_unique<BatchedRunner>();
  return std::make_unique<RealTimeRunner>(speed);
}

// Plays `events` to the end on held steps (speed 0: batched).
Strings Play(const std::string& events, double speed) {
  PlaybackRig<Runner> rig(events, MakeRunner(speed));
  rig.Run();
  rig.loop().RunAll();
  EXPECT_EQ(rig.loop().Held(), 0u);
  return rig.probe().Log();
}

TEST(RunnerTest, ConsumersGetWholeSecondsAndMalformedLinesEndPlayback) {
  EXPECT_EQ(Play("12.9 $TMC a\n-3.5 $TSL b\n5000000000 $TOT c\n4294967295.7 x\n", 0.0),
            (Strings{"record 12 $TMC a", "record 0 $TSL b", "record 4294967295 $TOT c",
                     "record 4294967295 x ", "finished"}));
  EXPECT_EQ(Play("1 $TMC a\n2 $TMC b\ngarbage\n3 $TMC c\n", 1.0),
            (Strings{"record 1 $TMC a", "record 2 $TMC b", "finished"}));
  EXPECT_EQ(Play("1 $TMC a\n $TMC x\n2 $TMC b\n", 0.0), (Strings{"record 1 $TMC a", "finished"}));
  EXPECT_EQ(Play("", 1.0), Strings{"finished"});
}

TEST(RunnerTest, WithoutInputTheFirstStepReportsTheEnd) {
  pelorin_test::TraceCapture capture(2);
  pelorin_test::PlaybackProbe probe;
  RealTimeRunner runner(1.0);
  runner.AddListener(&probe);
  pelorin_test::RecordingWorkLoop loop;
  runner.RunOn(&loop);
  loop.RunNext();
  EXPECT_EQ(probe.Log(), Strings{"finished"});
  EXPECT_EQ(loop.Held(), 0u);
  const auto lines = capture.Lines();
  EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [](const pelorin_test::TraceLine& line) {
    return line.text == "Runner::ReadNextRecord: input not created" && line.level == 4;
  }));
}

TEST(RunnerTest, ARefusedStepIsGivenUpAndAShutDownRunnerNeitherReadsNorPosts) {
  {
    PlaybackRig<Runner> rig("1 $TMC a\n2 $TMC b\n", MakeRunner(1.0));
    rig.Run();
    rig.loop().RefusePosts(true);
    rig.loop().RunAll();  // the sanitizer build reports the step if it leaked
    EXPECT_EQ(rig.loop().Held(), 0u);
    EXPECT_TRUE(rig.probe().Log().empty());
  }
  {
    PlaybackRig<Runner> rig("1 $TMC a\n2 $TMC b\n3 $TMC c\n", MakeRunner(1.0));
    rig.Run();
    rig.loop().RunNext();
    rig.loop().RunNext();
    rig.runner().ShutDown();
    const size_t posts = rig.loop().Posts().size();
    rig.loop().RunAll();
    EXPECT_EQ(rig.probe().Log(), Strings{"record 1 $TMC a"});
    EXPECT_EQ(rig.loop().Posts().size(), posts);
  }
  {
    // Moved to another loop, the step still queued on the first is cancelled.
    pelorin_test::RecordingWorkLoop other;
    PlaybackRig<Runner> rig("1 $TMC a\n", MakeRunner(1.0));
    rig.Run();
    rig.runner().RunOn(&other);
    EXPECT_TRUE(rig.loop().Posts()[0].cancelled);
    EXPECT_EQ(other.LiveHeld(), 1u);
    rig.runner().ShutDown();
    other.RunAll();
  }
  PlaybackRig<Runner> batch("1 $TMC a\n2 $TMC b\n", MakeRunner(0.0));
  batch.Run();
  batch.runner().ShutDown();
  batch.loop().RunAll();
  EXPECT_TRUE(batch.probe().Log().empty());
  EXPECT_FALSE(batch.runner().IsFinished());
}

// Each record follows its predecessor by the recorded distance over speed,
// to the nearest millisecond, saturated; every record is dispatched once, in
// order, and the step that dispatches the last one reports the end.
TEST(RealTimeRunnerTest, DelaysAreTheRecordedDistanceOverSpeed) {
  const struct {
    const char* events;
    double speed;
    std::vector<uint32_t> delays;
  } spacings[] = {
      {"100 $TMC a\n101 $TMC b\n103.5 $TMC c\n", 1.0, {0, 1000, 2500}},
      {"100 $TMC a\n101 $TMC b\n103.5 $TMC c\n", 2.0, {0, 500, 1250}},
      {"5 $TMC a\n4 $TMC b\n6 $TMC c\n", 1.0, {0, 0, 2000}},  // backwards goes at once
      {"0 $TMC a\n3 $TMC b\n", 1.0, {0, 0}},                   // so does time zero
      {"10 a\n10.0004 b\n10.0011 c\n11.5011 d\n", 1.0, {0, 0, 1, 1500}},
      {"10 a\n10.0005 b\n", 1.0, {0, 1}},  // halves upward
      {"1 a\n2 b\n3.5 c\n", 2000.0, {0, 1, 1}},
      {"1 a\n5000001 b\n", 0.001, {0, 4294967295u}},
  };
  for (const auto& spacing : spacings) {
    SCOPED_TRACE(spacing.events);
    PlaybackRig<Runner> rig(spacing.events, MakeRunner(spacing.speed));
    rig.Run();
    rig.loop().RunAll();
    EXPECT_EQ(rig.loop().Delays(), spacing.delays);
    const Strings log = rig.probe().Log();
    ASSERT_EQ(log.size(), spacing.delays.size() + 1);
    EXPECT_EQ(log.back(), "finished");
    EXPECT_EQ(rig.loop().Held(), 0u);
  }
}

TEST(BatchedRunnerTest, TheWholeFileGoesOutInOneStep) {
  PlaybackRig<Runner> rig("1 $TMC a\n2 $TMC b\n3 $TMC c\n", MakeRunner(0.0));
  rig.Run();
  EXPECT_TRUE(rig.loop().RunNext());
  EXPECT_EQ(rig.probe().Payloads(), (Strings{"a", "b", "c"}));
  EXPECT_EQ(rig.probe().Finishes(), 1u);
  EXPECT_EQ(rig.loop().Posts().size(), 1u);
}

}  // namespace
}  // namespace Quillan
