// The pelorin-check program itself, run as a user runs it: exit statuses,
// where the report and the usage errors go.

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/check/CheckTestSupport.h"

extern char** environ;

namespace {

using pelorin_check_test::TempDir;
using ::testing::HasSubstr;

struct Outcome {
  int status = -1;
  std::string out;
  std::string err;
};

std::string ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// The launcher that CMake gives (an emulator in cross builds), split into
// its words.
std::vector<std::string> Launcher() {
  std::vector<std::string> parts;
  std::stringstream launcher(PELORIN_CHECK_LAUNCHER);
  for (std::string part; std::getline(launcher, part, '|');) {
    if (!part.empty()) parts.push_back(part);
  }
  return parts;
}

class ProgramTest : public ::testing::Test {
 protected:
  Outcome Run(const std::vector<std::string>& arguments) {
    std::vector<std::string> command = Launcher();
    command.push_back(PELORIN_CHECK_PROGRAM);
    command.insert(command.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& part : command) argv.push_back(&part[0]);
    argv.push_back(nullptr);

    const std::string outPath = m_dir.Path() + "/stdout";
    const std::string errPath = m_dir.Path() + "/stderr";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    posix_spawn_file_actions_addopen(&actions, 2, errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    pid_t pid = 0;
    Outcome outcome;
    const int spawned = posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    EXPECT_EQ(spawned, 0) << "cannot start " << argv[0];
    int wait = 0;
    if (spawned == 0 && waitpid(pid, &wait, 0) == pid && WIFEXITED(wait)) {
      outcome.status = WEXITSTATUS(wait);
    }
    outcome.out = ReadAll(outPath);
    outcome.err = ReadAll(errPath);
    return outcome;
  }

  TempDir m_dir;
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
  std::istringstream lines(outcome.out);
  std::vector<std::string> objects;
  for (std::string line; std::getline(lines, line);) objects.push_back(line);
  ASSERT_EQ(objects.size(), 2u) << outcome.out;
  EXPECT_THAT(objects[0], HasSubstr("\"line\":2,\"severity\":\"warning\",\"code\":"
                                    "\"tpeg-file-missing\""));
  EXPECT_THAT(objects[0], HasSubstr("root/tpeg//b.bin"));
  EXPECT_THAT(objects[1], HasSubstr("\"type\":\"summary\""));
  EXPECT_THAT(objects[1], HasSubstr("\"play_seconds\":4,\"speed\":2,\"play_seconds_at_speed\":2,"));
}

}  // namespace
