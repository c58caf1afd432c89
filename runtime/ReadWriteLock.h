#pragma once
// ReadWriteLock: a re-entrant, writer-preferring reader/writer lock. A thread
// may nest reads, nest writes, read while it writes and upgrade a read to a
// write. Once a writer has begun, threads that hold nothing wait to read
// until no writer is left. Waits re-check every 100 ms (readers) and 250 ms
// (writers) on the monotonic clock, so a missed wake-up never blocks for
// good. Callable from any thread; must be idle when destroyed.
// Overlapping upgrades go in the order begun: the later upgrader only waits,
// its reads set aside, until the earlier one has released write access; what
// it read before may have changed by the time it writes.

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
  // Tests read the counters through it to know when a writer is waiting.
  friend class ReadWriteLockProbe;

  struct Holds {
    uint16_t reads = 0;
    uint16_t writes = 0;
  };

  // The hold table, each access under m_holdsLock. HoldsOf reads (zeros for
  // a thread without entry); the setters create the entry when absent.
  Holds HoldsOf(pthread_t thread);
  void SetReads(pthread_t thread, uint16_t reads);
  void AddReads(pthread_t thread, int delta);
  void AddWrites(pthread_t thread, int delta);
  void EraseHolds(pthread_t thread);

  // One bounded wait on `condition` under m_waitMutex; the caller re-checks.
  void WaitOn(pthread_cond_t* condition, uint32_t ms);
  void Broadcast(pthread_cond_t* condition);
  // Whether `thread` is the write owner (callers hold m_stateLock).
  bool IsOwner(pthread_t thread) const;
  // Under m_stateLock: whether `thread`, holding `reads` reads, may take
  // write access now. The first of overlapping upgraders is noted and goes
  // before every other writer.
  bool MayWrite(pthread_t thread, uint16_t reads);

  pthread_cond_t* m_readersCond = nullptr;
  pthread_cond_t* m_writersCond = nullptr;
  int32_t m_waitingWriters = 0;
  int32_t m_activeReaders = 0;
  uint32_t m_owner = 0xFFFFFFFFu;
  uint32_t m_upgrader = 0xFFFFFFFFu;
  Mutex m_stateLock;
  Mutex m_writeLock;
  pthread_mutex_t m_waitMutex;
  std::map<pthread_t, Holds> m_holds;
  Mutex m_holdsLock;
};

}  // namespace Quillan
