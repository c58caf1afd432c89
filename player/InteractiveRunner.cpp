#include "player/InteractiveRunner.h"

#include "runtime/ScopedLock.h"
#include "runtime/Trace.h"

namespace Quillan {
namespace {

// The loop waits in whole milliseconds: a tick and a record closer than half
// of one on the wall clock fall into the same step.
constexpr double kSameStepSeconds = 0.0005;

}  // namespace

InteractiveRunner::InteractiveRunner(bool autostart) : m_pending(new Record()) {
  SetStopped(!autostart);
  PELORIN_TRACE(2, "InteractiveRunner::InteractiveRunner, m_stopped=", IsStopped());
}

InteractiveRunner::~InteractiveRunner() = default;

bool InteractiveRunner::IsStopped() const { return m_stopped.load(std::memory_order_acquire); }

void InteractiveRunner::SetStopped(bool stopped) {
  m_stopped.store(stopped, std::memory_order_release);
}

void InteractiveRunner::Reset() {
  m_nextEvent = 0.0;
  RestartTickClock(0.0, 0.0);
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
  // The clock restarts at the pending record when the next tick lies beyond
  // it (keeping the wall-clock time between them), else at the next tick.
  if (CompareTickToEvent() > 0) {
    const double lead = TickWall() - EventWall();
    m_speed = newSpeed;
    RestartTickClock(m_nextEvent, lead);
  } else {
    m_speed = newSpeed;
    RestartTickClock(m_nextTick, 0.0);
  }
}

void InteractiveRunner::RestartTickClock(double base, double lead) {
  m_tickBase = base;
  m_tickLead = lead;
  m_ticks = 0;
  m_nextTick = base + lead * m_speed;
}

double InteractiveRunner::TickWall() const {
  return m_tickLead + static_cast<double>(m_ticks) * m_tickInterval;
}

double InteractiveRunner::EventWall() const { return (m_nextEvent - m_tickBase) / m_speed; }

int InteractiveRunner::CompareTickToEvent() const {
  if (m_nextTick != m_nextEvent) return m_nextTick < m_nextEvent ? -1 : 1;
  // At one record time the wall clock tells them apart where record times
  // are too coarse to; closer than a step of the loop they are due together.
  const double apart = TickWall() - EventWall();
  if (apart < -kSameStepSeconds) return -1;
  return apart > kSameStepSeconds ? 1 : 0;
}

double InteractiveRunner::NextDueWall() const {
  const int order = CompareTickToEvent();
  const double tick = TickWall();
  const double event = EventWall();
  if (order == 0) return tick < event ? tick : event;
  return order < 0 ? tick : event;
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
  double nowWall = 0.0;
  bool recordDue = true;
  if (now > 0.0) {
    nowWall = NextDueWall();
    const int order = CompareTickToEvent();
    if (order <= 0) {
      NotifyTick(m_nextTick);
      ++m_ticks;
      m_nextTick = m_tickBase + TickWall() * m_speed;
    }
    recordDue = order >= 0;
    // Only a shut-down cuts the dispatch short; a stop waits for the next step.
    if (recordDue && !DispatchRecord(*m_pending)) return;
  }
  // Without a started clock the pending record (if any) is not dispatched.
  if (recordDue && !ReadAhead()) return;
  // The tick clock starts at the first record read.
  if (!(now > 0.0)) RestartTickClock(m_nextEvent, 0.0);
  ScheduleNextStep(now, nowWall);
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

void InteractiveRunner::ScheduleNextStep(double now, double nowWall) {
  double delay = 0.0;
  uint32_t delayMs = 0;
  if (now > 0.0) {
    delay = NextDueWall() - nowWall;
    delayMs = DelayMs(delay);
  }
  PELORIN_TRACE(2, "InteractiveRunner::Execute: delay to next event ", delay);
  PostStep(delayMs);
}

}  // namespace Quillan
