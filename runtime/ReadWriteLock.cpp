#include "runtime/ReadWriteLock.h"

#include <new>

#include "runtime/ScopedLock.h"
#include "runtime/TimeBase.h"

namespace Quillan {
namespace {

constexpr uint32_t kNoOwner = 0xFFFFFFFFu;
// Re-check periods: a waiter that missed a broadcast notices the change
// after at most one period.
constexpr uint32_t kReaderRecheckMs = 100;
constexpr uint32_t kWriterRecheckMs = 250;

// The owner is kept as a 32-bit thread id, the width of a thread id on the
// head unit.
uint32_t OwnerId(pthread_t thread) { return static_cast<uint32_t>(thread); }

pthread_cond_t* NewMonotonicCondition(const pthread_condattr_t& attributes) {
  pthread_cond_t* condition = new (std::nothrow) pthread_cond_t;
  if (condition != nullptr) pthread_cond_init(condition, &attributes);
  return condition;
}

}  // namespace

ReadWriteLock::ReadWriteLock() {
  pthread_condattr_t attributes;
  pthread_condattr_init(&attributes);
  pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
  m_readersCond = NewMonotonicCondition(attributes);
  m_writersCond = NewMonotonicCondition(attributes);
  pthread_condattr_destroy(&attributes);
  pthread_mutex_init(&m_waitMutex, nullptr);
}

ReadWriteLock::~ReadWriteLock() {
  for (pthread_cond_t* condition : {m_readersCond, m_writersCond}) {
    if (condition == nullptr) continue;
    pthread_cond_destroy(condition);
    delete condition;
  }
  pthread_mutex_destroy(&m_waitMutex);
  ScopedLock guard(m_holdsLock);
  m_holds.clear();
}

void ReadWriteLock::LockRead() {
  m_stateLock.Lock();
  const pthread_t self = pthread_self();
  // A thread that already reads, or that writes, never waits: reads are
  // re-entrant and a writer may also read. Others give way to writers.
  if (HoldsOf(self).reads == 0) {
    while (m_waitingWriters > 0 && HoldsOf(self).writes == 0) {
      m_stateLock.Unlock();
      WaitOn(m_readersCond, kReaderRecheckMs);
      m_stateLock.Lock();
    }
  }
  m_activeReaders += 1;
  AddReads(self, +1);
  m_stateLock.Unlock();
}

void ReadWriteLock::UnlockRead() {
  m_stateLock.Lock();
  const pthread_t self = pthread_self();
  AddReads(self, -1);
  const Holds holds = HoldsOf(self);
  if (holds.reads == 0 && holds.writes == 0) {
    EraseHolds(self);
    if (IsOwner(self)) m_owner = kNoOwner;
  }
  m_activeReaders -= 1;
  if (m_activeReaders == 0) Broadcast(m_writersCond);
  m_stateLock.Unlock();
}

void ReadWriteLock::LockWrite() {
  m_stateLock.Lock();
  const pthread_t self = pthread_self();
  // From here on, new readers that hold nothing wait: writers are preferred.
  m_waitingWriters += 1;
  // The caller's own reads do not block its upgrade to write.
  const uint16_t myReads = HoldsOf(self).reads;
  m_activeReaders -= myReads;
  while (!MayWrite(self, myReads)) {
    m_stateLock.Unlock();
    WaitOn(m_writersCond, kWriterRecheckMs);
    m_stateLock.Lock();
  }
  m_owner = OwnerId(self);
  if (m_upgrader == m_owner) m_upgrader = kNoOwner;
  SetReads(self, myReads);
  m_activeReaders += myReads;
  m_stateLock.Unlock();
  // Recursive: a nested LockWrite of the owner passes.
  m_writeLock.Lock();
  AddWrites(self, +1);
}

void ReadWriteLock::UnlockWrite() {
  const pthread_t self = pthread_self();
  AddWrites(self, -1);
  const Holds holds = HoldsOf(self);
  const bool releasesOwner = holds.reads == 0 && holds.writes == 0;
  if (releasesOwner) EraseHolds(self);
  m_writeLock.Unlock();
  m_stateLock.Lock();
  // A thread that still reads stays owner until its last UnlockRead.
  if (releasesOwner) m_owner = kNoOwner;
  m_waitingWriters -= 1;
  if (m_waitingWriters == 0) {
    Broadcast(m_readersCond);
  } else if (releasesOwner) {
    Broadcast(m_writersCond);
  }
  m_stateLock.Unlock();
}

ReadWriteLock::Holds ReadWriteLock::HoldsOf(pthread_t thread) {
  ScopedLock guard(m_holdsLock);
  auto found = m_holds.find(thread);
  return found != m_holds.end() ? found->second : Holds();
}

void ReadWriteLock::SetReads(pthread_t thread, uint16_t reads) {
  ScopedLock guard(m_holdsLock);
  m_holds[thread].reads = reads;
}

void ReadWriteLock::AddReads(pthread_t thread, int delta) {
  ScopedLock guard(m_holdsLock);
  Holds& holds = m_holds[thread];
  holds.reads = static_cast<uint16_t>(holds.reads + delta);
}

void ReadWriteLock::AddWrites(pthread_t thread, int delta) {
  ScopedLock guard(m_holdsLock);
  Holds& holds = m_holds[thread];
  holds.writes = static_cast<uint16_t>(holds.writes + delta);
}

void ReadWriteLock::EraseHolds(pthread_t thread) {
  ScopedLock guard(m_holdsLock);
  m_holds.erase(thread);
}

void ReadWriteLock::WaitOn(pthread_cond_t* condition, uint32_t ms) {
  pthread_mutex_lock(&m_waitMutex);
  const timespec deadline = MonotonicDeadline(ms);
  pthread_cond_timedwait(condition, &m_waitMutex, &deadline);
  pthread_mutex_unlock(&m_waitMutex);
}

void ReadWriteLock::Broadcast(pthread_cond_t* condition) {
  pthread_mutex_lock(&m_waitMutex);
  pthread_cond_broadcast(condition);
  pthread_mutex_unlock(&m_waitMutex);
}

bool ReadWriteLock::IsOwner(pthread_t thread) const { return m_owner == OwnerId(thread); }

// Two upgraders both lend their reads, so either could pass once the other
// readers leave and write over what the other has read. The first to ask
// goes first; the other waits until the owner has released everything.
bool ReadWriteLock::MayWrite(pthread_t thread, uint16_t reads) {
  if (IsOwner(thread)) return m_activeReaders < 1;
  if (m_owner != kNoOwner) return false;
  if (reads > 0 && m_upgrader == kNoOwner) m_upgrader = OwnerId(thread);
  if (m_upgrader != kNoOwner && m_upgrader != OwnerId(thread)) return false;
  return m_activeReaders < 1;
}

}  // namespace Quillan
