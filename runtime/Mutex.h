#pragma once
// Mutex: a recursive lock over a heap-allocated POSIX mutex. The same thread
// may lock it any number of times and unlocks it as often. Built created;
// Destroy() frees the POSIX mutex early (a destroyed Mutex must not be used).
// Results of the POSIX calls are not examined. Use ScopedLock to hold it.

#include <pthread.h>

namespace Quillan {

class Mutex {
 public:
  Mutex() { Create(); }
  ~Mutex() { Destroy(); }
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  // Allocates the recursive POSIX mutex, if there is none.
  void Create();
  // Destroys and frees the POSIX mutex, if there is one.
  void Destroy();
  void Lock();
  void Unlock();

 private:
  pthread_mutex_t* m_mutex = nullptr;
};

}  // namespace Quillan
