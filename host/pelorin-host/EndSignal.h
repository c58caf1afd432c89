#pragma once
// EndSignal: how the module's threads, the trace sink and the controls tell
// the main thread that something happened that it must act on (playback
// finished, quit, end of the control input, an item
// that differs from the one expected). They only raise flags here; the
// main thread does the shutting down. Thread-safe; Raise never blocks for
// long and never calls anything else.

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace PelorinHost {

class EndSignal {
 public:
  enum Reason : uint32_t {
    kFinished = 1u << 0,    // the module reported the end of playback
    kQuit = 1u << 1,        // "quit" on the control input
    kInputEnded = 1u << 2,  // the control input reached its end
    kMismatch = 1u << 3,    // an item differs from --expect FILE
  };

  void Raise(Reason reason);
  // Waits until a reason is raised or `ms` pass; returns and clears the
  // reasons raised since the last call (0 when none).
  uint32_t WaitFor(uint32_t ms);

 private:
  std::mutex m_lock;
  std::condition_variable m_wake;
  uint32_t m_reasons = 0;
};

}  // namespace PelorinHost
