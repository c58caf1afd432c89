#include "EndSignal.h"

#include <chrono>

namespace PelorinHost {

void EndSignal::Raise(Reason reason) {
  {
    std::lock_guard<std::mutex> guard(m_lock);
    m_reasons |= reason;
  }
  m_wake.notify_all();
}

uint32_t EndSignal::WaitFor(uint32_t ms) {
  std::unique_lock<std::mutex> lock(m_lock);
  // steady_clock: the wait is measured on the monotonic clock.
  m_wake.wait_for(lock, std::chrono::milliseconds(ms), [this] { return m_reasons != 0; });
  const uint32_t reasons = m_reasons;
  m_reasons = 0;
  return reasons;
}

}  // namespace PelorinHost
