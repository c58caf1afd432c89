#include "runtime/Mutex.h"

#include <new>

namespace Quillan {

void Mutex::Create() {
  if (m_mutex != nullptr) return;
  m_mutex = new (std::nothrow) pthread_mutex_t;
  if (m_mutex == nullptr) return;
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(m_mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

void Mutex::Destroy() {
  if (m_mutex == nullptr) return;
  pthread_mutex_destroy(m_mutex);
  delete m_mutex;
  m_mutex = nullptr;
}

void Mutex::Lock() { pthread_mutex_lock(m_mutex); }

void Mutex::Unlock() { pthread_mutex_unlock(m_mutex); }

}  // namespace Quillan
