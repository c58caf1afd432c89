// pelorin-edit on small recordings: cut, state at the cut, merge and moved
// times, read back byte for byte; its refusals; and a failed write that
// leaves nothing behind.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <dirent.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "host/pelorin-edit/EditProgram.h"
#include "host/pelorin-edit/ShiftedText.h"
#include "tests/host/Examples.h"

namespace {

using pelorin_tool_test::ReadFile;
using pelorin_tool_test::TestFolder;
using ::testing::HasSubstr;

// A drive: a service list, a session, a query, two data files, messages.
const char kDrive[] =
    "100 $TSL serviceType=1 sd_SID=34 sd_LTN=1\r\n"
    "105 $TOT setNewSession\r\n"
    "106 $TOT getInventory\n"
    "107 $TOT setTimeoutForFallback:1 2\n"
    "110 $TOT setNewData:a.bin\n"
    "120.25 $TMC timeStamp=120 LTN=1 SID=34 PID=1 tmcData=0A\n"
    "130 $TOT setNewData:b.bin\n"
    "140,5 $TMC timeStamp=\"140\" LTN=1 SID=34 PID=2 tmcData=0B\n"
    "150 $TMC timeStamp=150 ltn=1\n";

std::vector<std::string> Files(const TestFolder& dir, size_t count) {
  std::vector<std::string> files;
  for (size_t i = 1; i <= count; ++i) files.push_back(dir.Path() + "/in" + std::to_string(i));
  return files;
}

int Edit(std::vector<std::string> arguments, std::string* err) {
  std::ostringstream messages;
  const int status = PelorinEdit::EditProgram::Run(arguments, messages);
  *err = messages.str();
  return status;
}

// Names in a folder, without "." and "..".
std::vector<std::string> Names(const std::string& folder) {
  std::vector<std::string> names;
  DIR* dir = ::opendir(folder.c_str());
  while (const dirent* entry = dir != nullptr ? ::readdir(dir) : nullptr) {
    const std::string name = entry->d_name;
    if (name != "." && name != "..") names.push_back(name);
  }
  if (dir != nullptr) ::closedir(dir);
  return names;
}

TEST(EditProgramTest, WritesTheSelectedRecordsWithStateMergedAndMoved) {
  const struct {
    const char* name;
    std::vector<std::string> inputs;
    std::vector<std::string> options;
    const char* written;
    int status;
    const char* says;
  } cases[] = {
      {"a cut begins with the state: the last service list and the last of each call that "
       "sets state, at the cut's time; no query, no call playback refuses",
       {kDrive},
       {"--from", "140"},
       "140,5 $TSL serviceType=1 sd_SID=34 sd_LTN=1\n140,5 $TOT setNewSession\n"
       "140,5 $TOT setNewData:b.bin\n140,5 $TMC timeStamp=\"140\" LTN=1 SID=34 PID=2 tmcData=0B\n"
       "150 $TMC timeStamp=150 ltn=1\n",
       0,
       ""},
      {"--no-state, lines ended with LF",
       {kDrive},
       {"--no-state", "--from", "@2", "--until", "106"},
       "105 $TOT setNewSession\n106 $TOT getInventory\n",
       0,
       ""},
      {"--until @N keeps line N",
       {kDrive},
       {"--until", "@2"},
       "100 $TSL serviceType=1 sd_SID=34 sd_LTN=1\n105 $TOT setNewSession\n",
       0,
       ""},
      {"tags that the selection leaves out are no state either",
       {kDrive},
       {"--from", "+30", "--only", "TMC"},
       "140,5 $TMC timeStamp=\"140\" LTN=1 SID=34 PID=2 tmcData=0B\n150 $TMC timeStamp=150 ltn=1\n",
       0,
       ""},
      {"merged by time, the first input first at equal times, the second moved before",
       {"10 $TMC a=1\n20 $TMC b=2\n", "5 $XYZ c\n15 $XYZ d\n"},
       {"--shift-input", "2=5"},
       "10 $TMC a=1\n10 $XYZ c\n20 $TMC b=2\n20 $XYZ d\n",
       0,
       ""},
      {"the state of merged inputs is the last in merged order",
       {"10 $TSL sd_SID=1\n30 $TMC timeStamp=30\n", "20 $TSL sd_SID=2\n40 $TMC timeStamp=40\n"},
       {"--from", "25"},
       "30 $TSL sd_SID=2\n30 $TMC timeStamp=30\n40 $TMC timeStamp=40\n",
       0,
       ""},
      {"--shift moves times and TMC time stamps, each with its own decimals and mark; a "
       "payload that playback refuses keeps its bytes",
       {kDrive},
       {"--shift", "-1.25", "--from", "@6", "--no-state"},
       "119.00 $TMC timeStamp=119 LTN=1 SID=34 PID=1 tmcData=0A\n129 $TOT setNewData:b.bin\n"
       "139,2 $TMC timeStamp=\"139\" LTN=1 SID=34 PID=2 tmcData=0B\n149 $TMC timeStamp=150 ltn=1\n",
       0,
       ""},
      {"--start puts the first record written, state included, at a UTC time",
       {"1416131400 $TSL sd_SID=1\n1416131460.5 $TMC timeStamp=1416131460\n"},
       {"--from", "@2", "--start", "2014-11-16T09:52:00Z"},
       "1416131520.0 $TSL sd_SID=1\n1416131520.0 $TMC timeStamp=1416131520\n",
       0,
       ""},
      {"a line that playback rejects ends the input there",
       {"1 $TMC a=1\n2  $TMC\n3 $TMC b=2\n", "2 $TSL x=1\n"},
       {},
       "1 $TMC a=1\n2 $TSL x=1\n",
       1,
       "in1:2: playback ends here: "},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    TestFolder dir;
    const std::vector<std::string> files = Files(dir, c.inputs.size());
    for (size_t i = 0; i < files.size(); ++i) pelorin_test::WriteFile(files[i], c.inputs[i]);
    std::vector<std::string> arguments = c.options;
    arguments.insert(arguments.end(), {"-o", dir.Path() + "/out"});
    arguments.insert(arguments.end(), files.begin(), files.end());
    std::string err;
    EXPECT_EQ(Edit(arguments, &err), c.status);
    EXPECT_EQ(ReadFile(dir.Path() + "/out"), c.written);
    EXPECT_THAT(err, HasSubstr(c.says));
  }
}

TEST(EditProgramTest, NumbersKeepTheirPrecision) {
  const struct {
    const char* text;
    double seconds;
    const char* moved;  // null: not a plain decimal
  } cases[] = {
      {"1416131460.25", 1.5, "1416131461.75"},
      {"1416131461,5", -0.25, "1416131461,2"},
      {"120", 0.4, "120"},
      {"120", 0.6, "121"},
      {"0.05", -0.1, "-0.05"},
      {"-3", 5, "2"},
      {"1e3", 1, nullptr},
      {"12.", 1, nullptr},
      {"abc", 1, nullptr},
      {"1.0000000001", 1, nullptr},
  };
  for (const auto& c : cases) {
    std::string moved;
    EXPECT_EQ(PelorinEdit::ShiftedText::Decimal(c.text, c.seconds, &moved), c.moved != nullptr)
        << c.text;
    if (c.moved != nullptr) {
      EXPECT_EQ(moved, c.moved) << c.text;
    }
  }
}

TEST(EditProgramTest, RefusesAndWritesNothing) {
  TestFolder dir;
  const std::string input = dir.Write("in", "1 $TMC a=1\n");
  ASSERT_EQ(::link(input.c_str(), (dir.Path() + "/same").c_str()), 0);
  const std::string out = dir.Path() + "/out";
  const struct {
    std::vector<std::string> arguments;
    const char* says;
  } cases[] = {
      {{"-o", dir.Path() + "/same", input}, "is the input"},
      {{"-o", out, dir.Path() + "/missing"}, "cannot read"},
      {{"-o", out, dir.Path()}, "Is a directory"},
      {{"-o", dir.Path() + "/no/such/out", input}, "cannot write"},
      {{input}, "no output given"},
      {{"-o", out, "--shift", "1", "--start", "1", input}, "give one of them"},
      {{"-o", out, "--shift-input", "2=1", input}, "input 2 of 1"},
      {{"-o", out, "--start", "2014-13-01T00:00:00Z", input}, "--start needs"},
      {{"-o", out, "--from", "20", "--until", "10", input}, "--from"},
  };
  for (const auto& c : cases) {
    std::string err;
    EXPECT_EQ(Edit(c.arguments, &err), 2) << c.says;
    EXPECT_THAT(err, HasSubstr(c.says));
    EXPECT_EQ(access(out.c_str(), F_OK), -1) << c.says;
  }
  EXPECT_EQ(ReadFile(input), "1 $TMC a=1\n");
}

TEST(EditProgramTest, AFailedWriteLeavesTheOutputAsItWas) {
  TestFolder dir;
  std::string many;
  for (int i = 1; i <= 2000; ++i)
    many += std::to_string(i) + " $TMC timeStamp=" + std::to_string(i) + "\n";
  dir.Write("in", many);
  dir.Write("out", "kept\n");
  // Files may grow to 4 KiB: writing the output fails with EFBIG. In a
  // cross build the program runs under its emulator (words joined by "|").
  std::string launcher = PELORIN_TOOL_LAUNCHER;
  for (char& c : launcher) c = c == '|' ? ' ' : c;
  const std::string command = "cd '" + dir.Path() + "' && ulimit -f 4 && trap '' XFSZ && " +
                              launcher + " '" + PELORIN_EDIT_PROGRAM +
                              "' --shift 1 -o out in 2>err";
  const int status = std::system(("bash -c \"" + command + "\"").c_str());
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 4);
  EXPECT_THAT(ReadFile(dir.Path() + "/err"), HasSubstr("pelorin-edit: error writing out: "));
  EXPECT_EQ(ReadFile(dir.Path() + "/out"), "kept\n");
  EXPECT_THAT(Names(dir.Path()), ::testing::UnorderedElementsAre("in", "out", "err"));
}

