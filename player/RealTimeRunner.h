#pragma once
// RealTimeRunner: replays the events file with the recorded spacing between
// records divided by a fixed speed. Each step dispatches the record the
// previous step read ahead, reads the next one and posts the next step after
// their distance in record time, divided by the speed. Delays are measured
// from each posting, so lag accumulates and is never corrected. Cannot be
// paused, re-timed or restarted. Created by the player only for a speed
// above 0 (the speed is not checked here). Steps run on the work loop's
// thread under the runner's lock; owns its read-ahead record.

#include <memory>

#include "player/Record.h"
#include "player/Runner.h"

namespace Quillan {

class RealTimeRunner : public Runner {
 public:
  explicit RealTimeRunner(double speed);
  ~RealTimeRunner() override;

  void Execute() override;
  // Also drops a record still pending, undispatched.
  void Reset() override;

  // Delay before the step that dispatches a record at `next`, after one at
  // `previous`, at `speed`; 0 when `previous` is not a positive time. Also
  // for tools that tell how long a recording plays.
  static uint32_t DelayBetween(double previous, double next, double speed);

 private:
  double m_speed;
  // kRecord while m_pending holds a record not yet dispatched; 1 while
  // nothing is pending; the failing status once the input has ended.
  ReadStatus m_lastStatus = static_cast<ReadStatus>(1);
  std::unique_ptr<Record> m_pending;
};

}  // namespace Quillan
