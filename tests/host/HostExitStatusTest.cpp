// pelorin-host's exit status and last words can be trusted unattended: a
// playback that stopped short, input that cannot be played, output that
// could not be written and a reader that went away each end the run in
// their own way.

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "ToolProcess.h"

namespace pelorin_tool_test {
namespace {

std::string TwelveRecordsThenAnEmptyLine() {
  std::string text;
  for (int i = 0; i < 12; ++i) text += std::to_string(1416131460 + i) + " $TMC SID=1\n";
  return text + "\n1416131480 $TMC SID=2\n";
}

TEST(HostExitStatus, PlaybackThatDidNotPlayTheFileIsTold) {
  TestFolder folder;
  const std::string binary("\x7f" "ELF\x01\x01\x01\0\0\0\n\n", 12);
  const struct {
    std::string name, bytes;
    int status;
    std::string message;  // on standard error; empty: nothing
    bool complete;
    int records;
  } cases[] = {
      {"short", TwelveRecordsThenAnEmptyLine(), 1,
       "short:13: playback ended before the end of the file: empty line\n", false, 12},
      {"binary", binary, 1, "binary:1: playback ended before the end of the file: binary data at "
                            "byte 5\n", false, 0},
      {"empty", "", 0, "empty: the recording is empty: nothing to play\n", true, 0},
      {"unknown", "1 $ABC x\n", 0, "unknown: the recording holds no $TMC, $TSL or $TOT record: "
                                  "nothing to play\n", true, 1},
      {"good", "1 $TMC SID=1\n2 $TMC SID=2", 0, "", true, 2},
      // Where the module's reader stops: the byte after a lone CR starts the
      // next line even when it is a CR, and is lost when the file ends there;
      // a NUL ends the payload, not the line.
      {"crcr", "1 $TMC\r\r\n", 1, "crcr:2: playback ended before the end of the file: no blank "
                                   "after the time stamp\n", false, 1},
      {"cr", "1 $TMC\rx", 0, "", true, 1},
      {"nul", std::string("1 $TMC a\0b\n2 $TMC\n", 17), 0, "", true, 2},
      {"tab", "1 $TMC\n1\t$TMC\n", 1, "tab:2: playback ended before the end of the file: no blank "
                                   "after the time stamp\n", false, 1},
      {"blank", "1 $TMC\n 2 $TMC\n", 1, "blank:2: playback ended before the end of the file: empty "
                                     "time stamp (the line starts with a blank)\n", false, 1},
      {"blanks", "1  $TMC\n", 1, "blanks:1: playback ended before the end of the file: empty tag "
                                "(two blanks after the time stamp)\n", false, 0},
      {"notag", "1 \n", 1, "notag:1: playback ended before the end of the file: empty tag "
                          "(nothing after the time stamp)\n", false, 0},
  };
  for (const auto& test : cases) {
    const std::string path = folder.Write(test.name, test.bytes);
    ToolProcess host;
    ASSERT_TRUE(host.Start(PELORIN_HOST_PROGRAM, {"--json", "--batched", "--quiet", path}));
    host.CloseInput();
    EXPECT_EQ(host.Wait(ScaledMs(20000)), test.status) << test.name;
    EXPECT_EQ(host.Stderr(), test.message.empty() ? "" : "pelorin-host: " + folder.Path() + "/" +
                                                             test.message);
    Item finished;
    ASSERT_EQ(host.ItemsOfType("finished").size(), 1u) << test.name;
    finished = host.ItemsOfType("finished")[0];
    EXPECT_EQ(finished.json["complete"].boolean, test.complete) << test.name;
    EXPECT_EQ(finished.json["records"].number, test.records) << test.name;
    EXPECT_EQ(finished.json["stopLine"].IsNull(), test.complete) << test.name;
  }
}

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
