// The pelorin-check program itself, for what the recorded examples cannot
// show: failed output, stop signals, standard input, paths of any length.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "tests/host/Examples.h"

namespace {

using pelorin_tool_test::TestFolder;
using ::testing::HasSubstr;

// Runs the program through the shell, for output that ToolProcess cannot
// give it: `redirect` applies to it, `pipe` (when given) reads its output.
// Returns the program's exit status; its standard error lands in `err`.
int RunRedirected(const std::vector<std::string>& arguments, const std::string& redirect,
                  const std::string& pipe, const std::string& errPath) {
  std::string command;
  std::stringstream launcher(PELORIN_TOOL_LAUNCHER);
  for (std::string word; std::getline(launcher, word, '|');) {
    if (!word.empty()) command += "'" + word + "' ";
  }
  command += std::string("'") + PELORIN_CHECK_PROGRAM + "'";
  for (const std::string& argument : arguments) command += " '" + argument + "'";
  command += " 2>'" + errPath + "' " + redirect;
  if (!pipe.empty()) command += " | " + pipe + "; exit \\${PIPESTATUS[0]}";
  const std::string shell = "bash -c \"" + command + "\"";
  const int status = std::system(shell.c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(ProgramTest, OutputThatFailsEndsTheRun) {
  TestFolder dir;
  std::string many;
  for (int i = 0; i < 20000; ++i) many += std::to_string(i + 1) + " $FOO\n";
  const std::string events = dir.Write("many", many);
  const std::string err = dir.Path() + "/err";
  const struct {
    const char* redirect;
    const char* pipe;
    int status;
    const char* says;
  } cases[] = {
      {">/dev/full", "", 4, "pelorin-check: error writing standard output: No space left on device\n"},
      {">&-", "", 4, "pelorin-check: error writing standard output: Bad file descriptor\n"},
      {"", "head -c 10 >/dev/null", 141, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.redirect + std::string(c.pipe));
    EXPECT_EQ(RunRedirected({"--max-errors", "0", events}, c.redirect, c.pipe, err), c.status);
    EXPECT_EQ(pelorin_tool_test::ReadFile(err), c.says);
  }
}

TEST(ProgramTest, StopSignalsEndTheRunWith128PlusTheirNumber) {
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    pelorin_tool_test::ToolProcess process;
    ASSERT_TRUE(process.Start(PELORIN_CHECK_PROGRAM, {"-"}));
    process.WriteInput("1 $TMC\n");  // then it waits for more, in a read that
    // the module's reader resumes after a signal: the handler ends the run.
    usleep(static_cast<useconds_t>(pelorin_tool_test::ScaledMs(300)) * 1000);
    process.Signal(number);
    EXPECT_EQ(process.Wait(pelorin_tool_test::ScaledMs(10000)), 128 + number);
  }
}

TEST(ProgramTest, StandardInputAndTheEndOfOptions) {
  pelorin_tool_test::ToolProcess process;
  ASSERT_TRUE(process.Start(PELORIN_CHECK_PROGRAM, {"--strict", "--", "-", "--strict"}));
  process.WriteInput("1 $TMC\n2 $TOT getInventory\n");
  process.CloseInput();
  EXPECT_EQ(process.Wait(pelorin_tool_test::ScaledMs(60000)), 2);  // no file "--strict"
  EXPECT_THAT(process.Output(), HasSubstr("-: summary: 2 lines; 2 records play"));
  EXPECT_THAT(process.Stderr(), HasSubstr("pelorin-check: --strict: No such file or directory"));
}

// Paths name files of this computer as they stand: no cut at 254 bytes, a
// backslash is part of a name. pelorin-host plays the same files.
TEST(ProgramTest, PathsOfThisComputerAreTakenAsTheyAre) {
  TestFolder dir;
  const std::string deep = std::string(150, 'd') + "/" + std::string(150, 'e') + "/";
  const std::string tpegs = dir.Write(deep + "tpeg/");
  dir.Write(deep + "tpeg/a.bin", "x");
  const std::string config = dir.Write(deep + "Pelorin.cfg", "tpegsDir=" + tpegs + "\n");
  for (const std::string& name : {deep + "events", std::string("back\\slash")}) {
    const std::string events = dir.Write(name, "1 $TOT setNewData:a.bin\n");
    pelorin_tool_test::ToolProcess check;
    EXPECT_EQ(pelorin_tool_test::RunTool(PELORIN_CHECK_PROGRAM,
                                         {"--strict", "--config", config, events}, &check),
              0)
        << check.Stderr() << check.Output();
    pelorin_tool_test::ToolProcess host;
    EXPECT_EQ(pelorin_tool_test::RunTool(PELORIN_HOST_PROGRAM,
                                         {"--batched", "--tpegs-dir", tpegs, events}, &host),
              0)
        << host.Stderr();
  }
}

}  // namespace
