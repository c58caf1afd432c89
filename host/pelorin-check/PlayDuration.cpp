#include "host/pelorin-check/PlayDuration.h"

namespace PelorinCheck {

void PlayDuration::AddRecord(double time) {
  if (m_hasPrevious) m_totalMs += DelayMs(m_previous, time, m_speed);
  m_previous = time;
  m_hasPrevious = true;
}

uint32_t PlayDuration::DelayMs(double previous, double time, double speed) {
  if (!(previous > 0.0)) return 0;
  const double ms = (time - previous) / speed * 1000.0 + 0.5;
  if (!(ms > 0.0)) return 0;
  if (ms >= 4294967296.0) return UINT32_MAX;
  return static_cast<uint32_t>(ms);
}

}  // namespace PelorinCheck
