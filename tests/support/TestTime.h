#pragma once
// Time allowances for the few tests that check wall-clock behaviour. Under
// the sanitizers and qemu everything runs several times slower: the test
// presets set PELORIN_TIME_SCALE, and such tests widen their bounds by it.
// Their test suite names contain "WallClock".

#include <cstdint>
#include <cstdlib>

namespace pelorin_test {

inline double TimeScale() {
  const char* text = std::getenv("PELORIN_TIME_SCALE");
  const double scale = text ? std::atof(text) : 1.0;
  return scale >= 1.0 ? scale : 1.0;
}

// `ms` scaled for the current configuration.
inline uint32_t ScaledMs(uint32_t ms) { return static_cast<uint32_t>(ms * TimeScale()); }

}  // namespace pelorin_test
