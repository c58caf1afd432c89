// pelorin-host's exit status and last words can be trusted unattended:
// output that could not be written and a reader that went away each end the
// run in their own way.

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "ToolProcess.h"

namespace pelorin_tool_test {
namespace {

TEST(HostExitStatus, StandardInputIsPlayedFromACopy) {
  ToolProcess host;
  ASSERT_TRUE(host.Start(PELORIN_HOST_PROGRAM, {"--json", "--batched", "-"}));
  host.WriteInput("1 $TMC SID=7\n2 $TMC SID=8\n");
  host.CloseInput();
  EXPECT_EQ(host.Wait(ScaledMs(20000)), 0) << host.Stderr();
  ASSERT_EQ(host.ItemsOfType("tmc").size(), 2u);
  EXPECT_EQ(host.ItemsOfType("tmc")[1].json["sid"].number, 8);
  EXPECT_TRUE(host.TempDirEmpty());
}

// Output that could not be written fails the run with one line; closed
// stdout is a failed write, not a file the host might open in its place.
TEST(HostExitStatus, FailedWritesOfStandardOutput) {
  TestFolder folder;
  const std::string events = folder.Write("events", "1 $TMC SID=1\n");
  const struct {
    std::string output, error;
  } cases[] = {
      {"/dev/full", "No space left on device"},
      {"", "Bad file descriptor"},
  };
  for (const auto& test : cases) {
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{"--batched", events}, std::vector<std::string>{"--help"}}) {
      ToolProcess host;
      host.OutputTo(test.output);
      EXPECT_EQ(RunTool(PELORIN_HOST_PROGRAM, args, &host), 4) << test.error;
      EXPECT_EQ(host.Stderr(), "pelorin-host: error writing standard output: " + test.error + "\n");
      EXPECT_TRUE(host.TempDirEmpty());
    }
  }
}

// wallclock: a reader that goes away ends an hour of real-time playback
// within about a second, quietly, whether or not the host is writing.
TEST(HostExitStatus, ReaderGoneEndsTheRunPromptly) {
  TestFolder folder;
  const std::string events = folder.Write(
      "events", "1416131460 $TMC SID=1\n1416135060 $TMC SID=2\n");
  ToolProcess host;
  ASSERT_TRUE(host.Start(PELORIN_HOST_PROGRAM, {"--json", "--realtime", "1", events}));
  ASSERT_TRUE(host.WaitForItem("tmc", ScaledMs(10000)));
  const double closed = host.Elapsed();
  host.CloseOutput();
  EXPECT_EQ(host.Wait(ScaledMs(10000)), 141);
  EXPECT_LT(host.Elapsed() - closed, 1.0 + 1.0 * pelorin_test::TimeScale());
  EXPECT_EQ(host.Stderr(), "");
  EXPECT_TRUE(host.TempDirEmpty());
}

}  // namespace
}  // namespace pelorin_tool_test
