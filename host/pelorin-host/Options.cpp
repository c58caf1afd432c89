#include "Options.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "host/common/ExitStatus.h"
#include "host/common/OptionParser.h"
#include "host/common/SpeedText.h"

namespace PelorinHost {

using PelorinTools::SpeedText;
namespace {

bool ParseDouble(const std::string& text, double* value) {
  if (text.empty() || text.find_first_not_of("0123456789.") != std::string::npos) return false;
  errno = 0;
  char* end = nullptr;
  const double parsed = std::strtod(text.c_str(), &end);
  if (errno != 0 || end == text.c_str() || *end != '\0' || !std::isfinite(parsed)) return false;
  *value = parsed;
  return true;
}

bool ParseInt(const std::string& text, long min, long max, long* value) {
  if (text.empty()) return false;
  errno = 0;
  char* end = nullptr;
  const long parsed = std::strtol(text.c_str(), &end, 10);
  if (errno != 0 || end == text.c_str() || *end != '\0' || parsed < min || parsed > max) {
    return false;
  }
  *value = parsed;
  return true;
}

// A pass count after --loop: digits, or a sign and digits (refused later).
bool LooksLikeCount(const std::string& text) {
  const size_t digit = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
  return text.size() > digit && text[digit] >= '0' && text[digit] <= '9';
}

using PelorinTools::OptionParser;
constexpr OptionParser::Kind kFlag = OptionParser::Kind::kFlag;
constexpr OptionParser::Kind kValue = OptionParser::Kind::kValue;

const OptionParser::Definition kOptions[] = {
    {"--batched", 0, kFlag},        {"--realtime", 0, kValue},    {"--interactive", 0, kFlag},
    {"--speed", 0, kValue},         {"--autostart", 0, kFlag},    {"--paused", 0, kFlag},
    {"--tpegs-dir", 0, kValue},     {"--control", 0, kFlag},      {"--tpeg-latency", 0, kValue},
    {"--tpeg-offline", 0, kFlag},   {"--json", 0, kFlag},         {"--trace", 0, kValue},
    {"--timeout", 0, kValue},       {"--module", 0, kValue},      {"--root", 0, kValue},
    {"--help", 'h', kFlag},         {"--version", 'V', kFlag},    {"--from", 0, kValue},
    {"--until", 0, kValue},         {"--only", 0, kValue},        {"--skip", 0, kValue},
    {"--loop", 0, OptionParser::Kind::kOptionalValue, &LooksLikeCount},
    {"--quiet", 0, kFlag},          {"--progress", 0, kFlag},     {"--expect", 0, kValue},
    {"--max-gap", 0, kValue},       {"--pause-at", 0, kValue},    {"--control-socket", 0, kValue},
    {"--no-state", 0, kFlag},
};

bool ApplyLoop(Options* options, bool given, const std::string& value, std::string* error) {
  options->loopGiven = true;
  options->passes = 0;
  if (!given) return true;
  long passes = 0;
  if (!ParseInt(value, 1, 1000000000, &passes)) {
    *error = "--loop needs a number of passes from 1, or nothing to play until stopped, not '" +
             value + "'";
    return false;
  }
  options->passes = static_cast<uint32_t>(passes);
  return true;
}

bool SetRunner(Options* options, RunnerChoice runner, const std::string& name, std::string* error) {
  if (options->runnerGiven && options->runner != runner) {
    *error = name + " conflicts with an earlier choice of --batched, --realtime or --interactive";
    return false;
  }
  options->runner = runner;
  options->runnerGiven = true;
  return true;
}

bool ParseSpeed(const std::string& name, const std::string& value, double* speed,
                std::string* error) {
  int32_t percent = 0;
  if (!SpeedText::Parse(value, &percent)) {
    *error = name + " needs " + SpeedText::Accepted() + ", not '" + value + "'";
    return false;
  }
  *speed = percent / 100.0;
  return true;
}

bool ApplyValue(Options* options, const std::string& name, const std::string& value,
                std::string* error) {
  double number = 0.0;
  long integer = 0;
  if (name == "--realtime") {
    if (!ParseSpeed(name, value, &options->realtimeSpeed, error)) return false;
    return SetRunner(options, RunnerChoice::kRealtime, name, error);
  }
  if (name == "--speed") {
    if (!ParseSpeed(name, value, &options->speed, error)) return false;
  } else if (name == "--tpegs-dir") {
    if (value.empty()) {
      *error = "--tpegs-dir needs a folder";
      return false;
    }
    options->tpegsDir = value;
  } else if (name == "--tpeg-latency") {
    if (!ParseInt(value, 0, 600000, &integer)) {
      *error = "--tpeg-latency needs milliseconds from 0 to 600000, not '" + value + "'";
      return false;
    }
    options->tpegLatencyMs = static_cast<uint32_t>(integer);
  } else if (name == "--trace") {
    if (!ParseInt(value, 0, 4, &integer)) {
      *error = "--trace needs a level from 0 to 4, not '" + value + "'";
      return false;
    }
    options->traceLevel = static_cast<int>(integer);
  } else if (name == "--timeout") {
    if (!ParseDouble(value, &number) || number <= 0.0 || number > 1.0e6) {
      *error = "--timeout needs seconds greater than 0, up to 1000000, not '" + value + "'";
      return false;
    }
    options->timeoutSeconds = number;
  } else if (name == "--control-socket") {
    if (value.empty()) {
      *error = "--control-socket needs the path of the socket to make";
      return false;
    }
    options->controlSocket = value;
  } else if (name == "--pause-at") {
    SelectionBound bound;
    if (!Selection::ParseBound("--pause-at", value, &bound, error)) return false;
    options->pauseAt.push_back(value);
  } else if (name == "--max-gap") {
    if (!ParseDouble(value, &number) || number < 0.001 || number > 1.0e6) {
      *error = "--max-gap needs seconds from 0.001 to 1000000, not '" + value + "'";
      return false;
    }
    options->maxGapSeconds = number;
  } else if (name == "--expect") {
    if (value.empty()) {
      *error = "--expect needs the file of an earlier --json run";
      return false;
    }
    options->expectFile = value;
  } else if (name == "--module") {
    options->modulePath = value;
  } else if (name == "--root") {
    options->rootDir = value;
  } else if (name == "--from") {
    return options->selection.SetFrom(value, error);
  } else if (name == "--until") {
    return options->selection.SetUntil(value, error);
  } else if (name == "--only") {
    return options->selection.SetOnly(value, error);
  } else if (name == "--skip") {
    return options->selection.SetSkip(value, error);
  }
  return true;
}

bool ApplyFlag(Options* options, const std::string& name, std::string* error) {
  if (name == "--batched") return SetRunner(options, RunnerChoice::kBatched, name, error);
  if (name == "--interactive") return SetRunner(options, RunnerChoice::kInteractive, name, error);
  if (name == "--autostart") options->autostart = true;
  if (name == "--paused") options->paused = true;
  if (name == "--control") options->control = true;
  if (name == "--tpeg-offline") options->tpegOffline = true;
  if (name == "--json") options->json = true;
  if (name == "--quiet") options->quiet = true;
  if (name == "--no-state") options->selection.SetState(false);
  if (name == "--progress") options->progress = true;
  if (name == "--help") options->help = true;
  if (name == "--version") options->version = true;
  return true;
}

// Combinations that cannot mean anything.
bool CheckCombinations(const Options& options, std::string* error) {
  const bool interactive = options.runner == RunnerChoice::kInteractive;
  if (!interactive && options.speed > 0.0) {
    *error = "--speed applies to interactive playback; use --realtime SPEED instead";
    return false;
  }
  if (!interactive && options.autostart) {
    *error = "--autostart applies to interactive playback only";
    return false;
  }
  if (!interactive && options.paused) {
    *error = "--paused applies to interactive playback only";
    return false;
  }
  if (options.runner == RunnerChoice::kBatched && options.maxGapSeconds > 0.0) {
    *error = "--max-gap applies to real-time and interactive playback; --batched has no gaps";
    return false;
  }
  if (!options.pauseAt.empty() && !interactive) {
    *error = "--pause-at applies to interactive playback only, not to --realtime or --batched";
    return false;
  }
  if (!options.pauseAt.empty() && !options.control && options.controlSocket.empty()) {
    *error = "--pause-at needs --control or --control-socket: \"start\" goes on after a pause";
    return false;
  }
  if (!options.rootDir.empty() && !options.eventsFile.empty()) {
    *error = "--root and an events file cannot be given together";
    return false;
  }
  if (options.eventsFile == "-" && options.control) {
    *error = "--control reads standard input, so the events cannot come from it ('-')";
    return false;
  }
  if (!options.rootDir.empty() &&
      (options.selection.Restricts() || options.loopGiven || options.maxGapSeconds > 0.0 ||
       !options.pauseAt.empty())) {
    *error = "--root plays DIR/quillan/Pelorin.cfg as it stands; --from, --until, --only, "
             "--skip, --loop, --max-gap and --pause-at need an events file";
    return false;
  }
  if (!options.selection.Check(error)) return false;
  if (options.quiet && options.progress) {
    *error = "--quiet and --progress cannot be given together";
    return false;
  }
  if (!options.rootDir.empty() && options.SetsConfiguration()) {
    *error = "--root plays DIR/quillan/Pelorin.cfg as it stands; playback options cannot be added";
    return false;
  }
  return true;
}

// Hands one option with its value to the setting it makes.
bool Apply(const OptionParser::Item& item, Options* options, std::string* error) {
  const std::string name = item.option->name;
  switch (item.option->kind) {
    case OptionParser::Kind::kFlag:
      return ApplyFlag(options, name, error);
    case OptionParser::Kind::kOptionalValue:
      return ApplyLoop(options, item.hasValue, item.value, error);
    case OptionParser::Kind::kValue:
      break;
  }
  return ApplyValue(options, name, item.value, error);
}

bool SetEventsFile(const std::string& operand, Options* options, std::string* error) {
  if (!options->eventsFile.empty()) {
    *error = "only one events file can be played, got '" + options->eventsFile + "' and '" +
             operand + "'";
    return false;
  }
  if (operand.empty()) {
    *error = "the events file name is empty";
    return false;
  }
  options->eventsFile = operand;
  return true;
}

}  // namespace

bool Options::SetsConfiguration() const {
  return runnerGiven || speed > 0.0 || autostart || !tpegsDir.empty();
}

bool ParseOptions(int argc, const char* const* argv, Options* options, std::string* error) {
  std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  OptionParser parser(kOptions, sizeof kOptions / sizeof kOptions[0], std::move(arguments));
  OptionParser::Item item;
  while (parser.Next(&item)) {
    const bool applied = item.option == nullptr ? SetEventsFile(item.value, options, error)
                                                : Apply(item, options, error);
    if (!applied) return false;
  }
  if (!parser.Error().empty()) {
    *error = parser.Error();
    return false;
  }
  if (options->help || options->version) return true;
  return CheckCombinations(*options, error);
}

std::string HelpText() {
  return R"(Usage: pelorin-host [OPTIONS] [--] [EVENTS | -]
       pelorin-host [OPTIONS] --root DIR

pelorin-host plays the head unit's part for the Pelorin module: it loads
libpelorin.so as the head unit does, serves its storage (/fs/sda0), its
events, data pool, traffic-data listeners and online traffic (TPEG)
service, and shows everything that leaves the module.

  EVENTS            play this events file, at any path ("-": standard
                    input). The host writes a private quillan/Pelorin.cfg
                    for it from the options below (in $TMPDIR, else /tmp)
                    and removes it at exit.
  --root DIR        use DIR as /fs/sda0: DIR/quillan/Pelorin.cfg decides how
                    to play (by default DIR/quillan/events). Nothing is
                    written into DIR.
  (neither)         play the bundled example recording.
  --                ends the options: what follows is the events file.

Playback (written into the private Pelorin.cfg):
  --interactive     under HMI control (the default); the host raises the
                    start event right after Run
  --batched         all records at once
  --realtime SPEED  at the recorded spacing divided by SPEED
  --speed SPEED     start speed of interactive playback
  --autostart       interactive playback starts without a start event
  --paused          do not raise the start event (start with --control)
  --tpegs-dir DIR   folder of the TPEG files that "setNewData" names
                    (default: the folder of EVENTS; for "-" or a pipe,
                    the working folder)
  SPEED is a factor of the recorded speed, 0.01 to 21474836.47, written as
  a plain decimal number: 2 or 2x is twice as fast, 200% the same; the
  module plays whole percents.

Part of a recording (EVENTS only; lines keep their numbers in the output):
  --from T          play the records whose time is T or later
  --until T         play the records whose time is T or earlier
                    T is a record time as in the file (1416131460.5),
                    +SECONDS after the first record's time, or @LINE
  --only TAGS       play only these tags, separated by commas (TMC,TOT or
                    $TMC,$TOT)
  --skip TAGS       play all but these tags
  --no-state        with --from, play no state: by default playback begins
                    with the head unit's state at T, the last $TSL and the
                    last of each $TOT call that sets the service's state
                    before T, at once; their items carry "state": true
  --loop [N]        play the selection N times, or until stopped without N;
                    items then carry the pass (1, 2, ...)
  --max-gap SECONDS play every gap between two records that is longer than
                    SECONDS as SECONDS (real-time and interactive playback):
                    a lunch break or a night goes by at once. Items keep
                    their recorded "recordTime"; the summary tells the time
                    skipped. The module's clock (dataPool 0x4d000000) runs
                    on the shortened times.

The head unit:
  --pause-at T      (repeatable; T as for --from) stop interactive playback
                    before the first record of the selection at T, +SECONDS
                    or @LINE, in every pass; standard error and a "paused"
                    item say so, and "start" (or space) goes on. Needs
                    --control or --control-socket. Records before it that
                    make no item play after the start.
  --control         steer playback from standard input, one command a line:
                      start | stop | speed SPEED | quit
                    On a terminal also single keys: space starts and stops,
                    q quits, up/right doubles the speed, down/left halves it.
                    The host then ends at "quit" or at the end of its input
                    (said on standard error), not at the end of playback;
                    "start" after the end plays the file again.
  --control-socket PATH
                    also listen on a Unix domain socket at PATH (mode 0600,
                    removed at exit; a stale socket there is replaced) for
                    programs that steer the run: one JSON object a line,
                    {"command": "start"}, "stop", "quit", "status", or
                    {"command": "speed", "value": "2x"}; each gets one JSON
                    line back: {"ok": true} (for status also "line",
                    "clock", "speed", "state", "lagSeconds") or {"ok":
                    false, "error": "..."}. Several clients may connect.
  --tpeg-latency MS the online traffic service answers after MS
                    milliseconds (default 10)
  --tpeg-offline    the online traffic service reports itself ready but
                    never answers a call, so playback blocks (its warnings
                    show with --trace 3)
  --timeout SECONDS shut down cleanly after SECONDS and exit with status 3
  --module PATH     load this module instead of the one installed or built
                    beside pelorin-host

Output (standard output):
  --json            JSON Lines: one object per item, with "t" (milliseconds
                    since the host started) and "type" (tmc, serviceList,
                    onlineTraffic, dataPool, event, trace, finished); items
                    that a record produced also carry "line" and
                    "recordTime" of the record (not with --root)
  --trace LEVEL     also show the module's trace messages of LEVEL and above
                    (2 progress, 3 warnings, 4 failures)
  --expect FILE     compare the traffic items (tmc, serviceList,
                    onlineTraffic) with those of FILE, the output of an
                    earlier --json run, leaving out "t"; the run ends at the
                    first difference, which standard error shows with the
                    line of the recording (exit status 5). A file made with
                    other options is compared only on what both runs have,
                    and standard error says what was left out.
  -h, --help        this text
  -V, --version     the version

Standard error:
  --quiet           no status line and no summary at the end
  --progress        the status line also when standard error is not a
                    terminal: one plain line a second

On a terminal, playback keeps a status line on standard error: the line
of the events file reached, the playback clock (UTC), the speed and, for
real-time and interactive playback, the time left at that speed and how far
playback is behind the recording's schedule (time spent in the work loop
and in waits on the online traffic service is never made up). At the end
a summary follows: records dispatched per tag, records dropped, where and
why playback stopped short, wall time, mean speed, the lag at the end and
the longest wait on the online traffic service, with its line.
Once the run is to end (end of playback, quit, --timeout, a signal), nothing
more from the module is shown, nor counted in the summary, but its trace
messages (--trace), which tell of its shutdown.

Exit status:
  0    played to the end of the file, or quit (an empty recording or one
       with nothing to play is said on standard error)
  1    playback ended before the end of the file (a malformed line, a read
       error, binary data): standard error names the line and the reason
  3    --timeout reached
  5    an item differed from --expect FILE, or one was missing or extra
)" + PelorinTools::ExitStatus::HelpText(
             "a bad option or value, an events file that is\n"
             "       missing, a directory or unreadable, a module that does not load") +
         "Of the others, 3 outranks 5 and 5 outranks 1.\n" + R"(
Examples:
  pelorin-host
      play the bundled example
  pelorin-host --batched --json recording.txt > out.jsonl
      play a recording all at once and keep everything it produced
  pelorin-host --realtime 4 --trace 3 recording.txt
      play four times faster than recorded, with warnings
  pelorin-host --control --paused --speed 2 recording.txt
      wait for "start" on standard input, then play at twice the speed
  pelorin-host --root /media/usb/sda0 --timeout 60
      play a head unit's storage folder as it would, for at most a minute
  pelorin-host --realtime 1 --from +60 --until +120 --only TMC --loop rec.txt
      play the TMC messages of the recording's second minute over and over
  pelorin-host --batched --json rec.txt > rec.jsonl
  pelorin-host --batched --expect rec.jsonl rec.txt
      keep a run's items, then check that later runs still make them
  pelorin-host --realtime 1 --max-gap 5 day.txt
      play a day's recording at its pace, but no gap longer than 5 seconds
  pelorin-host --tpeg-offline --trace 3 --timeout 20 recording.txt
      watch playback block on an online traffic service that never answers
)";
}

}  // namespace PelorinHost
