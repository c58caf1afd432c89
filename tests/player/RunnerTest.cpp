// Runner base: what every strategy shares: the whole-second times consumers
// get, listener order, input resets, a missing input, the RunOn trace,
// refused posts and shut-down.

#include "player/Runner.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <memory>
#include <sstream>
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

// Writes its name into a shared log when the runner finishes, and looks back
// into the runner from inside the notification.
class NamedListener : public RunnerListener {
 public:
  NamedListener(std::string name, Strings* log) : m_name(std::move(name)), m_log(log) {}
  void OnFinished(Runner* runner) override {
    m_log->push_back(m_name + (runner->IsFinished() ? " finished" : " not finished"));
  }

 private:
  std::string m_name;
  Strings* m_log;
};

TEST(RunnerTest, ConsumersGetTheTimeRoundedDownAndSaturated) {
  PlaybackRig<BatchedRunner> rig("12.9 $TMC a\n-3.5 $TSL b\n5000000000 $TOT c\n4294967295.7 x\n",
                                 std::make_unique<BatchedRunner>(), false);
  rig.Run();
  rig.loop().RunAll();
  EXPECT_EQ(rig.probe().Log(),
            (Strings{"record 12 $TMC a", "record 0 $TSL b", "record 4294967295 $TOT c",
                     "record 4294967295 x ", "finished"}));
}

TEST(RunnerTest, ListenersAreToldInTheOrderAddedAndMayCallBack) {
  Strings log;
  NamedListener first("first", &log);
  NamedListener second("second", &log);
  pelorin_test::MemoryInput input("1 $TMC a\n");
  BatchedRunner runner;
  runner.AddListener(&first);
  runner.AddListener(&second);
  runner.AddListener(&first);
  runner.SetInput(input.Reader());
  pelorin_test::RecordingWorkLoop loop;
  runner.RunOn(&loop);
  loop.RunAll();  // no consumers: the record is read and dropped
  EXPECT_EQ(log, (Strings{"first finished", "second finished", "first finished"}));
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
  bool failureLogged = false;
  for (const auto& line : capture.Lines()) {
    if (line.text == "Runner::ReadNextRecord: input not created") failureLogged = line.level == 4;
  }
  EXPECT_TRUE(failureLogged);
}

TEST(RunnerTest, RunOnTracesTheLoopAddressAndPostsOneStep) {
  pelorin_test::TraceCapture capture(2);
  pelorin_test::RecordingWorkLoop loop;
  BatchedRunner runner;
  runner.RunOn(&loop);
  std::ostringstream expected;
  expected << "Runner::RunOn 0x" << std::hex << std::setw(8) << std::setfill('0')
           << reinterpret_cast<uintptr_t>(&loop);
  EXPECT_TRUE(capture.Contains(expected.str())) << capture.Texts()[0];
  ASSERT_EQ(loop.Posts().size(), 1u);
  EXPECT_FALSE(loop.Posts()[0].delayed);
  EXPECT_EQ(loop.Posts()[0].priority, 16u);
}

TEST(RunnerTest, ARefusedStepIsGivenUpAndNothingIsQueued) {
  PlaybackRig<RealTimeRunner> rig("1 $TMC a\n2 $TMC b\n", std::make_unique<RealTimeRunner>(1.0),
                                  false);
  rig.Run();
  rig.loop().RefusePosts(true);
  rig.loop().RunAll();  // the sanitizer build reports the step if it leaked
  EXPECT_EQ(rig.loop().Held(), 0u);
  EXPECT_TRUE(rig.probe().Log().empty());
}

TEST(RunnerTest, AShutDownRunnerNeitherReadsNorPosts) {
  PlaybackRig<RealTimeRunner> rig("1 $TMC a\n2 $TMC b\n3 $TMC c\n",
                                  std::make_unique<RealTimeRunner>(1.0), false);
  rig.Run();
  rig.loop().RunNext();
  rig.loop().RunNext();
  rig.runner().ShutDown();
  const size_t posts = rig.loop().Posts().size();
  rig.loop().RunAll();
  EXPECT_EQ(rig.probe().Log(), Strings{"record 1 $TMC a"});
  EXPECT_EQ(rig.loop().Posts().size(), posts);
}

TEST(RunnerTest, AShutDownBatchStopsWithoutReportingTheEnd) {
  PlaybackRig<BatchedRunner> rig("1 $TMC a\n2 $TMC b\n", std::make_unique<BatchedRunner>(), false);
  rig.Run();
  rig.runner().ShutDown();
  rig.loop().RunAll();
  EXPECT_TRUE(rig.probe().Log().empty());
  EXPECT_FALSE(rig.runner().IsFinished());
}

}  // namespace
}  // namespace Quillan
