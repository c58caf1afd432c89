// pelorin-host from outside: the built program plays small events files
// through the real module; the tests read its JSON Lines and exit status.
// HostWallClock runs in real time: its bounds are tolerant and scaled for
// slow configurations (sanitizers, qemu).

#include <gtest/gtest.h>
#include <signal.h>
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
    "1416131460.25 $TSL serviceType=1 sd_SID=34 sd_LTCC=13 sd_LTN=1 sd_PID=53761 "
    "sd_SPN=\"RADIO 1\" monitorState=1;serviceType=1 sd_SID=35\n"
    "1416131461 $TMC timeStamp=1416131460 LTN=1 SID=34 PID=53761 tmcData=0A:1F:22:3C:00\n"
    "1416131462 $TMC LTN=2\n"
    "1416131463 $TOT setOnlineTrafficDataStatus:0\n"
    "1416131463.5 $TOT getInventory\n"
    "1416131464 $TOT setNewData:a.bin\n"
    "1416131465 $TOT setTimeoutForFallback:30\n"
    "1416131466 $TMC timeStamp=7 SID=300 tmcData=ff:1\n";

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

TEST(HostEndToEnd, BatchedPlaysEverythingThatLeavesTheModule) {
  TestFolder folder;
  const std::string events = folder.Write("rec/events.txt", kEvents);
  ToolProcess host;
  ASSERT_EQ(RunHost({"--batched", "--json", "--quiet", events}, &host), kDone) << host.Stderr();
  EXPECT_EQ(host.Stderr(), "");
  ExpectWellFormed(host);
  std::vector<std::string> types;
  for (const Item& item : host.Items()) types.push_back(item.type);
  EXPECT_EQ(types, (std::vector<std::string>{"serviceList", "tmc", "tmc", "onlineTraffic",
                                             "onlineTraffic", "onlineTraffic", "onlineTraffic",
                                             "tmc", "finished"}));
  const auto& items = host.Items();
  ASSERT_EQ(items.size(), 9u);

  const auto& entries = items[0].json["entries"].array;
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(entries[0]["spn"].string, "RADIO 1");
  EXPECT_EQ(entries[0]["pid"].number, 53761);
  EXPECT_TRUE(entries[0]["senderName"].IsNull());
  EXPECT_EQ(entries[1]["sid"].number, 35);
  EXPECT_TRUE(entries[1]["spn"].IsNull());
  EXPECT_EQ(entries[1].members.size(), 15u);

  EXPECT_EQ(items[1].json["timeStamp"].number, 1416131460);
  EXPECT_EQ(items[1].json["pid"].number, 53761);
  EXPECT_EQ(items[1].json["tmcData"].string, "0a1f223c00");
  EXPECT_EQ(items[2].json["ltn"].number, 2);
  EXPECT_TRUE(items[2].json["tmcData"].IsNull());
  EXPECT_EQ(items[7].json["sid"].number, 44);  // low 8 bits of 300
  EXPECT_EQ(items[7].json["tmcData"].string, "ff01");

  EXPECT_EQ(items[3].json["call"].string, "setOnlineTrafficDataStatus");
  ASSERT_EQ(items[3].json["args"].array.size(), 1u);
  EXPECT_EQ(items[3].json["args"].array[0].number, 0);
  EXPECT_EQ(items[4].json["call"].string, "getInventory");
  EXPECT_TRUE(items[4].json["args"].array.empty());
  // The TPEG folder defaults to the events file's own folder.
  EXPECT_EQ(items[5].json["args"].array.at(0).string, folder.Path() + "/rec/a.bin");
  EXPECT_EQ(items[6].json["args"].array.at(0).number, 30);
  EXPECT_TRUE(host.TempDirEmpty());  // the private storage root is gone
}

