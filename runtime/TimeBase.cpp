#include "runtime/TimeBase.h"

#include <cerrno>

namespace Quillan {

uint32_t GetTickMs() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  const uint32_t seconds = static_cast<uint32_t>(now.tv_sec);
  return seconds * 1000u + static_cast<uint32_t>(now.tv_nsec / 1000000);
}

void SleepMs(uint32_t ms) {
  // POSIX.1-2008 has no usleep: the same 32-bit product of microseconds,
  // slept with nanosleep, and slept on after a signal.
  const uint32_t microseconds = ms * 1000u;
  timespec left{static_cast<time_t>(microseconds / 1000000u),
                static_cast<long>(microseconds % 1000000u) * 1000L};
  while (nanosleep(&left, &left) != 0 && errno == EINTR) {
  }
}

timespec DeadlineAfter(const timespec& now, uint32_t ms) {
  timespec deadline = now;
  deadline.tv_sec += static_cast<time_t>(ms / 1000u);
  deadline.tv_nsec += static_cast<long>(ms % 1000u) * 1000000L;
  if (deadline.tv_nsec > 999999999L) {
    deadline.tv_sec += 1;
    deadline.tv_nsec -= 1000000000L;
  }
  return deadline;
}

timespec MonotonicDeadline(uint32_t ms) {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return DeadlineAfter(now, ms);
}

}  // namespace Quillan
