// How far playback is behind the recording: what adds to the lag and what
// does not (stops, a new pass, the speed), and the longest online wait.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LagMeter.h"

namespace PelorinHost {
namespace {

// One step of a run, at `ms` of wall time.
struct Step {
  enum Kind { kItem, kSpeed, kStop, kStart } kind;
  uint64_t ms;
  double value;  // kItem: the record time; kSpeed: the factor
  uint32_t pass;
};

TEST(HostLagMeter, TheLagSumsWhatEachStepTookBeyondItsDelay) {
  const struct {
    const char* what;
    std::vector<Step> steps;
    uint64_t lagMs;
  } cases[] = {
      {"on time",
       {{Step::kItem, 0, 100.0, 1}, {Step::kItem, 1000, 101.0, 1}, {Step::kItem, 1500, 101.5, 1}},
       0},
      {"a late step is never made up",
       {{Step::kItem, 0, 100.0, 1}, {Step::kItem, 1300, 101.0, 1}, {Step::kItem, 2300, 102.0, 1}},
       300},
      {"an early step takes off, not below 0",
       {{Step::kItem, 0, 100.0, 1},
        {Step::kItem, 1300, 101.0, 1},
        {Step::kItem, 2200, 102.0, 1},
        {Step::kItem, 2500, 103.0, 1}},
       0},
      {"at the speed of the step",
       {{Step::kSpeed, 0, 2.0, 0},
        {Step::kItem, 0, 100.0, 1},
        {Step::kItem, 600, 101.0, 1},
        {Step::kSpeed, 600, 0.5, 0},
        {Step::kItem, 2600, 102.0, 1}},
       100},
      {"a time out of order is due at once",
       {{Step::kItem, 0, 100.0, 1}, {Step::kItem, 50, 99.0, 1}},
       50},
      {"stopped time does not count",
       {{Step::kItem, 0, 100.0, 1},
        {Step::kStop, 200, 0, 0},
        {Step::kStart, 5200, 0, 0},
        {Step::kItem, 6100, 101.0, 1}},
       100},
      {"a step under way while stopped",
       {{Step::kItem, 0, 100.0, 1},
        {Step::kStop, 900, 0, 0},
        {Step::kItem, 1000, 101.0, 1},
        {Step::kStart, 3000, 0, 0},
        {Step::kItem, 4000, 102.0, 1}},
       0},
      {"a new pass starts from its first item",
       {{Step::kItem, 0, 100.0, 1}, {Step::kItem, 1000, 101.0, 1}, {Step::kItem, 9000, 100.0, 2}},
       0},
  };
  for (const auto& test : cases) {
    LagMeter meter;
    meter.SetPaced(true);
    for (const Step& step : test.steps) {
      const uint64_t micros = step.ms * 1000;
      if (step.kind == Step::kItem) meter.Item(step.pass, step.value, micros);
      if (step.kind == Step::kSpeed) meter.SetSpeed(step.value);
      if (step.kind == Step::kStop) meter.Stopped(micros);
      if (step.kind == Step::kStart) meter.Started(micros);
    }
    EXPECT_EQ(meter.Now().lagMicros / 1000, test.lagMs) << test.what;
    EXPECT_TRUE(meter.Now().paced);
  }
}

TEST(HostLagMeter, TheLongestOnlineWaitKeepsItsLine) {
  LagMeter meter;
  meter.OnlineWait(4, 12000);
  meter.OnlineWait(9, 310000);
  meter.OnlineWait(12, 310000);
  meter.OnlineWait(15, 20000);
  EXPECT_EQ(meter.Now().longestWaitMicros, 310000u);
  EXPECT_EQ(meter.Now().longestWaitLine, 9u);
  EXPECT_FALSE(meter.Now().paced);
}

}  // namespace
}  // namespace PelorinHost
