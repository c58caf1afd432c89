// InteractiveRunner: the order of ticks, next events and dispatches with the
// delays it posts, speed changes, stop and start, the end of the input, and
// the rule that only one chain of steps ever plays.

#include "player/InteractiveRunner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "tests/player/PlaybackRig.h"
#include "tests/support/TraceCapture.h"

namespace Quillan {
namespace {

using pelorin_test::PlaybackRig;
using Strings = std::vector<std::string>;

const char kThreeRecords[] = "10 $TMC a\n11 $TMC b\n15 $TMC c\n";

std::unique_ptr<InteractiveRunner> MakeRunner(bool autostart, double speed = 1.0) {
  auto runner = std::make_unique<InteractiveRunner>(autostart);
  runner->SetSpeed(speed);
  return runner;
}

const Strings kLogAtSpeed1 = {"next 10",          "tick 10", "record 10 $TMC a", "next 11",
                              "record 11 $TMC b", "next 15", "tick 12",          "tick 14",
                              "record 15 $TMC c", "finished"};

// Whole playbacks: the runner starts at speed 4, then gets `speed`; a
// non-positive speed means recorded speed.
TEST(InteractiveRunnerTest, WorkedExamples) {
  pelorin_test::TraceCapture capture(2);
  const struct {
    const char* events;
    double speed;
    Strings log;
    std::vector<uint32_t> delays;
  } examples[] = {
      {kThreeRecords, 1.0, kLogAtSpeed1, {0, 1000, 1000, 2000, 1000}},
      {kThreeRecords, 0.0, kLogAtSpeed1, {0, 1000, 1000, 2000, 1000}},
      {kThreeRecords, -3.0, kLogAtSpeed1, {0, 1000, 1000, 2000, 1000}},
      {kThreeRecords,
       2.0,
       {"next 10", "tick 10", "record 10 $TMC a", "next 11", "record 11 $TMC b", "next 15",
        "tick 14", "record 15 $TMC c", "finished"},
       {0, 500, 1500, 500}},
      // The clock starts at the first positive time and starts again after
      // the record at -4; records without a positive time are not dispatched.
      {"0 $TMC z\n10 $TMC a\n-4 $TMC y\n13 $TMC b\n",
       1.0,
       {"next 0", "next 10", "tick 10", "record 10 $TMC a", "next -4", "next 13", "tick 13",
        "record 13 $TMC b", "finished"},
       {0, 0, 0, 0}},
  };
  for (const auto& example : examples) {
    SCOPED_TRACE(example.events + std::to_string(example.speed));
    PlaybackRig<InteractiveRunner> rig(example.events, MakeRunner(true, 4.0));
    rig.runner().SetSpeed(example.speed);
    rig.Run();
    rig.loop().RunAll();
    EXPECT_EQ(rig.probe().Log(), example.log);
    EXPECT_EQ(rig.loop().Delays(), example.delays);
    const auto posts = rig.loop().Posts();
    ASSERT_FALSE(posts.empty());
    EXPECT_FALSE(posts[0].delayed);  // the first step comes from RunOn's Post
    for (const auto& post : posts) EXPECT_EQ(post.priority, 16u);
    EXPECT_EQ(rig.loop().Held(), 0u);
  }
  EXPECT_TRUE(capture.Contains("InteractiveRunner::SetSpeed: -3"));
  EXPECT_TRUE(capture.Contains("InteractiveRunner::InteractiveRunner, m_stopped=0"));
}

// After two steps over records at `first` and 20.0 the runner stands at 20.0
// with the next tick at `first` + 2; then the speed doubles. The wall-clock
// length beyond the pending record is kept.
TEST(InteractiveRunnerTest, SpeedChangeRetimesTheNextTick) {
  const struct {
    const char* events;
    Strings logAfterChange;
    uint32_t delayAfterChange;
  } cases[] = {
      // Next tick 21.0 lies beyond the record at 20.0: it moves to 22.0.
      {"19 $TMC a\n20 $TMC b\n30 $TMC c\n",
       {"record 20 $TMC b", "next 30", "tick 22"},
       (26000 - 22000) / 2},
      // Next tick 19.0 comes before the record at 20.0: it stays.
      {"17 $TMC a\n20 $TMC b\n30 $TMC c\n",
       {"tick 19", "record 20 $TMC b", "next 30"},
       (23000 - 20000) / 2},
  };
  for (const auto& c : cases) {
    PlaybackRig<InteractiveRunner> rig(c.events, MakeRunner(true));
    rig.Run();
    rig.loop().RunNext();
    rig.loop().RunNext();
    rig.probe().Clear();
    rig.runner().SetSpeed(2.0);
    rig.loop().RunNext();  // the step queued before the change
    rig.loop().RunNext();
    EXPECT_EQ(rig.probe().Log(), c.logAfterChange) << c.events;
    EXPECT_EQ(rig.loop().Delays().back(), c.delayAfterChange) << c.events;
  }
}

TEST(InteractiveRunnerTest, WithoutAutostartNothingIsReadUntilAnAcceptedStart) {
  pelorin_test::TraceCapture capture(2);
  PlaybackRig<InteractiveRunner> rig(kThreeRecords, MakeRunner(false));
  EXPECT_TRUE(capture.Contains("InteractiveRunner::InteractiveRunner, m_stopped=1"));
  rig.runner().Start();  // not bound to a loop yet: refused, still stopped
  EXPECT_EQ(capture.Lines().back().text, "Loop is null!!! ");
  EXPECT_EQ(capture.Lines().back().level, 4);
  rig.Run();
  rig.loop().RunAll();
  EXPECT_EQ(capture.Count("InteractiveRunner::Execute: stopping"), 1u);
  EXPECT_TRUE(rig.probe().Log().empty());

  rig.loop().RefusePosts(true);
  rig.runner().Start();  // refused: the step is deleted (the sanitizer sees leaks), still stopped
  rig.loop().RefusePosts(false);
  rig.runner().Start();
  rig.loop().RunAll();
  EXPECT_EQ(rig.probe().Log(), kLogAtSpeed1);
  EXPECT_EQ(rig.loop().Posts().size(), 7u);  // RunOn, Start and five steps
}

TEST(InteractiveRunnerTest, StopAndStartResumeWithTheDueTickAtOnce) {
  pelorin_test::TraceCapture capture(2);
  PlaybackRig<InteractiveRunner> rig(kThreeRecords, MakeRunner(true));
  rig.Run();
  for (int i = 0; i < 3; ++i) rig.loop().RunNext();  // up to the record at 11
  rig.runner().Stop();
  rig.runner().Stop();
  rig.loop().RunAll();  // the queued step finds the runner stopped
  EXPECT_EQ(capture.Count("InteractiveRunner::Execute: stopping"), 1u);
  EXPECT_EQ(capture.Count("InteractiveRunner::Stop"), 2u);
  rig.probe().Clear();

  rig.runner().Start();
  const auto resumed = rig.loop().Posts().back();
  EXPECT_FALSE(resumed.delayed);
  rig.runner().Start();  // already running: nothing more is posted
  EXPECT_EQ(rig.loop().Posts().back().id, resumed.id);
  rig.loop().RunAll();
  EXPECT_EQ(rig.probe().Log(), (Strings{"tick 12", "tick 14", "record 15 $TMC c", "finished"}));
  EXPECT_EQ(rig.loop().Delays().back(), 1000u);
}

// A stop from inside a dispatch: the consumers after that one get the
// record only after Start, and the earlier ones do not get it twice.
TEST(InteractiveRunnerTest, StopDuringADispatchHoldsTheRecordBackUntilStart) {
  PlaybackRig<InteractiveRunner> rig(kThreeRecords, MakeRunner(true));
  pelorin_test::PlaybackProbe second;
  rig.runner().SetConsumers({&rig.probe(), &second});
  rig.probe().SetOnRecord([&rig](size_t number) {
    if (number == 2) rig.runner().Stop();
  });
  rig.Run();
  rig.loop().RunAll();
  EXPECT_EQ(second.Payloads(), Strings{"a"});
  EXPECT_EQ(rig.loop().LiveHeld(), 0u);
  rig.runner().Start();
  rig.loop().RunAll();
  EXPECT_EQ(rig.probe().Payloads(), (Strings{"a", "b", "c"}));
  EXPECT_EQ(second.Payloads(), (Strings{"a", "b", "c"}));
}

// Start right after Stop, while the old chain's step is still queued: the
// old step is retired and exactly one chain plays on. With `ignoreCancel`
// the old step runs anyway, as when the loop had already taken it.
class InteractiveRunnerOneChainTest : public ::testing::TestWithParam<bool> {};

TEST_P(InteractiveRunnerOneChainTest, StartAfterStopNeverLeavesTwoChains) {
  PlaybackRig<InteractiveRunner> rig(kThreeRecords, MakeRunner(true));
  rig.loop().IgnoreCancel(GetParam());
  rig.Run();
  for (int i = 0; i < 3; ++i) rig.loop().RunNext();
  for (int i = 0; i < 5; ++i) {
    rig.runner().Stop();
    rig.runner().Start();
    EXPECT_EQ(rig.loop().LiveHeld(), 1u);
  }
  rig.probe().Clear();
  rig.loop().RunAll();
  EXPECT_EQ(rig.probe().Log(), (Strings{"tick 12", "tick 14", "record 15 $TMC c", "finished"}));
}

TEST_P(InteractiveRunnerOneChainTest, StartRightAfterRunDoesNotDoubleThePlayback) {
  pelorin_test::TraceCapture capture(2);
  PlaybackRig<InteractiveRunner> rig(kThreeRecords, MakeRunner(false));
  rig.loop().IgnoreCancel(GetParam());
  rig.Run();
  rig.runner().Start();  // before RunOn's step has run
  rig.loop().RunAll();
  EXPECT_EQ(rig.probe().Log(), kLogAtSpeed1);
  EXPECT_EQ(capture.Count("InteractiveRunner::Execute: stopping"), 0u);
}

INSTANTIATE_TEST_SUITE_P(CancelledOrTaken, InteractiveRunnerOneChainTest, ::testing::Bool(),
                         [](const ::testing::TestParamInfo<bool>& tp) {
                           return tp.param ? "StepTakenByTheLoop" : "StepCancelled";
                         });

// Record times so large, or a speed so low, that a tick interval does not
// move the record time: the clock still moves on, and the second record
// plays after its wall-clock distance, reached in steps that all wait.
TEST(InteractiveRunnerTest, CoarseRecordTimesStillTickAndPlay) {
  const struct {
    const char* events;
    double speed;
    size_t delays;  // the first step's, then one per 2 s of wall clock
  } cases[] = {
      {"100000000000000000 $TMC a\n100000000000000016 $TMC b\n", 1.0, 9},  // 16 s apart
      {"1700000000000000 $TMC a\n1700000000000001 $TMC b\n", 0.01, 51},    // microseconds
      {"1700000000 $TMC a\n1700000000.000001 $TMC b\n", 6e-8, 9},          // 15.9 s
  };
  for (const auto& c : cases) {
    PlaybackRig<InteractiveRunner> rig(c.events, MakeRunner(true, c.speed));
    rig.Run();
    rig.loop().RunAll(200);
    EXPECT_EQ(rig.probe().Payloads(), (Strings{"a", "b"})) << c.events;
    const std::vector<uint32_t> delays = rig.loop().Delays();
    ASSERT_EQ(delays.size(), c.delays) << c.events;
    EXPECT_EQ(std::count(delays.begin() + 1, delays.end(), 0u), 0) << c.events;
  }
}

}  // namespace
}  // namespace Quillan
