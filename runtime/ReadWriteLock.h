#pragma once
// ReadWriteLock: a re-entrant, writer-preferring reader/writer lock. A thread
// may nest reads, nest writes, read while it writes and upgrade a read to a
// write. Once a writer has begun, threads that hold nothing wait to read
// until no writer is left. Waits re-check every 100 ms (readers) and 250 ms
// (writers) on the monotonic clock, so a missed wake-up never blocks for
// good. Callable from any thread; must be idle when destroyed.

#include <pthread.h>

#include <cstdint>
#include <map>

#include "runtime/Mutex.h"

namespace Quillan {

class ReadWriteLock {
 public:
  ReadWriteLock();
  ~ReadWriteLock();
  ReadWriteLock(const ReadWriteLock&) = delete;
  ReadWriteLock& operator=(const ReadWriteLock&) = delete;

  void LockRead();
  void UnlockRead();
  void LockWrite();
  void UnlockWrite();

 private:
  struct Holds {
    uint16_t reads = 0;
    uint16_t writes = 0;
  };

  pthread_cond_t* m_readersCond = nullptr;
  pthread_cond_t* m_writersCond = nullptr;
  int32_t m_waitingWriters = 0;
  int32_t m_activeReaders = 0;
  uint32_t m_owner = 0xFFFFFFFFu;
  Mutex m_stateLock;
  Mutex m_writeLock;
  pthread_mutex_t m_waitMutex;
  std::map<pthread_t, Holds> m_holds;
  Mutex m_holdsLock;
};

}  // namespace Quillan
