// Command line and control input of pelorin-host.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ControlCommand.h"
#include "Options.h"
#include "host/common/SpeedText.h"

namespace PelorinHost {

using PelorinTools::SpeedText;
namespace {

struct Parsed {
  bool ok = false;
  Options options;
  std::string error;
};

Parsed Parse(std::vector<std::string> args) {
  args.insert(args.begin(), "pelorin-host");
  std::vector<const char*> argv;
  for (const std::string& arg : args) argv.push_back(arg.c_str());
  Parsed parsed;
  parsed.ok =
      ParseOptions(static_cast<int>(argv.size()), argv.data(), &parsed.options, &parsed.error);
  return parsed;
}

TEST(HostOptions, DefaultsValuesInBothSpellingsAndOneEventsFile) {
  Parsed parsed = Parse({});
  ASSERT_TRUE(parsed.ok) << parsed.error;
  EXPECT_EQ(parsed.options.runner, RunnerChoice::kInteractive);
  EXPECT_FALSE(parsed.options.SetsConfiguration());
  EXPECT_EQ(parsed.options.tpegLatencyMs, 10u);
  EXPECT_EQ(parsed.options.traceLevel, -1);
  EXPECT_TRUE(parsed.options.eventsFile.empty());

  parsed = Parse({"--realtime=2.5", "--tpeg-latency", "250", "--trace=3", "--json", "--timeout",
                  "1.5", "--tpegs-dir", "/t", "rec.txt"});
  ASSERT_TRUE(parsed.ok) << parsed.error;
  EXPECT_EQ(parsed.options.runner, RunnerChoice::kRealtime);
  EXPECT_DOUBLE_EQ(parsed.options.realtimeSpeed, 2.5);
  EXPECT_EQ(parsed.options.tpegLatencyMs, 250u);
  EXPECT_EQ(parsed.options.traceLevel, 3);
  EXPECT_TRUE(parsed.options.json);
  EXPECT_DOUBLE_EQ(parsed.options.timeoutSeconds, 1.5);
  EXPECT_EQ(parsed.options.tpegsDir, "/t");
  EXPECT_EQ(parsed.options.eventsFile, "rec.txt");
  EXPECT_TRUE(parsed.options.SetsConfiguration());
  // "--" ends the options, "-" is standard input, -h and -V are short forms.
  EXPECT_EQ(Parse({"--batched", "--", "--odd-name"}).options.eventsFile, "--odd-name");
  EXPECT_EQ(Parse({"--batched", "-"}).options.eventsFile, "-");
  EXPECT_TRUE(Parse({"-h"}).options.help);
  EXPECT_TRUE(Parse({"-V"}).options.version);
  // --loop takes an optional count: 0 is endless, the default one pass.
  EXPECT_EQ(Parse({"rec.txt"}).options.passes, 1u);
  EXPECT_EQ(Parse({"--loop", "rec.txt"}).options.passes, 0u);
  EXPECT_EQ(Parse({"rec.txt", "--loop"}).options.passes, 0u);
  parsed = Parse({"--loop", "3", "rec.txt"});
  EXPECT_EQ(parsed.options.passes, 3u);
  EXPECT_EQ(parsed.options.eventsFile, "rec.txt");
  EXPECT_EQ(Parse({"--loop=2", "rec.txt"}).options.passes, 2u);
}

// One reading of a speed, in one unit, for --speed, --realtime and the
// control command; only what the module can play (whole percent from 1).
TEST(HostOptions, OneSpeedReadingForTheOptionsAndTheCommand) {
  const struct {
    const char* text;
    int32_t percent;  // 0: refused
  } cases[] = {
      {"2", 200},        {"2x", 200},     {"200%", 200},      {"0.5", 50},
      {"1.006", 101},    {".25", 25},     {"0.01", 1},        {"21474836.47", INT32_MAX},
      {"1%", 1},         {"0.001", 0},    {"0.004", 0},       {"1e9", 0},
      {"21474836.48", 0}, {"0x10", 0},    {"-1", 0},          {"+2", 0},
      {"2 x", 0},        {"", 0},         {"x", 0},           {"0", 0},
      {"inf", 0},        {"2.5.1", 0},    {"200%%", 0},       {"0.4%", 0},
  };
  for (const auto& test : cases) {
    int32_t percent = 0;
    EXPECT_EQ(SpeedText::Parse(test.text, &percent), test.percent != 0) << test.text;
    if (test.percent != 0) {
      EXPECT_EQ(percent, test.percent) << test.text;
    }
    const ControlCommand command = ControlCommand::FromLine(std::string("speed ") + test.text);
    EXPECT_EQ(command.kind == ControlCommand::kSpeed, test.percent != 0) << test.text;
    for (const char* option : {"--speed", "--realtime"}) {
      const Parsed parsed = Parse({option, test.text});
      EXPECT_EQ(parsed.ok, test.percent != 0) << option << " " << test.text;
      const double factor = parsed.options.speed + parsed.options.realtimeSpeed;
      if (parsed.ok) {
        EXPECT_DOUBLE_EQ(factor, test.percent / 100.0) << test.text;
      } else {
        EXPECT_NE(parsed.error.find("0.01 to 21474836.47"), std::string::npos) << parsed.error;
      }
    }
  }
}

TEST(HostControls, LinesBecomeCommands) {
  EXPECT_EQ(ControlCommand::FromLine("start").kind, ControlCommand::kStart);
  EXPECT_EQ(ControlCommand::FromLine("  STOP \r").kind, ControlCommand::kStop);
  EXPECT_EQ(ControlCommand::FromLine("quit").kind, ControlCommand::kQuit);
  EXPECT_EQ(ControlCommand::FromLine("").kind, ControlCommand::kNone);
  // The speed is a factor, as on the command line.
  const ControlCommand speed = ControlCommand::FromLine("speed  2.5");
  EXPECT_EQ(speed.kind, ControlCommand::kSpeed);
  EXPECT_EQ(speed.percent, 250);
  // Every problem is told the same way, with the commands there are.
  for (const char* bad : {"speed", "speed 0", "speed 12y", "start now", "jump", "\x1b]0;x\x07"}) {
    const ControlCommand command = ControlCommand::FromLine(bad);
    EXPECT_EQ(command.kind, ControlCommand::kInvalid) << bad;
    EXPECT_EQ(command.error.rfind("ignored: ", 0), 0u) << command.error;
    EXPECT_NE(command.error.find("(commands: start, stop, speed SPEED, quit)"), std::string::npos);
    EXPECT_EQ(command.error.find_first_of("\x1b\x07"), std::string::npos);  // nothing raw
  }
  // The arrow keys step the speed within its range.
  EXPECT_EQ(StepSpeed(100, true), 200);
  EXPECT_EQ(StepSpeed(100, false), 50);
  EXPECT_EQ(StepSpeed(1, false), 1);
  EXPECT_EQ(StepSpeed(2000000000, true), INT32_MAX);
}

std::vector<ControlCommand::Kind> FeedKeys(KeyDecoder& keys, const std::string& bytes,
                                           std::string* echo) {
  std::vector<ControlCommand::Kind> kinds;
  for (char byte : bytes) {
    const ControlCommand command = keys.Feed(static_cast<unsigned char>(byte), echo);
    if (command.kind != ControlCommand::kNone) kinds.push_back(command.kind);
  }
  return kinds;
}

TEST(HostControls, TerminalKeys) {
  KeyDecoder keys;
  std::string echo;
  using K = ControlCommand;
  EXPECT_EQ(FeedKeys(keys, " \x1b[A\x1b[D\x1bOB", &echo),
            (std::vector<ControlCommand::Kind>{K::kToggle, K::kFaster, K::kSlower, K::kSlower}));
  // A typed line: the blank inside it is text, backspace edits it.
  EXPECT_EQ(FeedKeys(keys,
                     "speex\x7f"
                     "d 300\r",
                     &echo),
            (std::vector<ControlCommand::Kind>{K::kSpeed}));
  EXPECT_NE(echo.find("speex"), std::string::npos);
  EXPECT_EQ(FeedKeys(keys, "\x04", &echo), (std::vector<ControlCommand::Kind>{K::kEndOfInput}));
  EXPECT_EQ(FeedKeys(keys, "q", &echo), (std::vector<ControlCommand::Kind>{K::kQuit}));
}

}  // namespace
}  // namespace PelorinHost
