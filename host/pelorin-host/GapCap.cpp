#include "GapCap.h"

#include <cmath>
#include <cstdio>

namespace PelorinHost {

void GapCap::Restart() {
  m_started = false;
  m_skippedMs = 0;
}

int64_t GapCap::Next(double time) {
  const double gapMs = (time - m_last) * 1000.0;
  const bool first = !m_started;
  m_started = true;
  m_last = time;
  if (first || !Limits() || !(gapMs > static_cast<double>(m_limitMs))) return 0;
  const int64_t skipped = static_cast<int64_t>(std::llround(gapMs)) - m_limitMs;
  if (skipped <= 0) return 0;
  m_skippedMs += skipped;
  return skipped;
}

std::string GapCap::Played(double time) const {
  char text[64];
  std::snprintf(text, sizeof(text), "%.3f", time - static_cast<double>(m_skippedMs) / 1000.0);
  std::string played = text;
  while (played.back() == '0') played.pop_back();
  if (played.back() == '.') played.pop_back();
  return played;
}

}  // namespace PelorinHost
