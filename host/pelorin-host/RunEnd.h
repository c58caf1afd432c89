#pragma once
// RunEnd: how a run of pelorin-host ended, gathered by the main thread, and
// the one place that turns it into the exit status:
//   0    played to the end of the file (or quit)
//   1    playback ended before the end of the file
//   2    unusable input or usage
//   3    --timeout reached
//   4    a write to standard output failed
//   5    an item differed from --expect FILE
//   141  the reader of standard output went away (128 + SIGPIPE)
//   128+N  signal N (130 SIGINT, 129 SIGHUP, 131 SIGQUIT, 143 SIGTERM)
// A value; main thread only.

namespace PelorinHost {

struct RunEnd {
  static constexpr int kPlayed = 0;
  static constexpr int kPlayedPart = 1;
  static constexpr int kUnusable = 2;
  static constexpr int kTimedOut = 3;
  static constexpr int kWriteFailed = 4;
  static constexpr int kMismatch = 5;

  bool unusable = false;
  bool timedOut = false;
  int signal = 0;          // the signal that ended the run, 0 when none
  int writeError = 0;      // errno of the failed write of standard output
  bool playedPart = false;  // playback finished before the end of the file
  bool mismatch = false;    // an item differed from --expect FILE

  int ExitStatus() const;
};

}  // namespace PelorinHost
