// pelorin-host from outside, for what the recorded examples cannot show:
// unusable input, traces, stops, links, endless loops, and (HostWallClock,
// in real time, with tolerant bounds scaled for slow configurations) the
// pace of playback and the controls.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "ToolProcess.h"

namespace pelorin_tool_test {
namespace {

constexpr int kDone = 0;
constexpr int kUnusable = 2;
constexpr int kTimeout = 3;

const char kEvents[] =
    "1416131460 $TSL serviceType=1 sd_SID=34\n1416131461 $TMC SID=34\n"
    "1416131463 $TOT getInventory\n1416131466 $TMC timeStamp=7 SID=300\n";

int RunHost(const std::vector<std::string>& args, ToolProcess* host,
            int timeoutMs = ScaledMs(60000)) {
  return RunTool(PELORIN_HOST_PROGRAM, args, host, timeoutMs);
}

// Every line is JSON, every item begins with "t" and "type", and "t" never
// goes back.
void ExpectWellFormed(const ToolProcess& host) {
  EXPECT_TRUE(host.BadLines().empty()) << host.BadLines().front();
  double last = 0.0;
  for (const Item& item : host.Items()) {
    ASSERT_GE(item.json.members.size(), 2u) << item.line;
    EXPECT_EQ(item.json.members[0].first + "," + item.json.members[1].first, "t,type") << item.line;
    EXPECT_GE(item.t, last) << item.line;
    last = item.t;
  }
}

bool AnyTraceContains(const ToolProcess& host, const std::string& text) {
  for (const Item& trace : host.ItemsOfType("trace")) {
    if (trace.json["text"].string.find(text) != std::string::npos) return true;
  }
  return false;
}

TEST(HostEndToEnd, TraceShowsTheModulesMessagesFromTheGivenLevel) {
  TestFolder folder;
  const std::string events = folder.Write("events", kEvents);
  for (int level : {2, 4}) {
    ToolProcess host;
    ASSERT_EQ(RunHost({"--batched", "--json", "--trace", std::to_string(level), events}, &host),
              kDone);
    ExpectWellFormed(host);
    for (const Item& trace : host.ItemsOfType("trace")) {
      EXPECT_EQ(trace.json["channel"].type, JsonValue::Type::kString) << trace.line;
      EXPECT_GE(trace.json["level"].number, level) << trace.line;
    }
    EXPECT_EQ(AnyTraceContains(host, "Runner::NotifyFinished"), level == 2);
    EXPECT_EQ(host.ItemsOfType("finished").size(), 1u);
    // The module's shutdown, as a head unit's log shows it.
    EXPECT_EQ(AnyTraceContains(host, "HMI_DESTROY_MODULE_SYMBOL"), level == 2);
  }
}

// After a stop the module's items stay back, its traces of its shutdown
// do not: here playback waits for an answer that never comes.
TEST(HostEndToEnd, TraceShowsTheShutdownAfterAStop) {
  TestFolder folder;
  const std::string events =
      folder.Write("events", "1 $TOT setOnlineTrafficDataStatus:0\n1 $TOT getInventory\n2 $TMC\n");
  ToolProcess host;
  ASSERT_EQ(RunHost({"--batched", "--json", "--tpeg-offline", "--trace", "2", "--timeout", "0.2",
                     events},
                    &host),
            kTimeout);
  ExpectWellFormed(host);
  EXPECT_TRUE(host.ItemsOfType("tmc").empty());
  EXPECT_TRUE(AnyTraceContains(host, "HMI_DESTROY_MODULE_SYMBOL"));
}

// A shared library that is not a module: it lacks the entry points.
TEST(HostEndToEnd, LibraryWithoutTheEntryPointsIsNoModule) {
  TestFolder folder;
  ToolProcess host;
  EXPECT_EQ(RunHost({"--module", PELORIN_HOST_PLATFORM_LIBRARY, folder.Write("events", kEvents)},
                    &host),
            kUnusable);
  EXPECT_NE(host.Stderr().find("hmi_setInterface"), std::string::npos) << host.Stderr();
  EXPECT_TRUE(host.TempDirEmpty());
}

// `path` as seen from the working folder, through "..".
std::string Relative(const std::string& path) {
  char cwd[4096];
  std::string up;
  if (getcwd(cwd, sizeof(cwd)) == nullptr) return path;
  for (const char* c = cwd; *c != '\0'; ++c) {
    if (*c == '/' && c[1] != '\0') up += "../";
  }
  return up + path.substr(1);
}

TEST(HostEndToEnd, EventsFileTheModuleCannotNameIsReachedThroughALink) {
  TestFolder folder;
  // The module reads a backslash in a path as a folder separator, and knows
  // no working folder.
  const std::string events = Relative(folder.Write("odd\\name/events", kEvents));
  ToolProcess host;
  ASSERT_EQ(RunHost({"--batched", "--json", events}, &host), kDone) << host.Stderr();
  EXPECT_EQ(host.ItemsOfType("tmc").size(), 2u);
  EXPECT_TRUE(host.TempDirEmpty());
}

// Without a count, --loop plays until stopped.
TEST(HostEndToEnd, EndlessLoopPlaysUntilStopped) {
  TestFolder folder;
  const std::string events = folder.Write("events", "1 $TMC SID=1\n2 $TSL serviceType=1\n");
  ToolProcess endless;
  const std::string seconds = std::to_string(ScaledMs(1000) / 1000.0);
  ASSERT_EQ(RunHost({"--batched", "--json", "--only", "TMC", "--loop", "--timeout", seconds, events},
                    &endless),
            kTimeout);
  const auto tmc = endless.ItemsOfType("tmc");
  ASSERT_FALSE(tmc.empty());
  EXPECT_GT(tmc.back().json["pass"].number, 1);
}

// Ten TMC records a quarter of a second apart.
std::string QuarterSecondRecords() {
  std::string text;
  for (int i = 0; i < 10; ++i) {
    text += std::to_string(1416131460 + i * 0.25) + " $TMC SID=" + std::to_string(i) + "\n";
  }
  return text;
}

// --progress: plain status lines on a standard error that is no terminal.
// (The real-time spacing itself is the runner's, tested without a clock.)
TEST(HostWallClock, ProgressLinesWithoutATerminal) {
  TestFolder folder;
  const std::string events =
      folder.Write("events", "1416131460 $TMC SID=1\n1416131460.4 $TMC SID=2\n"
                             "1416131461.2 $TMC SID=3\n");
  ToolProcess progress;
  ASSERT_EQ(RunHost({"--json", "--realtime", "0.5", "--progress", events}, &progress), kDone);
  EXPECT_NE(progress.Stderr().find("line 2 of 3 (66 %)  2014-11-16 09:51:00 UTC  speed 0.5x"),
            std::string::npos)
      << progress.Stderr();
}

TEST(HostWallClock, ControlsStopStartSpeedAndReplayAfterTheEnd) {
  TestFolder folder;
  const std::string events = folder.Write("events", QuarterSecondRecords());
  const int wait = ScaledMs(5000);
  ToolProcess host;
  ASSERT_TRUE(host.Start(PELORIN_HOST_PROGRAM, {"--json", "--control", "--paused", events}));

  // Paused: nothing plays until "start".
  host.Drain(ScaledMs(300));
  EXPECT_TRUE(host.ItemsOfType("tmc").empty());
  host.WriteInput("start\n");
  ASSERT_TRUE(host.WaitForItem("tmc", wait));

  // Stopped: at most the step already under way still plays.
  host.WriteInput("stop\n");
  host.Drain(ScaledMs(1000));
  const size_t playedBeforeStop = host.ItemsOfType("tmc").size();
  host.Drain(ScaledMs(700));
  EXPECT_EQ(host.ItemsOfType("tmc").size(), playedBeforeStop);
  ASSERT_LT(playedBeforeStop, 10u);

  // The speed goes into the module's speed table and comes back as a change.
  host.WriteInput("speed 4x\n");
  Item speed;
  do {
    ASSERT_TRUE(host.WaitForItem("dataPool", wait, &speed));
  } while (speed.json["id"].string != "0x4c000001");
  EXPECT_EQ(speed.json["value"].number, 400);

  host.WriteInput("start\n");
  ASSERT_TRUE(host.WaitForItem("finished", wait));
  EXPECT_EQ(host.ItemsOfType("tmc").size(), 10u);
  // With --control the end of playback does not end the host.
  host.Drain(ScaledMs(300));
  EXPECT_TRUE(host.Running());

  // "start" after the end plays the file again, at the speed set.
  host.WriteInput("start\n");
  Item first, end;
  ASSERT_TRUE(host.WaitForItem("tmc", wait, &first));
  EXPECT_EQ(first.json["sid"].number, 0);
  ASSERT_TRUE(host.WaitForItem("finished", wait, &end));
  EXPECT_EQ(host.ItemsOfType("tmc").size(), 20u);
  // 2.25 s of recording at four times the speed.
  EXPECT_LE(end.t - first.t, 2250.0 / 2 * pelorin_test::TimeScale());

  // A bad last line without a line feed is reported and ignored; the end
  // of the input ends the host.
  host.WriteInput("bogus");
  host.CloseInput();
  EXPECT_EQ(host.Wait(ScaledMs(10000)), kDone);
  ExpectWellFormed(host);
  EXPECT_NE(host.Stderr().find("ignored: "), std::string::npos) << host.Stderr();
  EXPECT_NE(host.Stderr().find("end of the control input"), std::string::npos);
  EXPECT_TRUE(host.TempDirEmpty());
}

// Three hours between two records play as two seconds; the items keep
// their recorded times.
TEST(HostWallClock, LongGapsPlayAsTheLimit) {
  TestFolder folder;
  const std::string events = folder.Write(
      "events", "1416131460 $TMC SID=1\n1416142260 $TMC SID=2\n1416142260.5 $TMC SID=3\n");
  ToolProcess host;
  ASSERT_EQ(RunHost({"--json", "--realtime", "1", "--max-gap", "2", events}, &host,
                    ScaledMs(20000)),
            kDone);
  const auto tmc = host.ItemsOfType("tmc");
  ASSERT_EQ(tmc.size(), 3u);
  EXPECT_GE(tmc[1].t - tmc[0].t, 2000.0);
  EXPECT_LE(tmc[1].t - tmc[0].t, 2000.0 + 500.0 * pelorin_test::TimeScale());
  EXPECT_EQ(tmc[1].json["recordTime"].number, 1416142260.0);
  const auto finished = host.ItemsOfType("finished");
  ASSERT_EQ(finished.size(), 1u);
  EXPECT_EQ(finished[0].json["skippedSeconds"].number, 10798.0);
  EXPECT_NE(host.Stderr().find("skipped in long gaps 2h59m58s"), std::string::npos)
      << host.Stderr();
}

// A pause at @5 holds before line 5, which shares its time stamp with
// line 4, until "start"; then the rest plays.
TEST(HostWallClock, PauseAtALineUntilStart) {
  TestFolder folder;
  std::string records;
  for (int line = 1; line <= 10; ++line) {
    records += "1416131460." + std::to_string(line == 5 ? 4 : line) + " $TMC SID=" +
               std::to_string(line) + "\n";
  }
  const std::string events = folder.Write("events", records);
  ToolProcess host;
  ASSERT_TRUE(host.Start(PELORIN_HOST_PROGRAM,
                         {"--json", "--control", "--speed", "4", "--pause-at", "@5", events}));
  Item paused;
  ASSERT_TRUE(host.WaitForItem("paused", ScaledMs(5000), &paused));
  EXPECT_EQ(paused.json["line"].number, 5);
  host.Drain(ScaledMs(400));
  auto tmc = host.ItemsOfType("tmc");
  ASSERT_EQ(tmc.size(), 4u);
  EXPECT_EQ(tmc.back().json["line"].number, 4);
  host.WriteInput("start\n");
  ASSERT_TRUE(host.WaitForItem("finished", ScaledMs(5000)));
  tmc = host.ItemsOfType("tmc");
  ASSERT_EQ(tmc.size(), 10u);
  EXPECT_EQ(tmc[4].json["line"].number, 5);
  EXPECT_GT(tmc[4].t, paused.t);
  host.CloseInput();
  EXPECT_EQ(host.Wait(ScaledMs(10000)), kDone);
  EXPECT_NE(host.Stderr().find("paused before line 5 (--pause-at @5); \"start\" goes on"),
            std::string::npos)
      << host.Stderr();
  ExpectWellFormed(host);
}

TEST(HostWallClock, OnlineTrafficAnswersAfterItsLatency) {
  TestFolder folder;
  const std::string events = folder.Write("events", "1 $TOT getInventory\n2 $TOT getNewData\n");
  ToolProcess host;
  ASSERT_EQ(RunHost({"--json", "--batched", "--tpeg-latency", "300", events}, &host), kDone);
  const auto calls = host.ItemsOfType("onlineTraffic");
  ASSERT_EQ(calls.size(), 2u);
  // getNewData goes out only once getInventory has been answered.
  EXPECT_GE(calls[1].t - calls[0].t, 300.0);
  EXPECT_LE(calls[1].t - calls[0].t, 300.0 + 500.0 * pelorin_test::TimeScale());
  // In real time the wait puts playback behind the recording for good.
  ToolProcess paced;
  ASSERT_EQ(RunHost({"--json", "--realtime", "4", "--tpeg-latency", "300", events}, &paced), kDone);
  const auto finished = paced.ItemsOfType("finished");
  ASSERT_EQ(finished.size(), 1u);
  EXPECT_GE(finished[0].json["longestOnlineWaitSeconds"].number, 0.3);
  EXPECT_GE(finished[0].json["lagSeconds"].number, 0.3);
  EXPECT_LE(finished[0].json["lagSeconds"].number, 0.3 + 0.5 * pelorin_test::TimeScale());
  EXPECT_NE(paced.Stderr().find("behind the recording's schedule at the end: 0."), std::string::npos)
      << paced.Stderr();
}

}  // namespace
}  // namespace pelorin_tool_test
