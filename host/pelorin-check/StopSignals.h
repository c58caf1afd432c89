#pragma once
// StopSignals: lets SIGINT, SIGTERM, SIGHUP and SIGQUIT end a check run
// promptly with status 128+N instead of killing it, and ignores SIGPIPE so
// that a reader that went away shows up as EPIPE on write. The handler only
// notes the signal; it is installed without SA_RESTART, so a blocked read or
// write returns at once and the checker, which asks Caught() at every line,
// stops; SIGALRM, every second once stopped, catches a read that began just
// after the signal. Install once, from main(), before any output; process-wide.

#include <csignal>

namespace PelorinCheck {

class StopSignals {
 public:
  static void Install();
  // The first stop signal received, 0 while none.
  static int Caught() { return s_caught; }

 private:
  static void OnSignal(int number);

  static volatile std::sig_atomic_t s_caught;
};

}  // namespace PelorinCheck