TEST(HostEndToEnd, ReadableOutputWithATpegsDir) {
  TestFolder folder;
  const std::string events = folder.Write("events", kEvents);
  folder.Write("tpeg/x", "");
  ToolProcess host;
  ASSERT_EQ(RunHost({"--batched", "--tpegs-dir", folder.Path() + "/tpeg/", events}, &host), kDone);
  // One readable line per item, none of them JSON.
  EXPECT_TRUE(host.Items().empty());
  const auto& lines = host.BadLines();
  ASSERT_EQ(lines.size(), 9u);
  EXPECT_NE(lines[1].find("tmc"), std::string::npos);
  EXPECT_NE(lines[1].find("tmcData=0a1f223c00"), std::string::npos);
  EXPECT_NE(lines[5].find(folder.Path() + "/tpeg/a.bin"), std::string::npos);
  EXPECT_NE(lines[8].find("finished"), std::string::npos);
}

TEST(HostEndToEnd, RootFolderIsTheHeadUnitsStorage) {
  TestFolder folder;
  folder.Write("sda0/quillan/Pelorin.cfg", "interactive=false\n");
  folder.Write("sda0/quillan/events", "100 $TOT setNewData:b.bin\n101 $TMC SID=9\n");
  const std::vector<std::string> before = folder.List();
  ToolProcess host;
  ASSERT_EQ(RunHost({"--json", "--root", folder.Path() + "/sda0"}, &host), kDone) << host.Stderr();
  ExpectWellFormed(host);
  const auto calls = host.ItemsOfType("onlineTraffic");
  ASSERT_EQ(calls.size(), 1u);
  // The module's own default TPEG folder, as the head unit sees it.
  EXPECT_EQ(calls[0].json["args"].array.at(0).string, "/fs/sda0/quillan//b.bin");
  EXPECT_EQ(host.ItemsOfType("tmc").size(), 1u);
  EXPECT_EQ(host.ItemsOfType("finished").size(), 1u);
  EXPECT_EQ(folder.List(), before);  // nothing written into the folder
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
  }
}

TEST(HostEndToEnd, BundledExamplePlayedAllAtOnce) {
  ToolProcess host;
  ASSERT_EQ(RunHost({"--batched", "--json"}, &host), kDone) << host.Stderr();
  ExpectWellFormed(host);
  EXPECT_EQ(host.ItemsOfType("serviceList").size(), 2u);
  EXPECT_GE(host.ItemsOfType("tmc").size(), 5u);
  std::vector<std::string> calls;
  for (const Item& item : host.ItemsOfType("onlineTraffic")) {
    calls.push_back(item.json["call"].string);
    if (calls.back() == "setNewData") {
      // The TPEG files that the recording names are shipped beside it.
      const std::string path = item.json["args"].array.at(0).string;
      EXPECT_EQ(access(path.c_str(), R_OK), 0) << path;
    }
  }
  for (const char* call : {"setOnlineTrafficDataStatus", "getInventory", "getNewData", "setNewData",
                           "setNewSession", "setTimeoutForFallback", "dsiConnectionStateChanged"}) {
    EXPECT_NE(std::find(calls.begin(), calls.end(), call), calls.end()) << call;
  }
  EXPECT_EQ(host.ItemsOfType("finished").size(), 1u);
  EXPECT_TRUE(host.TempDirEmpty());
}

TEST(HostEndToEnd, HelpAndVersion) {
  ToolProcess help;
  ASSERT_EQ(RunHost({"--help"}, &help), kDone);
  EXPECT_GT(help.BadLines().size(), 20u);
  ToolProcess version;
  ASSERT_EQ(RunHost({"--version"}, &version), kDone);
  ASSERT_EQ(version.BadLines().size(), 1u);
  EXPECT_EQ(version.BadLines()[0].rfind("pelorin-host ", 0), 0u);
}

