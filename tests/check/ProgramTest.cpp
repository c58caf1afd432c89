// The pelorin-check program itself, run as a user runs it: exit statuses,
// where the report and the usage errors go, failed output, stop signals.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/host/ToolProcess.h"

namespace {

using pelorin_tool_test::TestFolder;
using ::testing::HasSubstr;

struct Outcome {
  int status = -1;
  std::string out;
  std::string err;
};

class ProgramTest : public ::testing::Test {
 protected:
  static Outcome Run(const std::vector<std::string>& arguments) {
    pelorin_tool_test::ToolProcess process;
    Outcome outcome;
    outcome.status = pelorin_tool_test::RunTool(PELORIN_CHECK_PROGRAM, arguments, &process);
    outcome.out = process.Output();
    outcome.err = process.Stderr();
    return outcome;
  }

  TestFolder m_dir;
};

TEST_F(ProgramTest, ExitStatusFollowsTheWorstFinding) {
  const std::string clean = m_dir.Write("clean", "10 $TMC LTN=1\n11 $TOT getInventory\n");
  const std::string warned = m_dir.Write("warned", "10 $TMC ltn=1\n");
  const std::string broken = m_dir.Write("broken", "10 $TMC\n\n11 $TMC\n");

  EXPECT_EQ(Run({warned}).status, 0);
  const Outcome strict = Run({"--strict", warned, clean});
  EXPECT_EQ(strict.status, 1);
  EXPECT_THAT(strict.out, HasSubstr(warned + ":1: warning: unknown key \"ltn\""));

  const Outcome failed = Run({"--strict", clean, broken, warned});
  EXPECT_EQ(failed.status, 1);
  EXPECT_THAT(failed.out, HasSubstr("\ntotal: 3 files, 1 error, 1 warning\n"));
  // An events file that cannot be read is unusable input, whatever the others hold.
  const Outcome unusable = Run({clean, m_dir.Path() + "/missing"});
  EXPECT_EQ(unusable.status, 2);
  EXPECT_THAT(unusable.out, HasSubstr("total: 2 files (1 unusable), 0 errors, 0 warnings"));
  EXPECT_EQ(Run({"--timeline", m_dir.Path() + "/no/t.svg", clean}).status, 2);
}

TEST_F(ProgramTest, UnusableInputGivesOneLineOnStandardError) {
  const std::string locked = m_dir.Write("locked", "1 $TMC\n");
  chmod(locked.c_str(), 0);
  const bool root = access(locked.c_str(), R_OK) == 0;  // root reads it anyway
  const struct {
    std::vector<std::string> arguments;
    std::string says;
  } cases[] = {
      {{}, "pelorin-check: error: no events file"},
      {{"--bogus", "e"}, "pelorin-check: error: unknown option"},
      {{"--root", m_dir.Path() + "/none", "e"}, "not a directory"},
      {{"--config", m_dir.Path() + "/none.cfg", "e"}, "cannot read"},
      {{m_dir.Path() + "/none"}, "pelorin-check: " + m_dir.Path() + "/none: No such file or directory"},
      {{m_dir.Path()}, "pelorin-check: " + m_dir.Path() + ": Is a directory"},
      {{locked}, root ? "" : "pelorin-check: " + locked + ": Permission denied"},
  };
  for (const auto& c : cases) {
    if (c.says.empty()) continue;
    SCOPED_TRACE(c.says);
    const Outcome outcome = Run(c.arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr(c.says));
  }
}

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

std::string ReadAll(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

TEST_F(ProgramTest, OutputThatFailsEndsTheRun) {
  std::string many;
  for (int i = 0; i < 20000; ++i) many += std::to_string(i + 1) + " $FOO\n";
  const std::string events = m_dir.Write("many", many);
  const std::string err = m_dir.Path() + "/err";
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
    EXPECT_EQ(ReadAll(err), c.says);
  }
}

TEST_F(ProgramTest, StopSignalsEndTheRunWith128PlusTheirNumber) {
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    pelorin_tool_test::ToolProcess process;
    ASSERT_TRUE(process.Start(PELORIN_CHECK_PROGRAM, {"-"}));
    process.WriteInput("1 $TMC\n");  // then it waits for more
    process.Signal(number);
    EXPECT_EQ(process.Wait(pelorin_tool_test::ScaledMs(10000)), 128 + number);
  }
}

TEST_F(ProgramTest, StandardInputAndTheEndOfOptions) {
  pelorin_tool_test::ToolProcess process;
  ASSERT_TRUE(process.Start(PELORIN_CHECK_PROGRAM, {"--strict", "--", "-", "--strict"}));
  process.WriteInput("1 $TMC\n2 $TOT getInventory\n");
  process.CloseInput();
  EXPECT_EQ(process.Wait(pelorin_tool_test::ScaledMs(60000)), 2);  // no file "--strict"
  EXPECT_THAT(process.Output(), HasSubstr("-: summary: 2 lines; 2 records play"));
  EXPECT_THAT(process.Stderr(), HasSubstr("pelorin-check: --strict: No such file or directory"));
}

}  // namespace
