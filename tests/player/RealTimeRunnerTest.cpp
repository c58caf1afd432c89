// RealTimeRunner and BatchedRunner: the delays the real-time runner posts
// (recorded spacing over speed, to the nearest millisecond, saturated), the
// end of the input, and the batched replay in one step.

#include "player/RealTimeRunner.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "player/BatchedRunner.h"
#include "tests/player/PlaybackRig.h"
#include "tests/support/TestTime.h"
#include "tests/support/TraceCapture.h"

namespace Quillan {
namespace {

using pelorin_test::PlaybackRig;
using Strings = std::vector<std::string>;

struct Spacing {
  const char* name;
  const char* events;
  double speed;
  std::vector<uint32_t> delays;
};

std::string SpacingName(const ::testing::TestParamInfo<std::tuple<Spacing, bool>>& info) {
  return std::string(std::get<0>(info.param).name) + (std::get<1>(info.param) ? "_Real" : "");
}

class RealTimeRunnerDelayTest : public ::testing::TestWithParam<std::tuple<Spacing, bool>> {};

TEST_P(RealTimeRunnerDelayTest, EachRecordFollowsItsPredecessorByTheRecordedDistanceOverSpeed) {
  const Spacing& spacing = std::get<0>(GetParam());
  const bool realLoop = std::get<1>(GetParam());
  PlaybackRig<RealTimeRunner> rig(spacing.events, std::make_unique<RealTimeRunner>(spacing.speed),
                                  realLoop);
  rig.Run();
  if (realLoop) {
    ASSERT_TRUE(rig.probe().WaitForFinishes(1, pelorin_test::ScaledMs(5000)));
  } else {
    rig.loop().RunAll();
  }
  EXPECT_EQ(rig.loop().Delays(), spacing.delays);
  // Every record is dispatched once, in order, and the step that dispatches
  // the last one reports the end.
  const Strings log = rig.probe().Log();
  ASSERT_EQ(log.size(), spacing.delays.size() + 1);
  EXPECT_EQ(log.back(), "finished");
  EXPECT_EQ(rig.loop().Held(), 0u);
}

const Spacing kSpacings[] = {
    {"RecordedSpeed", "100 $TMC a\n101 $TMC b\n103.5 $TMC c\n", 1.0, {0, 1000, 2500}},
    {"DoubleSpeed", "100 $TMC a\n101 $TMC b\n103.5 $TMC c\n", 2.0, {0, 500, 1250}},
    {"BackwardsGoesAtOnce", "5 $TMC a\n4 $TMC b\n6 $TMC c\n", 1.0, {0, 0, 2000}},
    {"ZeroTimeGoesAtOnce", "0 $TMC a\n3 $TMC b\n", 1.0, {0, 0}},
    {"NearestMillisecond", "10 a\n10.0004 b\n10.0011 c\n11.5011 d\n", 1.0, {0, 0, 1, 1500}},
    {"HalvesUpward", "10 a\n10.0005 b\n", 1.0, {0, 1}},
    {"ExactHalf", "1 a\n2 b\n3.5 c\n", 2000.0, {0, 1, 1}},
    {"Saturated", "1 a\n5000001 b\n", 0.001, {0, 4294967295u}},
};

INSTANTIATE_TEST_SUITE_P(Spacings, RealTimeRunnerDelayTest,
                         ::testing::Combine(::testing::ValuesIn(kSpacings), ::testing::Bool()),
                         SpacingName);

TEST(RealTimeRunnerTest, AMalformedLineEndsPlaybackThere) {
  PlaybackRig<RealTimeRunner> rig("1 $TMC a\n2 $TMC b\ngarbage\n3 $TMC c\n",
                                  std::make_unique<RealTimeRunner>(1.0), false);
  rig.Run();
  rig.loop().RunAll();
  EXPECT_EQ(rig.probe().Log(), (Strings{"record 1 $TMC a", "record 2 $TMC b", "finished"}));
}

TEST(RealTimeRunnerTest, AnEmptyFileFinishesInTheFirstStep) {
  pelorin_test::TraceCapture capture(2);
  PlaybackRig<RealTimeRunner> rig("", std::make_unique<RealTimeRunner>(1.0), false);
  rig.Run();
  rig.loop().RunNext();
  EXPECT_EQ(rig.probe().Log(), Strings{"finished"});
  EXPECT_EQ(rig.loop().Held(), 0u);
  EXPECT_EQ(capture.Count("RealTimeRunner::Execute"), 1u);
}

TEST(RealTimeRunnerTest, ResetDropsThePendingRecord) {
  PlaybackRig<RealTimeRunner> rig("1 $TMC a\n2 $TMC b\n3 $TMC c\n",
                                  std::make_unique<RealTimeRunner>(1.0), false);
  rig.Run();
  rig.loop().RunNext();
  rig.loop().RunNext();  // a dispatched, b pending
  rig.Rewind();
  rig.loop().RunAll();
  EXPECT_EQ(rig.probe().Payloads(), (Strings{"a", "a", "b", "c"}));
  EXPECT_EQ(rig.loop().Delays(), (std::vector<uint32_t>{0, 1000, 0, 1000, 1000}));
}

TEST(BatchedRunnerTest, TheWholeFileGoesOutInOneStep) {
  pelorin_test::TraceCapture capture(2);
  std::string events;
  Strings expected;
  for (int i = 1; i <= 1000; ++i) {
    events += std::to_string(1000 + i) + " $TMC " + std::to_string(i) + "\n";
    expected.push_back(std::to_string(i));
  }
  PlaybackRig<BatchedRunner> rig(events, std::make_unique<BatchedRunner>(), false);
  rig.Run();
  EXPECT_TRUE(rig.loop().RunNext());
  EXPECT_EQ(rig.probe().Payloads(), expected);
  EXPECT_EQ(rig.probe().Finishes(), 1u);
  EXPECT_EQ(rig.loop().Posts().size(), 1u);
  EXPECT_EQ(capture.Count("BatchedRunner::Execute"), 1u);
}

TEST(BatchedRunnerTest, AMalformedLineEndsTheBatchThere) {
  PlaybackRig<BatchedRunner> rig("1 $TMC a\n $TMC x\n2 $TMC b\n", std::make_unique<BatchedRunner>(),
                                 false);
  rig.Run();
  rig.loop().RunAll();
  EXPECT_EQ(rig.probe().Log(), (Strings{"record 1 $TMC a", "finished"}));
}

}  // namespace
}  // namespace Quillan
