#pragma once
// The millisecond time base of the module: a 32-bit monotonic tick that wraps
// about every 49.7 days, so two ticks are only ever compared through their
// signed difference (TickDiff), never directly. Thread-safe.

#include <time.h>

#include <cstdint>

namespace Quillan {

// Milliseconds of CLOCK_MONOTONIC, truncated to 32 bits.
uint32_t GetTickMs();

// Sleeps ms milliseconds (as ms * 1000 microseconds, a 32-bit product).
void SleepMs(uint32_t ms);

// Signed distance from `from` to `to` in ms; correct across the wrap as long
// as the two are less than about 24.8 days apart.
inline int32_t TickDiff(uint32_t to, uint32_t from) {
  return static_cast<int32_t>(to - from);
}

// The absolute CLOCK_MONOTONIC deadline `ms` milliseconds after `now`, with
// the nanoseconds normalised below one second.
timespec DeadlineAfter(const timespec& now, uint32_t ms);

// DeadlineAfter the current CLOCK_MONOTONIC time.
timespec MonotonicDeadline(uint32_t ms);

}  // namespace Quillan