// Unusable input: exit status 2 and one line on standard error naming the
// cause; the private storage root is removed all the same.
TEST(HostEndToEnd, UnusableInputExitsWithOneLine) {
  TestFolder folder;
  const std::string events = folder.Write("events", kEvents);
  const std::string missing = folder.Path() + "/missing-events";
  const struct {
    std::vector<std::string> args;
    std::string cause;
  } cases[] = {
      {{"--bogus"}, "--bogus"},
      {{"--realtime", "0", events}, "--realtime"},
      {{"--module", folder.Path() + "/no-such-module.so", events}, "no-such-module.so"},
      // A shared library that is not a module: it lacks the entry points.
      {{"--module", PELORIN_HOST_PLATFORM_LIBRARY, events}, "hmi_setInterface"},
      {{"--batched", missing}, missing},
      {{"--root", folder.Path() + "/no-root"}, "no-root"},
      {{"--batched", "--tpegs-dir", folder.Path() + "/no-tpeg/", events}, "--tpegs-dir"},
      {{"--loop", "0", events}, "--loop needs a number of passes from 1"},
      {{"--from", "@0", events}, "@LINE"},
  };
  for (const auto& test : cases) {
    ToolProcess host;
    EXPECT_EQ(RunHost(test.args, &host), kUnusable) << test.cause;
    EXPECT_EQ(host.StderrLines(), 1) << host.Stderr();
    EXPECT_NE(host.Stderr().find(test.cause), std::string::npos) << host.Stderr();
    EXPECT_TRUE(host.TempDirEmpty()) << test.cause;
  }
}

TEST(HostEndToEnd, TimeoutAndTerminationShutDownCleanly) {
  TestFolder folder;
  const std::string events = folder.Write("events", kEvents);
  // Paused interactive playback never ends by itself.
  ToolProcess timed;
  ASSERT_EQ(RunHost({"--json", "--quiet", "--paused", "--timeout", "0.5", events}, &timed), kTimeout);
  EXPECT_EQ(timed.Stderr(), "");
  EXPECT_TRUE(timed.ItemsOfType("tmc").empty());
  EXPECT_TRUE(timed.TempDirEmpty());

  ToolProcess host;
  ASSERT_TRUE(host.Start(PELORIN_HOST_PROGRAM, {"--json", "--paused", events}));
  host.Drain(ScaledMs(300));
  host.Signal(SIGTERM);
  EXPECT_EQ(host.Wait(ScaledMs(10000)), 128 + SIGTERM);
  EXPECT_TRUE(host.TempDirEmpty());
}

TEST(HostEndToEnd, EventsFileTheModuleCannotNameIsReachedThroughALink) {
  TestFolder folder;
  // The module reads a backslash in a path as a folder separator.
  const std::string events = folder.Write("odd\\name/events", kEvents);
  ToolProcess host;
  ASSERT_EQ(RunHost({"--batched", "--json", events}, &host), kDone) << host.Stderr();
  EXPECT_EQ(host.ItemsOfType("tmc").size(), 3u);
  EXPECT_TRUE(host.TempDirEmpty());
}

// Line ends of every kind. Line 3 yields nothing, line 4 has no producer,
// and line 5 calls with the value of the host's marker before line 4.
const char kMixedEvents[] =
    "1416131460 $TSL serviceType=1\r\n"
    "1416131460.01 $TMC SID=1\r"
    "1416131460.02 $TMC \"x\n"
    "1416131460.03 $FOO\n"
    "1416131460.04 $TOT setTimeoutForFallback:4\r\n"
    "1416131460,05 $TMC SID=2\n";

// "type line pass recordTime" of every item that names its record; the
// others must name none.
std::vector<std::string> Origins(const ToolProcess& host) {
  std::vector<std::string> origins;
  for (const Item& item : host.Items()) {
    const bool fromRecord =
        item.type == "tmc" || item.type == "serviceList" || item.type == "onlineTraffic";
    EXPECT_EQ(!item.json["line"].IsNull(), fromRecord) << item.line;
    if (!fromRecord) continue;
    const size_t time = item.line.find("\"recordTime\":");
    std::string origin = item.type + " " + std::to_string(int(item.json["line"].number));
    if (!item.json["pass"].IsNull()) origin += " " + std::to_string(int(item.json["pass"].number));
    if (time != std::string::npos) {
      const size_t begin = time + 13;
      origin += " " + item.line.substr(begin, item.line.find_first_of(",}", begin) - begin);
    }
    origins.push_back(origin);
  }
  return origins;
}

