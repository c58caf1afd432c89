// pelorin-host from outside: the built program plays small events files
// through the real module; the tests read its JSON Lines and exit status.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "HostProcess.h"

namespace pelorin_host_test {
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

std::vector<std::string> Types(const std::vector<HostItem>& items) {
  std::vector<std::string> types;
  for (const HostItem& item : items) types.push_back(item.type);
  return types;
}

int StderrLines(const HostProcess& host) {
  int lines = 0;
  for (char c : host.Stderr()) lines += c == '\n';
  return lines;
}

// Every JSON item begins with "t" and "type", and "t" never goes back.
void ExpectWellFormed(const HostProcess& host) {
  EXPECT_TRUE(host.BadLines().empty()) << host.BadLines().front();
  double last = 0.0;
  for (const HostItem& item : host.Items()) {
    ASSERT_GE(item.json.Keys().size(), 2u) << item.line;
    EXPECT_EQ(item.json.Keys()[0], "t") << item.line;
    EXPECT_EQ(item.json.Keys()[1], "type") << item.line;
    EXPECT_GE(item.t, last) << item.line;
    last = item.t;
  }
}

TEST(HostEndToEnd, BatchedPlaysEverythingThatLeavesTheModule) {
  TestFolder folder;
  const std::string events = folder.Write("rec/events.txt", kEvents);
  HostProcess host;
  ASSERT_EQ(RunHost({"--batched", "--json", events}, &host), kDone) << host.Stderr();
  EXPECT_EQ(host.Stderr(), "");
  ExpectWellFormed(host);
  EXPECT_EQ(Types(host.Items()),
            (std::vector<std::string>{"serviceList", "tmc", "tmc", "onlineTraffic", "onlineTraffic",
                                      "onlineTraffic", "onlineTraffic", "tmc", "finished"}));
  const auto& items = host.Items();
  ASSERT_EQ(items.size(), 9u);

  const auto& entries = items[0].json["entries"].Array();
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(entries[0]["sd_SPN"].String(), "RADIO 1");
  EXPECT_EQ(entries[0]["sd_PID"].Number(), 53761);
  EXPECT_TRUE(entries[0]["sd_sendername"].IsNull());
  EXPECT_EQ(entries[1]["sd_SID"].Number(), 35);
  EXPECT_TRUE(entries[1]["sd_SPN"].IsNull());
  EXPECT_EQ(entries[1].Keys().size(), 15u);

  EXPECT_EQ(items[1].json["timeStamp"].Number(), 1416131460);
  EXPECT_EQ(items[1].json["pid"].Number(), 53761);
  EXPECT_EQ(items[1].json["tmcData"].String(), "0a1f223c00");
  EXPECT_EQ(items[2].json["ltn"].Number(), 2);
  EXPECT_TRUE(items[2].json["tmcData"].IsNull());
  EXPECT_EQ(items[7].json["sid"].Number(), 44);  // low 8 bits of 300
  EXPECT_EQ(items[7].json["tmcData"].String(), "ff01");

  EXPECT_EQ(items[3].json["call"].String(), "setOnlineTrafficDataStatus");
  ASSERT_EQ(items[3].json["args"].Array().size(), 1u);
  EXPECT_EQ(items[3].json["args"].Array()[0].Number(), 0);
  EXPECT_EQ(items[4].json["call"].String(), "getInventory");
  EXPECT_TRUE(items[4].json["args"].Array().empty());
  // The TPEG folder defaults to the events file's own folder.
  EXPECT_EQ(items[5].json["args"].Array().at(0).String(), folder.Path() + "/rec/a.bin");
  EXPECT_EQ(items[6].json["args"].Array().at(0).Number(), 30);
  // The private storage root is gone.
  EXPECT_TRUE(host.TempDirEmpty());
}

TEST(HostEndToEnd, TpegsDirAndReadableOutput) {
  TestFolder folder;
  const std::string events = folder.Write("events", kEvents);
  HostProcess host;
  ASSERT_EQ(RunHost({"--batched", "--tpegs-dir", folder.Path() + "/tpeg/", events}, &host, 60000),
            kUnusable);  // the folder does not exist yet
  EXPECT_EQ(StderrLines(host), 1);
  EXPECT_NE(host.Stderr().find("--tpegs-dir"), std::string::npos);

  folder.Write("tpeg/x", "");
  HostProcess readable;
  ASSERT_EQ(RunHost({"--batched", "--tpegs-dir", folder.Path() + "/tpeg/", events}, &readable),
            kDone);
  // One readable line per item, none of them JSON.
  EXPECT_TRUE(readable.Items().empty());
  const auto& lines = readable.BadLines();
  ASSERT_EQ(lines.size(), 9u);
  EXPECT_NE(lines[1].find("tmc"), std::string::npos);
  EXPECT_NE(lines[1].find("0a:1f:22:3c:00"), std::string::npos);
  EXPECT_NE(lines[5].find(folder.Path() + "/tpeg/a.bin"), std::string::npos);
  EXPECT_NE(lines[8].find("finished"), std::string::npos);
}

TEST(HostEndToEnd, RootFolderIsTheHeadUnitsStorage) {
  TestFolder folder;
  folder.Write("sda0/quillan/Pelorin.cfg", "interactive=false\n");
  folder.Write("sda0/quillan/events", "100 $TOT setNewData:b.bin\n101 $TMC SID=9\n");
  const std::vector<std::string> before = folder.List();
  HostProcess host;
  ASSERT_EQ(RunHost({"--json", "--root", folder.Path() + "/sda0"}, &host), kDone) << host.Stderr();
  ExpectWellFormed(host);
  const auto calls = host.ItemsOfType("onlineTraffic");
  ASSERT_EQ(calls.size(), 1u);
  // The module's own default TPEG folder, as the head unit sees it.
  EXPECT_EQ(calls[0].json["args"].Array().at(0).String(), "/fs/sda0/quillan//b.bin");
  ASSERT_EQ(host.ItemsOfType("tmc").size(), 1u);
  EXPECT_EQ(host.ItemsOfType("finished").size(), 1u);
  EXPECT_EQ(folder.List(), before);  // nothing written into the folder
}

TEST(HostEndToEnd, TraceShowsTheModulesMessagesFromTheGivenLevel) {
  TestFolder folder;
  const std::string events = folder.Write("events", kEvents);
  HostProcess progress;
  ASSERT_EQ(RunHost({"--batched", "--json", "--trace", "2", events}, &progress), kDone);
  ExpectWellFormed(progress);
  const auto traces = progress.ItemsOfType("trace");
  bool sawFinished = false;
  for (const HostItem& trace : traces) {
    EXPECT_EQ(trace.json["channel"].type(), JsonValue::Type::kString);
    EXPECT_GE(trace.json["level"].Number(), 2);
    sawFinished |= trace.json["text"].String() == "Runner::NotifyFinished";
  }
  EXPECT_TRUE(sawFinished);

  HostProcess failures;
  ASSERT_EQ(RunHost({"--batched", "--json", "--trace", "4", events}, &failures), kDone);
  for (const HostItem& trace : failures.ItemsOfType("trace")) {
    EXPECT_GE(trace.json["level"].Number(), 4) << trace.line;
  }
  // Without --trace, no trace items, but the end is still seen.
  HostProcess quiet;
  ASSERT_EQ(RunHost({"--batched", "--json", events}, &quiet), kDone);
  EXPECT_TRUE(quiet.ItemsOfType("trace").empty());
  EXPECT_EQ(quiet.ItemsOfType("finished").size(), 1u);
}

TEST(HostEndToEnd, BundledExamplePlayedAllAtOnce) {
  HostProcess host;
  ASSERT_EQ(RunHost({"--batched", "--json"}, &host), kDone) << host.Stderr();
  ExpectWellFormed(host);
  EXPECT_EQ(host.ItemsOfType("serviceList").size(), 2u);
  EXPECT_GE(host.ItemsOfType("tmc").size(), 5u);
  std::vector<std::string> calls;
  for (const HostItem& item : host.ItemsOfType("onlineTraffic")) {
    calls.push_back(item.json["call"].String());
    if (calls.back() == "setNewData") {
      // The TPEG files that the recording names are shipped beside it.
      const std::string path = item.json["args"].Array().at(0).String();
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
  HostProcess help;
  ASSERT_EQ(RunHost({"--help"}, &help), kDone);
  EXPECT_GT(help.BadLines().size(), 20u);
  HostProcess version;
  ASSERT_EQ(RunHost({"--version"}, &version), kDone);
  ASSERT_EQ(version.BadLines().size(), 1u);
  EXPECT_EQ(version.BadLines()[0].rfind("pelorin-host ", 0), 0u);
}

// Unusable input: exit status 2 and one line on standard error naming the
// cause; the private storage root is removed all the same.
struct UnusableCase {
  std::vector<std::string> args;
  std::string cause;
};

TEST(HostEndToEnd, UnusableInputExitsWithOneLine) {
  TestFolder folder;
  const std::string events = folder.Write("events", kEvents);
  const std::string missing = folder.Path() + "/missing-events";
  const std::vector<UnusableCase> cases = {
      {{"--bogus"}, "--bogus"},
      {{"--realtime", "0", events}, "--realtime"},
      {{"--module", folder.Path() + "/no-such-module.so", events}, "no-such-module.so"},
      // A shared library that is not a module: it lacks the entry points.
      {{"--module", PELORIN_HOST_PLATFORM_LIBRARY, events}, "hmi_setInterface"},
      {{"--batched", missing}, missing},
      {{"--root", folder.Path() + "/no-root"}, "no-root"},
  };
  for (const UnusableCase& test : cases) {
    HostProcess host;
    EXPECT_EQ(RunHost(test.args, &host), kUnusable) << test.args.front();
    EXPECT_EQ(StderrLines(host), 1) << host.Stderr();
    EXPECT_NE(host.Stderr().find(test.cause), std::string::npos) << host.Stderr();
    EXPECT_TRUE(host.TempDirEmpty()) << test.args.front();
  }
}

TEST(HostEndToEnd, TimeoutShutsDownCleanly) {
  TestFolder folder;
  const std::string events = folder.Write("events", kEvents);
  HostProcess host;
  // Paused interactive playback never ends by itself.
  ASSERT_EQ(RunHost({"--json", "--paused", "--timeout", "0.5", events}, &host), kTimeout);
  EXPECT_EQ(host.Stderr(), "");
  EXPECT_TRUE(host.ItemsOfType("tmc").empty());
  EXPECT_TRUE(host.TempDirEmpty());
}

TEST(HostEndToEnd, TerminationShutsDownAndCleansUp) {
  TestFolder folder;
  const std::string events = folder.Write("events", kEvents);
  HostProcess host;
  ASSERT_TRUE(host.Start({"--json", "--paused", events}));
  std::string line;
  while (host.ReadLine(&line, ScaledMs(300))) {
  }
  host.Signal(SIGTERM);
  EXPECT_EQ(host.Wait(ScaledMs(10000)), 128 + SIGTERM);
  EXPECT_TRUE(host.TempDirEmpty());
}

TEST(HostEndToEnd, EventsFileTheModuleCannotNameIsReachedThroughALink) {
  TestFolder folder;
  // The module reads a backslash in a path as a folder separator.
  const std::string events = folder.Write("odd\\name/events", kEvents);
  HostProcess host;
  ASSERT_EQ(RunHost({"--batched", "--json", events}, &host), kDone) << host.Stderr();
  EXPECT_EQ(host.ItemsOfType("tmc").size(), 3u);
  EXPECT_TRUE(host.TempDirEmpty());
}

}  // namespace
}  // namespace pelorin_host_test
