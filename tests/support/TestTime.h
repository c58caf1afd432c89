#pragma once
// Time allowances for the few tests that check wall-clock behaviour. Under
// the sanitizers and qemu everything runs several times slower: the test
// presets set PELORIN_TIME_SCALE, and such tests widen their bounds by it.
// Their test suite names contain "WallClock".

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <thread>

namespace pelorin_test {

inline double TimeScale() {
  const char* text = std::getenv("PELORIN_TIME_SCALE");
  const double scale = text ? std::atof(text) : 1.0;
  return scale >= 1.0 ? scale : 1.0;
}

// `ms` scaled for the current configuration.
inline uint32_t ScaledMs(uint32_t ms) { return static_cast<uint32_t>(ms * TimeScale()); }

// Polls `condition` every millisecond; false when `timeoutMs` passed first.
inline bool WaitUntil(const std::function<bool()>& condition, uint32_t timeoutMs = ScaledMs(5000)) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

}  // namespace pelorin_test
