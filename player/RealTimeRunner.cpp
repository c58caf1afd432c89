#include "player/RealTimeRunner.h"

#include "runtime/ScopedLock.h"
#include "runtime/Trace.h"

namespace Quillan {

RealTimeRunner::RealTimeRunner(double speed) : m_speed(speed), m_pending(new Record()) {}

RealTimeRunner::~RealTimeRunner() = default;

void RealTimeRunner::Reset() {
  Runner::Reset();
  m_lastStatus = static_cast<ReadStatus>(1);
}

void RealTimeRunner::Execute() {
  PELORIN_TRACE(2, "RealTimeRunner::Execute");
  ScopedLock lock(m_lock);
  double previous = 0.0;
  if (m_lastStatus == ReadStatus::kRecord) {
    if (!DispatchRecord(*m_pending)) return;
    previous = m_pending->time;
  }
  m_lastStatus = ReadNextRecord(*m_pending);
  if (m_lastStatus != ReadStatus::kRecord) {
    NotifyFinished();
    return;
  }
  PostStep(DelayBetween(previous, m_pending->time, m_speed));
}

uint32_t RealTimeRunner::DelayBetween(double previous, double next, double speed) {
  if (!(previous > 0.0)) return 0u;
  return DelayMs((next - previous) / speed);
}

}  // namespace Quillan
