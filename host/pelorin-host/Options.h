#pragma once
// Options: pelorin-host's command line, parsed into plain settings.
// ParseOptions never exits or prints: it reports the first problem as a
// one-line text, which main turns into exit status 2. HelpText documents
// every option with examples. Used on the main thread only.

#include <cstdint>
#include <string>
#include <vector>

#include "host/recording/Selection.h"

namespace PelorinHost {

using PelorinRecording::Selection;
using PelorinRecording::SelectionBound;

enum class RunnerChoice { kInteractive, kBatched, kRealtime };

struct Options {
  // Playback, written into the private storage root's Pelorin.cfg.
  RunnerChoice runner = RunnerChoice::kInteractive;
  bool runnerGiven = false;    // one of --batched, --realtime, --interactive
  double realtimeSpeed = 0.0;  // --realtime SPEED
  double speed = 0.0;          // --speed FACTOR (0: not given)
  bool autostart = false;
  std::string tpegsDir;
  std::string controlSocket;  // --control-socket PATH
  std::vector<std::string> pauseAt;  // --pause-at bounds, as given
  double maxGapSeconds = 0.0;  // --max-gap: longer gaps play as this (0: as recorded)

  // What the head unit does.
  bool paused = false;
  bool control = false;
  uint32_t tpegLatencyMs = 10;
  bool tpegOffline = false;
  double timeoutSeconds = 0.0;  // 0: no time limit

  // What of the recording it plays, and how often (0: until stopped).
  Selection selection;
  uint32_t passes = 1;
  bool loopGiven = false;

  // What it shows.
  bool json = false;
  int traceLevel = -1;  // -1: no trace lines
  bool quiet = false;     // no status line, no summary
  bool progress = false;  // the status line also when not on a terminal
  std::string expectFile;  // --expect: the traffic items are compared with it

  // Where things are.
  std::string modulePath;
  std::string rootDir;
  std::string eventsFile;

  bool help = false;
  bool version = false;

  // True when an option was given that goes into Pelorin.cfg.
  bool SetsConfiguration() const;
};

// Parses argv[1..argc-1]. False with `error` set (one line, no trailing
// period, naming the option) when the command line cannot be used.
bool ParseOptions(int argc, const char* const* argv, Options* options, std::string* error);

// The text printed by --help.
std::string HelpText();

}  // namespace PelorinHost
