// pelorin-host in real time and under control: timing bounds are tolerant
// and scaled for slow configurations (sanitizers, qemu).

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "HostProcess.h"
#include "tests/support/TestTime.h"

namespace pelorin_host_test {
namespace {

constexpr int kDone = 0;
constexpr int kTimeout = 3;

std::vector<double> TmcTimes(const HostProcess& host) {
  std::vector<double> times;
  for (const HostItem& item : host.ItemsOfType("tmc")) times.push_back(item.t);
  return times;
}

// Ten TMC records a quarter of a second apart.
std::string QuarterSecondRecords() {
  std::string text;
  for (int i = 0; i < 10; ++i) {
    text += std::to_string(1416131460 + i * 0.25) + " $TMC SID=" + std::to_string(i) + "\n";
  }
  return text;
}

TEST(HostWallClock, RealTimeKeepsTheRecordedSpacingDividedBySpeed) {
  TestFolder folder;
  const std::string events = folder.Write("events",
                                          "1416131460 $TMC SID=1\n"
                                          "1416131460.4 $TMC SID=2\n"
                                          "1416131461.2 $TMC SID=3\n");
  const double slack = 300.0 * pelorin_test::TimeScale();
  for (double speed : {1.0, 2.0}) {
    HostProcess host;
    ASSERT_EQ(RunHost({"--json", "--realtime", speed == 1.0 ? "1" : "2", events}, &host), kDone)
        << host.Stderr();
    const std::vector<double> times = TmcTimes(host);
    ASSERT_EQ(times.size(), 3u);
    const double first = times[1] - times[0];
    const double second = times[2] - times[1];
    EXPECT_GE(first, 400.0 / speed - 5.0) << speed;
    EXPECT_LE(first, 400.0 / speed + slack) << speed;
    EXPECT_GE(second, 800.0 / speed - 5.0) << speed;
    EXPECT_LE(second, 800.0 / speed + slack) << speed;
    EXPECT_EQ(host.ItemsOfType("finished").size(), 1u);
  }
}

TEST(HostWallClock, ControlsStopStartSpeedAndReplayAfterTheEnd) {
  TestFolder folder;
  const std::string events = folder.Write("events", QuarterSecondRecords());
  const int wait = ScaledMs(5000);
  HostProcess host;
  ASSERT_TRUE(host.Start({"--json", "--control", "--paused", events}));

  // Paused: nothing plays until "start".
  std::string line;
  while (host.ReadLine(&line, ScaledMs(300))) {
  }
  EXPECT_TRUE(host.ItemsOfType("tmc").empty());
  host.WriteInput("start\n");
  ASSERT_TRUE(host.WaitForItem("tmc", wait));

  // Stopped: at most the step already under way still plays.
  host.WriteInput("stop\n");
  while (host.ReadLine(&line, ScaledMs(400))) {
  }
  const size_t playedBeforeStop = host.ItemsOfType("tmc").size();
  while (host.ReadLine(&line, 700)) {
  }
  EXPECT_EQ(host.ItemsOfType("tmc").size(), playedBeforeStop);
  ASSERT_LT(playedBeforeStop, 10u);

  // The speed goes into the module's speed table and comes back as a change.
  host.WriteInput("speed 400\n");
  HostItem speed;
  ASSERT_TRUE(host.WaitForItem("dataPool", wait, &speed));
  while (speed.json["id"].String() != "0x4c000001") {
    ASSERT_TRUE(host.WaitForItem("dataPool", wait, &speed));
  }
  EXPECT_EQ(speed.json["value"].Number(), 400);

  host.WriteInput("start\n");
  ASSERT_TRUE(host.WaitForItem("finished", wait));
  EXPECT_EQ(host.ItemsOfType("tmc").size(), 10u);
  // With --control the end of playback does not end the host.
  while (host.ReadLine(&line, ScaledMs(300))) {
  }
  EXPECT_TRUE(host.Running());

  // "start" after the end plays the file again, at the speed set.
  host.WriteInput("start\n");
  HostItem first;
  ASSERT_TRUE(host.WaitForItem("tmc", wait, &first));
  EXPECT_EQ(first.json["sid"].Number(), 0);
  HostItem end;
  ASSERT_TRUE(host.WaitForItem("finished", wait, &end));
  EXPECT_EQ(host.ItemsOfType("tmc").size(), 20u);
  // 2.25 s of recording at four times the speed.
  EXPECT_GE(end.t - first.t, 2250.0 / 4 - 20.0);
  EXPECT_LE(end.t - first.t, 2250.0 / 2 * pelorin_test::TimeScale());

  host.WriteInput("quit\n");
  EXPECT_EQ(host.Wait(ScaledMs(10000)), kDone);
  EXPECT_TRUE(host.BadLines().empty());
  EXPECT_TRUE(host.TempDirEmpty());
}

TEST(HostWallClock, EndOfControlInputEndsTheHost) {
  TestFolder folder;
  const std::string events = folder.Write("events", QuarterSecondRecords());
  HostProcess host;
  ASSERT_TRUE(host.Start({"--json", "--control", "--paused", events}));
  host.WriteInput("bogus\n");
  host.CloseInput();
  EXPECT_EQ(host.Wait(ScaledMs(10000)), kDone);
  // The bad line is reported and otherwise ignored.
  EXPECT_NE(host.Stderr().find("bogus"), std::string::npos);
}

TEST(HostWallClock, OnlineTrafficAnswersAfterItsLatency) {
  TestFolder folder;
  const std::string events = folder.Write("events",
                                          "1 $TOT getInventory\n"
                                          "2 $TOT getNewData\n");
  HostProcess host;
  ASSERT_EQ(RunHost({"--json", "--batched", "--tpeg-latency", "300", events}, &host), kDone);
  const auto calls = host.ItemsOfType("onlineTraffic");
  ASSERT_EQ(calls.size(), 2u);
  // getNewData goes out only once getInventory has been answered.
  EXPECT_GE(calls[1].t - calls[0].t, 300.0);
  EXPECT_LE(calls[1].t - calls[0].t, 300.0 + 500.0 * pelorin_test::TimeScale());
}

TEST(HostWallClock, OfflineServiceBlocksPlaybackUntilTimeout) {
  TestFolder folder;
  const std::string events = folder.Write("events",
                                          "1416131460 $TOT getInventory\n"
                                          "1416131461 $TMC SID=1\n");
  HostProcess host;
  ASSERT_EQ(RunHost({"--json", "--realtime", "1", "--tpeg-offline", "--trace", "3", "--timeout",
                     "5.5", events},
                    &host, ScaledMs(30000)),
            kTimeout)
      << host.Stderr();
  ASSERT_EQ(host.ItemsOfType("onlineTraffic").size(), 1u);
  EXPECT_TRUE(host.ItemsOfType("tmc").empty());
  bool warned = false;
  for (const HostItem& trace : host.ItemsOfType("trace")) {
    warned |= trace.json["text"].String().find("playback blocked") != std::string::npos;
  }
  EXPECT_TRUE(warned);
  // The shutdown does not wait for an answer that never comes.
  EXPECT_LT(host.Elapsed(), 5.5 + 5.0 * pelorin_test::TimeScale());
  EXPECT_TRUE(host.TempDirEmpty());
}

TEST(HostWallClock, BundledExamplePlaysToItsEndWithTheDefaults) {
  HostProcess host;
  const double limit = 30.0 * pelorin_test::TimeScale();
  ASSERT_EQ(RunHost({"--json"}, &host, static_cast<int>(limit * 1000) + 10000), kDone)
      << host.Stderr();
  EXPECT_LT(host.Elapsed(), limit);
  EXPECT_EQ(host.ItemsOfType("finished").size(), 1u);
  EXPECT_GE(host.ItemsOfType("tmc").size(), 5u);
  // The interactive runner's playback clock reaches the data pool and the HMI.
  EXPECT_FALSE(host.ItemsOfType("dataPool").empty());
  EXPECT_FALSE(host.ItemsOfType("event").empty());
  bool setNewData = false;
  for (const HostItem& call : host.ItemsOfType("onlineTraffic")) {
    setNewData |= call.json["args"].Array().size() == 1 &&
                  call.json["args"].Array()[0].String() == "/fs/sda0/quillan//tpeg-0001.bin";
  }
  EXPECT_TRUE(setNewData);
}

}  // namespace
}  // namespace pelorin_host_test
