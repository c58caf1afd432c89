#include "host/pelorin-check/PlayDuration.h"

#include "player/RealTimeRunner.h"

namespace PelorinCheck {

void PlayDuration::AddRecord(double time) {
  if (m_hasPrevious) m_totalMs += Quillan::RealTimeRunner::DelayBetween(m_previous, time, m_speed);
  m_previous = time;
  m_hasPrevious = true;
}

}  // namespace PelorinCheck
