#pragma once
// HostClock: microseconds on the monotonic clock since the host started, the
// "t" of every output item. Start is called once by main before any thread
// exists; Micros may then be called from any thread.

#include <cstdint>
#include <ctime>

namespace PelorinHost {

class HostClock {
 public:
  static void Start() { s_startMicros = NowMicros(); }
  static uint64_t Micros() { return NowMicros() - s_startMicros; }

 private:
  static uint64_t NowMicros() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1000000u +
           static_cast<uint64_t>(now.tv_nsec) / 1000u;
  }

  static inline uint64_t s_startMicros = 0;
};

}  // namespace PelorinHost