TEST(EditProgramTest, AStopSignalLeavesNoOutput) {
  TestFolder dir;
  const std::string out = dir.Path() + "/out";
  pelorin_tool_test::ToolProcess tool;
  ASSERT_TRUE(tool.Start(PELORIN_EDIT_PROGRAM, {"-o", out, "-"}));
  tool.WriteInput("1 $TMC a=1\n2 $TMC b=2\n");  // and more to come: it waits
  // The temporary output beside `out` shows that the run is under way.
  for (int waited = 0; Names(dir.Path()).empty() && waited < 20000; waited += 10) usleep(10000);
  ASSERT_EQ(Names(dir.Path()).size(), 1u);
  tool.Signal(SIGTERM);
  EXPECT_EQ(tool.Wait(20000), 143);
  EXPECT_EQ(tool.Stderr(), "");
  EXPECT_THAT(Names(dir.Path()), ::testing::IsEmpty());
}

TEST(EditProgramTest, PacksAHeadUnitFolderOrLeavesNothing) {
  TestFolder dir;
  const std::string drive = dir.Write("rec/drive", kDrive);
  dir.Write("rec/a.bin", "TPEG a");
  const std::string pack = dir.Path() + "/usb";
  std::string err;
  // The state names b.bin, which is missing: the check refuses the pack.
  EXPECT_EQ(Edit({"--from", "140", "--pack", pack, drive}, &err), 1);
  EXPECT_THAT(err, HasSubstr("usb/quillan/events:3: warning: "));
  EXPECT_THAT(err, HasSubstr("the pack " + pack + " is refused: 1 finding"));
  EXPECT_THAT(Names(dir.Path()), ::testing::UnorderedElementsAre("rec"));

  dir.Write("rec/b.bin", "TPEG b");
  dir.Write("usb/");
  EXPECT_EQ(Edit({"--from", "140", "--realtime", "2x", "--pack", pack, drive}, &err), 0) << err;
  EXPECT_EQ(ReadFile(pack + "/quillan/Pelorin.cfg"),
            "# Written by pelorin-edit.\neventsFile=/fs/sda0/quillan/events\n"
            "tpegsDir=/fs/sda0/quillan/\ninteractive=false\nplaybackSpeed=2\n");
  EXPECT_EQ(ReadFile(pack + "/quillan/b.bin"), "TPEG b");
  EXPECT_THAT(Names(pack + "/quillan"),
              ::testing::UnorderedElementsAre("events", "Pelorin.cfg", "b.bin"));

  // A pack folder that holds anything is replaced only when forced.
  EXPECT_EQ(Edit({"--pack", pack, "--batched", drive}, &err), 2);
  EXPECT_THAT(err, HasSubstr("is not empty (--force replaces it)"));
  EXPECT_EQ(Edit({"--pack", pack, "--force", "--autostart", "--until", "@5", drive}, &err), 0);
  EXPECT_THAT(ReadFile(pack + "/quillan/Pelorin.cfg"), HasSubstr("autostart=true\n"));
  EXPECT_THAT(Names(pack + "/quillan"),
              ::testing::UnorderedElementsAre("events", "Pelorin.cfg", "a.bin"));
  EXPECT_THAT(Names(dir.Path()), ::testing::UnorderedElementsAre("rec", "usb"));
}

}  // namespace
