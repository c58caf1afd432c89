#include "LagMeter.h"

namespace PelorinHost {

void LagMeter::SetPaced(bool paced) {
  std::lock_guard<std::mutex> guard(m_lock);
  m_figures.paced = paced;
}

void LagMeter::SetSpeed(double factor) {
  std::lock_guard<std::mutex> guard(m_lock);
  if (factor > 0.0) m_speed = factor;
}

void LagMeter::Stopped(uint64_t micros) {
  std::lock_guard<std::mutex> guard(m_lock);
  if (m_stopped) return;
  m_stopped = true;
  m_stoppedAt = micros;
}

void LagMeter::Started(uint64_t micros) {
  std::lock_guard<std::mutex> guard(m_lock);
  if (!m_stopped) return;
  m_stopped = false;
  if (micros > m_stoppedAt) m_stoppedMicros += micros - m_stoppedAt;
}

void LagMeter::Item(uint32_t pass, double recordTime, uint64_t micros) {
  std::lock_guard<std::mutex> guard(m_lock);
  if (m_stopped && micros > m_stoppedAt) {
    // A step under way while stopped: the stop so far does not count.
    m_stoppedMicros += micros - m_stoppedAt;
    m_stoppedAt = micros;
  }
  if (m_hasLast && pass == m_lastPass && micros > m_lastMicros) {
    const double distance = recordTime > m_lastTime ? recordTime - m_lastTime : 0.0;
    const double late = static_cast<double>(micros - m_lastMicros) -
                        static_cast<double>(m_stoppedMicros) - distance * 1e6 / m_speed;
    const double lag = static_cast<double>(m_figures.lagMicros) + late;
    m_figures.lagMicros = lag > 0.0 ? static_cast<uint64_t>(lag) : 0;
  }
  m_hasLast = true;
  m_lastPass = pass;
  m_lastTime = recordTime;
  m_lastMicros = micros;
  m_stoppedMicros = 0;
}

void LagMeter::OnlineWait(uint64_t line, uint64_t micros) {
  std::lock_guard<std::mutex> guard(m_lock);
  if (micros <= m_figures.longestWaitMicros) return;
  m_figures.longestWaitMicros = micros;
  m_figures.longestWaitLine = line;
}

LagMeter::Figures LagMeter::Now() const {
  std::lock_guard<std::mutex> guard(m_lock);
  return m_figures;
}

}  // namespace PelorinHost