TEST(HostEndToEnd, ItemsTellTheLineAndTimeOfTheirRecordInEveryRunner) {
  TestFolder folder;
  const std::string events = folder.Write("events", kMixedEvents);
  const std::vector<std::string> expected = {
      "serviceList 1 1416131460", "tmc 2 1416131460.01", "onlineTraffic 5 1416131460.04",
      "tmc 6 1416131460.05"};
  for (const auto& runner : std::vector<std::vector<std::string>>{
           {"--batched"}, {"--realtime", "100"}, {"--speed", "100"}}) {
    std::vector<std::string> args = runner;
    args.insert(args.end(), {"--json", events});
    ToolProcess host;
    ASSERT_EQ(RunHost(args, &host), kDone) << host.Stderr();
    EXPECT_EQ(Origins(host), expected) << runner.front();
    EXPECT_EQ(host.ItemsOfType("onlineTraffic").at(0).json["args"].array.at(0).number, 4);
  }
}

TEST(HostEndToEnd, PlaysPartOfARecordingRepeatedly) {
  TestFolder folder;
  const std::string events = folder.Write("events", kMixedEvents);
  const std::vector<std::string> twice = {
      "tmc 2 1 1416131460.01", "onlineTraffic 5 1 1416131460.04", "tmc 2 2 1416131460.01",
      "onlineTraffic 5 2 1416131460.04"};
  for (const auto& runner : std::vector<std::vector<std::string>>{
           {"--batched"}, {"--realtime", "100"}, {"--speed", "100"}}) {
    std::vector<std::string> args = runner;
    args.insert(args.end(),
                {"--json", "--from", "@2", "--until", "+0.045", "--skip", "TSL,FOO", "--loop", "2",
                 events});
    ToolProcess host;
    ASSERT_EQ(RunHost(args, &host), kDone) << host.Stderr();
    EXPECT_EQ(Origins(host), twice) << runner.front();
    EXPECT_TRUE(host.TempDirEmpty());
  }

  // Without a count it plays until stopped.
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

// A dropped record of each kind and a malformed line: the summary on
// standard error, the "finished" item and the readable names and times.
TEST(HostEndToEnd, SummaryTellsWhatWasPlayedAndDropped) {
  TestFolder folder;
  const std::string events = folder.Write(
      "events", "1416131460 $TMC timeStamp=1416131460 SID=1\n1416131461 $XYZ a\n"
                "1416131462 $TMC bogus=1\n1416131464 $TSL serviceType=1\n\n1416131465 $TMC\n");
  ToolProcess json;
  ASSERT_EQ(RunHost({"--batched", "--json", events}, &json), 1);
  ASSERT_EQ(json.ItemsOfType("finished").size(), 1u);
  const JsonValue finished = json.ItemsOfType("finished")[0].json;
  EXPECT_EQ(finished["recordsByTag"]["$TMC"].number, 2);
  EXPECT_EQ(finished["recordsByTag"]["$XYZ"].number, 1);
  EXPECT_EQ(finished["recordsByTag"]["$TSL"].number, 1);
  EXPECT_EQ(finished["dropped"].number, 2);
  EXPECT_EQ(finished["droppedUnknownTag"].number, 1);
  EXPECT_GT(finished["meanSpeed"].number, 0.0);
  for (const char* text : {"events:5: playback ended before the end of the file: empty line\n",
                           "records dispatched: $TMC 2 $XYZ 1 $TSL 1\n",
                           "records dropped: 2 (1 unknown tag, 1 unusable payload)\n",
                           "recorded time played 4s, mean speed "}) {
    EXPECT_NE(json.Stderr().find(text), std::string::npos) << text << json.Stderr();
  }

  ToolProcess readable;
  ASSERT_EQ(RunHost({"--speed", "100", events}, &readable), 1);
  std::string lines;
  for (const std::string& line : readable.BadLines()) lines += line + "\n";
  for (const char* text : {"timeStamp=1416131460 (2014-11-16T09:51:00Z)", "speed 10000 %",
                           "clock 1416131460 (2014-11-16T09:51:00Z)",
                           "next event 1416131461 (2014-11-16T09:51:01Z)"}) {
    EXPECT_NE(lines.find(text), std::string::npos) << text << lines;
  }
}

TEST(HostWallClock, RealTimeKeepsTheRecordedSpacingDividedBySpeed) {
  TestFolder folder;
  const std::string events =
      folder.Write("events", "1416131460 $TMC SID=1\n1416131460.4 $TMC SID=2\n"
                             "1416131461.2 $TMC SID=3\n");
  const double slack = 300.0 * pelorin_test::TimeScale();
  for (int speed : {1, 2}) {
    ToolProcess host;
    ASSERT_EQ(RunHost({"--json", "--realtime", std::to_string(speed), events}, &host), kDone)
        << host.Stderr();
    const auto tmc = host.ItemsOfType("tmc");
    ASSERT_EQ(tmc.size(), 3u);
    const double gaps[] = {tmc[1].t - tmc[0].t, tmc[2].t - tmc[1].t};
    const double recorded[] = {400.0, 800.0};
    for (int i = 0; i < 2; ++i) {
      EXPECT_GE(gaps[i], recorded[i] / speed - 5.0) << speed;
      EXPECT_LE(gaps[i], recorded[i] / speed + slack) << speed;
    }
    EXPECT_EQ(host.ItemsOfType("finished").size(), 1u);
  }
  // --progress: plain status lines on a standard error that is no terminal.
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
  host.Drain(ScaledMs(400));
  const size_t playedBeforeStop = host.ItemsOfType("tmc").size();
  host.Drain(700);
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
  ToolProcess host;
  ASSERT_TRUE(host.Start(PELORIN_HOST_PROGRAM, {"--json", "--control", "--paused", events}));
  host.WriteInput("bogus\n");
  host.CloseInput();
  EXPECT_EQ(host.Wait(ScaledMs(10000)), kDone);
  // The bad line is reported and otherwise ignored; the end of the input is told.
  EXPECT_NE(host.Stderr().find("bogus"), std::string::npos);
  EXPECT_NE(host.Stderr().find("end of the control input"), std::string::npos);
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
}

TEST(HostWallClock, OfflineServiceBlocksPlaybackUntilTimeout) {
  TestFolder folder;
  const std::string events =
      folder.Write("events", "1416131460 $TOT getInventory\n1416131461 $TMC SID=1\n");
  ToolProcess host;
  ASSERT_EQ(RunHost({"--json", "--realtime", "1", "--tpeg-offline", "--trace", "3", "--timeout",
                     "5.5", events},
                    &host, ScaledMs(30000)),
            kTimeout)
      << host.Stderr();
  ASSERT_EQ(host.ItemsOfType("onlineTraffic").size(), 1u);
  EXPECT_TRUE(host.ItemsOfType("tmc").empty());
  EXPECT_TRUE(AnyTraceContains(host, "playback blocked"));
  // The shutdown does not wait for an answer that never comes.
  EXPECT_LT(host.Elapsed(), 5.5 + 5.0 * pelorin_test::TimeScale());
  EXPECT_TRUE(host.TempDirEmpty());
}

TEST(HostWallClock, BundledExamplePlaysToItsEndWithTheDefaults) {
  ToolProcess host;
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
  for (const Item& call : host.ItemsOfType("onlineTraffic")) {
    const auto& args = call.json["args"].array;
    setNewData |= args.size() == 1 && args[0].string == "/fs/sda0/quillan//tpeg-0001.bin";
  }
  EXPECT_TRUE(setNewData);
}

}  // namespace
}  // namespace pelorin_tool_test
