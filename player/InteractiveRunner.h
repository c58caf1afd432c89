#pragma once
// InteractiveRunner: playback under the HMI's control. Records are replayed
// at their recorded spacing divided by a speed that may change at any time;
// playback can be stopped and started again, and replays from the start
// after the player rewinds the input. It reports a playback clock: a tick
// every 2.0 s of wall-clock time at the current record time, and the time
// stamp of each record when it is read ahead (next event).
// Ticks are counted on the wall clock, so they advance however coarse the
// record times are. What is due is decided in record time: a tick at a
// record's time stamp comes first, in the same step. Only where record
// times are too coarse to tell the two apart does the wall clock decide.
//
// Threads: steps run on the work loop's thread under m_lock; Start, Stop and
// SetSpeed come from host threads. Start and SetSpeed take m_lock and so wait
// for a running step; Stop only sets m_stopped (an atomic flag) and never
// waits. It takes effect when the next step begins: a step already running
// hands its record to every consumer, reports the next event and posts, and
// the next step stops. Owns its read-ahead record.
//
// One playback rule: Start after Stop always begins a new step chain at once
// and retires the old chain's queued step (cancelled, and dropped by its
// outdated generation should it run anyway). When Stop and Start come from
// a consumer or listener, the step running finishes its record but posts
// nothing, so one chain plays.

#include <atomic>
#include <cstdint>
#include <memory>

#include "player/Record.h"
#include "player/Runner.h"

namespace Quillan {

class InteractiveRunner : public Runner {
 public:
  // Without autostart the runner waits, stopped, for Start.
  explicit InteractiveRunner(bool autostart);
  ~InteractiveRunner() override;

  void Execute() override;
  // Back to "stopped, clock not started"; the speed is kept.
  void Reset() override;

  // Resumes a stopped runner where playback stood; no effect while running.
  void Start();
  // Stops playback when the next step begins; never waits for a step.
  void Stop();
  // 0 or less means 1.0. Keeps the wall-clock length of the part of the
  // tick interval that lies beyond the pending record.
  void SetSpeed(double speed);

 private:
  bool IsStopped() const;
  void SetStopped(bool stopped);
  // The record time at which this step stands: the earlier of the next tick
  // and the pending record.
  double CurrentTime() const;
  // Reads the next record ahead; false (after NotifyFinished) at the end.
  bool ReadAhead();
  // Posts the step for the next tick or record; `nowWall` is where this
  // step stood on the wall clock.
  void ScheduleNextStep(double now, double nowWall);

  // The tick clock: tick n comes `lead` + n tick intervals of wall-clock
  // time after record time `base`; m_nextTick is the record time of the
  // next one. Wall-clock times are seconds after the base.
  void RestartTickClock(double base, double lead);
  double TickWall() const;
  double EventWall() const;
  // Negative when the next tick is due first, positive when the pending
  // record is, 0 when they are due together.
  int CompareTickToEvent() const;
  // The wall-clock time of whichever of the two is due first: when the
  // next step runs.
  double NextDueWall() const;

  double m_speed = 1.0;
  const double m_tickInterval = 2.0;
  double m_nextTick = 0.0;
  double m_tickBase = 0.0;
  double m_tickLead = 0.0;
  uint64_t m_ticks = 0;
  double m_nextEvent = 0.0;
  // True while playback is stopped; any thread may read or set it.
  std::atomic<bool> m_stopped{true};
  std::unique_ptr<Record> m_pending;
};

}  // namespace Quillan
