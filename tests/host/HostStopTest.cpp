// pelorin-host stops when told: after a signal or --timeout nothing more
// from the module is printed or counted, even while playback waits for an
// online traffic answer that would set the rest of the recording going;
// every stop removes the private storage root and ends with its own status.

#include <gtest/gtest.h>
#include <signal.h>

#include <string>

#include "ToolProcess.h"

namespace pelorin_tool_test {
namespace {

// An inventory call the silent service never answers, then many records.
std::string BlockedRecording() {
  std::string text = "1416131460 $TOT setOnlineTrafficDataStatus:0\n1416131460 $TOT getInventory\n";
  for (int i = 0; i < 500; ++i) text += "1416131461 $TMC SID=" + std::to_string(i % 200) + "\n";
  return text;
}

// `stop` 0 means --timeout; anything else is the signal sent once the
// blocking call shows.
void ExpectNothingAfterTheStop(const std::string& events, int stop) {
  ToolProcess host;
  std::vector<std::string> args = {"--json", "--batched", "--tpeg-offline", events};
  if (stop == 0) args.insert(args.begin(), {"--quiet", "--timeout", "0.2"});
  ASSERT_TRUE(host.Start(PELORIN_HOST_PROGRAM, args));
  host.CloseInput();
  if (stop != 0) {
    Item call;
    do {
      ASSERT_TRUE(host.WaitForItem("onlineTraffic", ScaledMs(10000), &call));
    } while (call.json["call"].string != "getInventory");
    host.Signal(stop);
  }
  EXPECT_EQ(host.Wait(ScaledMs(20000)), stop == 0 ? 3 : 128 + stop);
  EXPECT_TRUE(host.ItemsOfType("tmc").empty()) << host.ItemsOfType("tmc").size() << " after "
                                               << stop;
  EXPECT_TRUE(host.ItemsOfType("finished").empty());
  if (stop == 0) {
    EXPECT_EQ(host.Stderr(), "");  // a timeout is no error
  }
  EXPECT_TRUE(host.TempDirEmpty());
}

TEST(HostStop, NothingFromTheModuleAfterTheStop) {
  TestFolder folder;
  const std::string events = folder.Write("events", BlockedRecording());
  for (int round = 0; round < 3; ++round) {
    for (int stop : {0, SIGINT, SIGTERM, SIGHUP, SIGQUIT}) ExpectNothingAfterTheStop(events, stop);
  }
}

// Records keep coming for a moment after a signal until playback halts; the
// summary counts only those whose items were shown.
TEST(HostStop, TheSummaryCountsOnlyTheItemsShown) {
  TestFolder folder;
  std::string text;
  for (int i = 0; i < 300; ++i) {
    text += std::to_string(1416131460 + i * 0.01) + " $TMC SID=" + std::to_string(i % 200) + "\n";
  }
  const std::string events = folder.Write("events", text);
  ToolProcess host;
  ASSERT_TRUE(host.Start(PELORIN_HOST_PROGRAM, {"--json", "--realtime", "1", events}));
  host.CloseInput();
  ASSERT_TRUE(host.WaitForItem("tmc", ScaledMs(10000)));
  host.Signal(SIGINT);
  EXPECT_EQ(host.Wait(ScaledMs(20000)), 128 + SIGINT);
  const std::string shown = std::to_string(host.ItemsOfType("tmc").size());
  EXPECT_NE(host.Stderr().find("records dispatched: $TMC " + shown + "\n"), std::string::npos)
      << host.Stderr();
}

}  // namespace
}  // namespace pelorin_tool_test
