#pragma once
// Event: a sticky flag that threads wait for. Set() raises it and wakes one
// waiter; waiting does not lower it, only Reset() does. Timed waits use
// absolute CLOCK_MONOTONIC deadlines. Each Event has at most one waiter.

#include <pthread.h>

#include <cstdint>

namespace Quillan {

class Event {
 public:
  Event();
  ~Event();
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  void Set();
  void Reset();
  // Blocks until the flag is raised.
  void Wait();
  // Blocks until the flag is raised or `ms` milliseconds have passed;
  // returns whether the flag is raised.
  bool TimedWait(uint32_t ms);

 private:
  pthread_mutex_t m_mutex;
  pthread_cond_t m_condition;
  uint8_t m_flag = 0;
};

}  // namespace Quillan
