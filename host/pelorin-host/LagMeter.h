#pragma once
// LagMeter: how far real-time and interactive playback is behind the
// recording's schedule at the current speed, and the longest wait on the
// online traffic service. The module paces each record from the one before,
// so what a step spends beyond its delay (the work loop, a wait for an
// online traffic answer) is never made up. The meter follows the record
// items: from one item of a pass to the next, playback falls behind by the
// wall time that passed while it was not stopped, less the recorded
// distance divided by the speed (nothing for a distance that is not
// positive); the lag sums that over the run and never goes below 0.
// Times are microseconds of HostClock, passed in by the callers.
// Threads: Item under the output's lock (the module's threads), SetSpeed
// from the data pool, Stopped/Started from the controls and the main
// thread, OnlineWait from the online traffic service, Now from any thread.
// Thread-safe; its lock is taken last and calls nothing.

#include <cstdint>
#include <mutex>

namespace PelorinHost {

class LagMeter {
 public:
  struct Figures {
    bool paced = false;  // real-time or interactive playback
    uint64_t lagMicros = 0;
    uint64_t longestWaitMicros = 0;  // 0 when no answer was waited for
    uint64_t longestWaitLine = 0;    // its record's line, 0 when not known
  };

  // Batched playback has no schedule: the lag stays unknown.
  void SetPaced(bool paced);
  // A factor of the recorded speed; 0 or less is ignored.
  void SetSpeed(double factor);
  void Stopped(uint64_t micros);
  void Started(uint64_t micros);
  // An item of the record at `recordTime` of `pass` left at `micros`.
  void Item(uint32_t pass, double recordTime, uint64_t micros);
  // An answer that playback waited for came `micros` after the call of the
  // record at `line` (0 when not known).
  void OnlineWait(uint64_t line, uint64_t micros);
  Figures Now() const;

 private:
  mutable std::mutex m_lock;
  Figures m_figures;
  double m_speed = 1.0;
  bool m_hasLast = false;
  uint32_t m_lastPass = 0;
  double m_lastTime = 0.0;
  uint64_t m_lastMicros = 0;
  bool m_stopped = false;
  uint64_t m_stoppedAt = 0;
  uint64_t m_stoppedMicros = 0;  // since the last item
};

}  // namespace PelorinHost
