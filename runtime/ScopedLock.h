#pragma once
// ScopedLock: holds a Mutex for the lifetime of a scope.

#include "runtime/Mutex.h"

namespace Quillan {

class ScopedLock {
 public:
  explicit ScopedLock(Mutex& mutex) : m_mutex(mutex) { m_mutex.Lock(); }
  ~ScopedLock() { m_mutex.Unlock(); }
  ScopedLock(const ScopedLock&) = delete;
  ScopedLock& operator=(const ScopedLock&) = delete;

 private:
  Mutex& m_mutex;
};

}  // namespace Quillan
