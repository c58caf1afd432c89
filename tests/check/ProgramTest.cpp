// The pelorin-check program itself, run as a user runs it: exit statuses,
// where the report and the usage errors go.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/check/CheckTestSupport.h"

namespace {

using pelorin_check_test::TestFolder;
using ::testing::HasSubstr;

struct Outcome {
  int status = -1;
  std::string out;
  std::string err;
  std::vector<pelorin_tool_test::Item> items;  // the output lines that are JSON objects
};

class ProgramTest : public ::testing::Test {
 protected:
  static Outcome Run(const std::vector<std::string>& arguments) {
    pelorin_tool_test::ToolProcess process;
    Outcome outcome;
    outcome.status = pelorin_tool_test::RunTool(PELORIN_CHECK_PROGRAM, arguments, &process);
    outcome.out = process.Output();
    outcome.err = process.Stderr();
    outcome.items = process.Items();
    return outcome;
  }

  TestFolder m_dir;
};

TEST_F(ProgramTest, ExitStatusFollowsTheWorstFinding) {
  const std::string clean = m_dir.Write("clean", "10 $TMC LTN=1\n11 $TOT getInventory\n");
  const std::string warned = m_dir.Write("warned", "10 $TMC ltn=1\n");
  const std::string broken = m_dir.Write("broken", "10 $TMC\n\n11 $TMC\n");

  const Outcome ok = Run({clean});
  EXPECT_EQ(ok.status, 0);
  EXPECT_THAT(ok.out, HasSubstr(clean + ": summary: 2 lines; 2 records play: $TMC 1, $TOT 1\n"));
  EXPECT_EQ(ok.err, "");

  EXPECT_EQ(Run({warned}).status, 0);
  const Outcome strict = Run({"--strict", warned, clean});
  EXPECT_EQ(strict.status, 1);
  EXPECT_THAT(strict.out, HasSubstr(warned + ":1: warning: unknown key \"ltn\""));

  const Outcome failed = Run({"--strict", clean, broken, warned});
  EXPECT_EQ(failed.status, 2);
  EXPECT_THAT(failed.out, HasSubstr(broken + ":2: error: malformed line: empty line; playback "
                                             "ends here\n"));
  EXPECT_THAT(failed.out, HasSubstr("playback ends at line 2: empty line; 1 later line never"));
  EXPECT_EQ(Run({m_dir.Path() + "/missing"}).status, 2);
}

TEST_F(ProgramTest, UnusableArgumentsGiveOneLineOnStandardError) {
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{},
                                             {"--speed", "0", "e"},
                                             {"--bogus", "e"},
                                             {"--root", m_dir.Path() + "/none", "e"},
                                             {"--config", m_dir.Path() + "/none.cfg", "e"}}) {
    const Outcome outcome = Run(arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    ASSERT_FALSE(outcome.err.empty());
    EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr("pelorin-check: error: "));
  }
}

TEST_F(ProgramTest, HelpAndVersion) {
  const Outcome help = Run({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.out, HasSubstr("Usage: pelorin-check [OPTIONS] EVENTS..."));
  EXPECT_THAT(help.out, HasSubstr("Example:"));
  const Outcome version = Run({"-V"});
  EXPECT_EQ(version.status, 0);
  EXPECT_THAT(version.out, HasSubstr("pelorin-check "));
}

TEST_F(ProgramTest, JsonLinesAndTheTpegDirectoryUnderARoot) {
  m_dir.Write("root/quillan/Pelorin.cfg", "# head unit settings\ntpegsDir=/fs/sda0/tpeg/\n");
  m_dir.Write("root/tpeg/a.bin", "tpeg");
  const std::string events =
      m_dir.Write("events", "10 $TOT setNewData:a.bin\n12 $TOT setNewData:b.bin\n14 $TMC\n");
  const Outcome outcome =
      Run({"--json", "--strict", "--speed", "2", "--root", m_dir.Path() + "/root", events});
  EXPECT_EQ(outcome.status, 1);
  ASSERT_EQ(outcome.items.size(), 2u) << outcome.out;
  EXPECT_EQ(outcome.out.size(), outcome.items[0].line.size() + outcome.items[1].line.size() + 2);
  const auto& diagnostic = outcome.items[0].json;
  EXPECT_EQ(diagnostic["type"].string, "diagnostic");
  EXPECT_EQ(diagnostic["line"].number, 2);
  EXPECT_EQ(diagnostic["severity"].string, "warning");
  EXPECT_EQ(diagnostic["code"].string, "tpeg-file-missing");
  EXPECT_THAT(diagnostic["message"].string, HasSubstr("root/tpeg//b.bin"));
  const auto& summary = outcome.items[1].json;
  EXPECT_EQ(summary["type"].string, "summary");
  EXPECT_EQ(summary["play_seconds"].number, 4);
  EXPECT_EQ(summary["speed"].number, 2);
  EXPECT_EQ(summary["play_seconds_at_speed"].number, 2);
}

}  // namespace
