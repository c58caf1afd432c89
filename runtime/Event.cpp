#include "runtime/Event.h"

#include <errno.h>
#include <time.h>

#include "runtime/TimeBase.h"

namespace Quillan {

Event::Event() {
  pthread_mutex_init(&m_mutex, nullptr);
  pthread_condattr_t attributes;
  pthread_condattr_init(&attributes);
  pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
  pthread_cond_init(&m_condition, &attributes);
  pthread_condattr_destroy(&attributes);
}

Event::~Event() {
  pthread_cond_destroy(&m_condition);
  pthread_mutex_destroy(&m_mutex);
}

void Event::Set() {
  pthread_mutex_lock(&m_mutex);
  m_flag = 1;
  pthread_cond_signal(&m_condition);
  pthread_mutex_unlock(&m_mutex);
}

void Event::Reset() {
  pthread_mutex_lock(&m_mutex);
  m_flag = 0;
  pthread_mutex_unlock(&m_mutex);
}

void Event::Wait() {
  pthread_mutex_lock(&m_mutex);
  while (m_flag != 1) pthread_cond_wait(&m_condition, &m_mutex);
  pthread_mutex_unlock(&m_mutex);
}

bool Event::TimedWait(uint32_t ms) {
  const timespec deadline = MonotonicDeadline(ms);
  pthread_mutex_lock(&m_mutex);
  while (m_flag != 1) {
    if (pthread_cond_timedwait(&m_condition, &m_mutex, &deadline) == ETIMEDOUT) break;
  }
  const bool raised = m_flag == 1;
  pthread_mutex_unlock(&m_mutex);
  return raised;
}

}  // namespace Quillan
