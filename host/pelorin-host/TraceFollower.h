#pragma once
// TraceFollower: the host's trace sink. The host keeps the module's
// "Pelorin" channel at level 2 (progress) whatever it shows, because it
// follows a few of the module's messages:
// - "Runner::NotifyFinished": playback reached its end; reported as a
//   "finished" item and raised on the EndSignal for the main thread;
// - "DataPlayer: using ..." : which runner the module chose, and its speed;
// - failures (level 4), remembered to name the cause when playback cannot
//   start (the first one names the cause).
// With --trace LEVEL the messages of LEVEL and above of both channels also
// become "trace" items. The sink runs on whichever thread logs, under the
// platform's sink lock: it never logs and never calls into the module.

#include <atomic>
#include <mutex>
#include <string>

namespace PelorinHost {

class EndSignal;
class Reporter;

enum class RunnerKind { kUnknown, kInteractive, kRealtime, kBatched };

class TraceFollower {
 public:
  // `showLevel` -1 shows no trace items.
  TraceFollower(Reporter& reporter, EndSignal& endSignal, int showLevel);
  ~TraceFollower();
  TraceFollower(const TraceFollower&) = delete;
  TraceFollower& operator=(const TraceFollower&) = delete;

  // Sets the channel thresholds and installs the sink; Remove takes it away.
  void Install();
  void Remove();

  RunnerKind Runner() const { return m_runner.load(); }
  // The speed the module's runner was created with (0 when not told).
  double RunnerSpeed() const;
  // The first level-4 message of the module since ClearFailures, empty when
  // none.
  std::string FirstFailure() const;
  void ClearFailures();
  // How many times playback has finished.
  uint32_t FinishedCount() const { return m_finished.load(); }

  // Reads a "DataPlayer: using ..." message; false when `text` is another.
  static bool ParseRunnerChoice(const char* text, RunnerKind* kind, double* speed);

 private:
  static void Sink(void* context, const char* channel, int level, const char* text);
  void OnMessage(const char* channel, int level, const char* text);

  Reporter& m_reporter;
  EndSignal& m_endSignal;
  const int m_showLevel;
  bool m_installed = false;
  std::atomic<RunnerKind> m_runner{RunnerKind::kUnknown};
  std::atomic<uint32_t> m_finished{0};
  mutable std::mutex m_lock;
  double m_runnerSpeed = 0.0;
  std::string m_firstFailure;
};

}  // namespace PelorinHost
