#pragma once
// RunEnd: how a run of pelorin-host ended, gathered by the main thread, and
// the one place that turns it into the exit status. Its own statuses, in
// this order, come after the shared ones of PelorinTools::ExitStatus:
//   3    --timeout reached
//   5    an item differed from --expect FILE
//   1    playback ended before the end of the file
//   0    played to the end of the file (or quit)
// A value; main thread only.

namespace PelorinHost {

struct RunEnd {
  static constexpr int kPlayed = 0;
  static constexpr int kPlayedPart = 1;
  static constexpr int kTimedOut = 3;
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
