#include "player/InteractiveRunner.h"

#include "runtime/ScopedLock.h"
#include "runtime/Trace.h"

namespace Quillan {

InteractiveRunner::InteractiveRunner(bool autostart) : m_pending(new Record()) {
  SetStopped(!autostart);
  PELORIN_TRACE(2, "InteractiveRunner::InteractiveRunner, m_stopped=", IsStopped());
}

InteractiveRunner::~InteractiveRunner() = default;

bool InteractiveRunner::IsStopped() const { return IsPaused(); }

void InteractiveRunner::SetStopped(bool stopped) { SetPaused(stopped); }

void InteractiveRunner::Reset() {
  m_nextEvent = 0.0;
  m_nextTick = 0.0;
  Runner::Reset();
  SetStopped(true);
}

void InteractiveRunner::Start() {
  PELORIN_TRACE(2, "InteractiveRunner::Start");
  ScopedLock lock(m_lock);
  if (!IsStopped()) return;
  if (m_loop == nullptr) {
    PELORIN_TRACE(4, "Loop is null!!! ");
    return;
  }
  SetStopped(false);
  // A loop that refuses the step is going down: nothing plays, so say so.
  if (!BeginChain()) SetStopped(true);
}

void InteractiveRunner::Stop() {
  PELORIN_TRACE(2, "InteractiveRunner::Stop");
  SetStopped(true);
}

void InteractiveRunner::SetSpeed(double speed) {
  PELORIN_TRACE(2, "InteractiveRunner::SetSpeed: ", speed);
  const double newSpeed = speed > 0.0 ? speed : 1.0;
  ScopedLock lock(m_lock);
  if (m_nextTick > m_nextEvent) {
    m_nextTick = m_nextEvent + (m_nextTick - m_nextEvent) / m_speed * newSpeed;
  }
  m_speed = newSpeed;
}

double InteractiveRunner::CurrentTime() const {
  return m_nextTick < m_nextEvent ? m_nextTick : m_nextEvent;
}

void InteractiveRunner::Execute() {
  PELORIN_TRACE(2, "InteractiveRunner::Execute");
  ScopedLock lock(m_lock);
  if (IsStopped()) {
    PELORIN_TRACE(2, "InteractiveRunner::Execute: stopping");
    return;
  }
  const double now = CurrentTime();
  bool recordDue = true;
  if (now > 0.0) {
    if (now >= m_nextTick) {
      NotifyTick(now);
      m_nextTick += m_tickInterval * m_speed;
    }
    recordDue = now >= m_nextEvent;
    if (recordDue && !DispatchRecord(*m_pending)) return;
  }
  // Without a started clock the pending record (if any) is not dispatched.
  if (recordDue && !ReadAhead()) return;
  // The tick clock starts at the first record read.
  if (!(now > 0.0)) m_nextTick = m_nextEvent;
  ScheduleNextStep(now);
}

bool InteractiveRunner::ReadAhead() {
  if (ReadNextRecord(*m_pending) != ReadStatus::kRecord) {
    NotifyFinished();
    return false;
  }
  m_nextEvent = m_pending->time;
  NotifyNextEvent(m_nextEvent);
  return true;
}

void InteractiveRunner::ScheduleNextStep(double now) {
  double delay = 0.0;
  uint32_t delayMs = 0;
  if (now > 0.0) {
    delay = (CurrentTime() - now) / m_speed;
    delayMs = DelayMs(delay);
  }
  PELORIN_TRACE(2, "InteractiveRunner::Execute: delay to next event ", delay);
  PostStep(delayMs);
}

}  // namespace Quillan
