#pragma once
// StopSignals: the one signal installer of both tools. SIGINT, SIGTERM,
// SIGHUP and SIGQUIT end a run promptly with status 128+N instead of killing
// it, and SIGPIPE is ignored so that a reader that went away shows up as
// EPIPE on write. The handler notes the first stop signal and calls the
// tool's `onStop` (which must be async-signal-safe); it is installed without
// SA_RESTART, so a blocked read or write returns at once, and once stopped
// SIGALRM, every second, catches a read or write that began just after the
// signal. Install once, from main(), before any other thread starts and
// before any output; Caught() may be asked from any thread.

#include <atomic>

namespace PelorinTools {

class StopSignals {
 public:
  static void Install(void (*onStop)(int number) = nullptr);
  // The first stop signal received, 0 while none.
  static int Caught() { return s_caught.load(); }

 private:
  static void OnSignal(int number);

  static std::atomic<int> s_caught;
  static std::atomic<void (*)(int)> s_onStop;
};

}  // namespace PelorinTools
