// ReadWriteLock: writer preference, re-entrant reads and writes, reading
// while writing, upgrading a read, and waiters that sleep.

#include "runtime/ReadWriteLock.h"

#include <gtest/gtest.h>
#include <time.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "runtime/ScopedLock.h"
#include "runtime/TimeBase.h"
#include "tests/support/TestTime.h"

namespace Quillan {

class ReadWriteLockProbe {
 public:
  static int32_t WaitingWriters(ReadWriteLock& lock) {
    ScopedLock guard(lock.m_stateLock);
    return lock.m_waitingWriters;
  }
};

namespace {

uint32_t LongMs() { return pelorin_test::ScaledMs(10000); }
constexpr uint32_t kBlockedCheckMs = 30;  // a step still unfinished after this is waiting

// A thread that runs the steps it is given one after another, so that a
// test can make several threads hold the lock in a chosen order.
class Actor {
 public:
  Actor() : m_thread([this] { Loop(); }) {}
  ~Actor() {
    Begin(nullptr);
    m_thread.join();
  }
  void Begin(std::function<void()> step) {
    std::lock_guard<std::mutex> guard(m_lock);
    m_step = std::move(step);
    m_pending = true;
    m_changed.notify_all();
  }
  bool Finished(uint32_t ms) {
    std::unique_lock<std::mutex> guard(m_lock);
    return m_changed.wait_for(guard, std::chrono::milliseconds(ms), [this] { return !m_pending; });
  }
  void Do(std::function<void()> step) {  // a step that must not wait for anyone
    Begin(std::move(step));
    EXPECT_TRUE(Finished(LongMs()));
  }

 private:
  void Loop() {
    std::unique_lock<std::mutex> guard(m_lock);
    for (;;) {
      m_changed.wait(guard, [this] { return m_pending; });
      if (!m_step) return;
      const std::function<void()> step = m_step;
      guard.unlock();
      step();
      guard.lock();
      m_pending = false;
      m_changed.notify_all();
    }
  }

  std::mutex m_lock;
  std::condition_variable m_changed;
  std::function<void()> m_step;
  bool m_pending = false;
  std::thread m_thread;
};

void AwaitWaitingWriters(ReadWriteLock& lock, int32_t count) {
  const uint32_t start = GetTickMs();
  while (ReadWriteLockProbe::WaitingWriters(lock) != count) {
    ASSERT_LT(TickDiff(GetTickMs(), start), static_cast<int32_t>(LongMs()));
    SleepMs(1);
  }
}

TEST(ReadWriteLockTest, WaitingWriterStopsNewReadersButNotNestedOnes) {
  ReadWriteLock lock;
  Actor reader, writer, newcomer;
  reader.Do([&] { lock.LockRead(); });
  writer.Begin([&] {
    lock.LockWrite();
    lock.LockWrite();
  });
  AwaitWaitingWriters(lock, 1);
  reader.Do([&] { lock.LockRead(); });  // re-entrant: passes the waiting writer
  newcomer.Begin([&] { lock.LockRead(); });
  EXPECT_FALSE(newcomer.Finished(kBlockedCheckMs));
  reader.Do([&] {
    lock.UnlockRead();
    lock.UnlockRead();
  });
  EXPECT_TRUE(writer.Finished(LongMs()));
  writer.Do([&] {
    lock.LockRead();  // a writer may also read
    lock.UnlockRead();
    lock.UnlockWrite();
  });
  EXPECT_FALSE(newcomer.Finished(kBlockedCheckMs));  // held until the outermost unlock
  writer.Do([&] { lock.UnlockWrite(); });
  EXPECT_TRUE(newcomer.Finished(LongMs()));
  newcomer.Do([&] { lock.UnlockRead(); });
}

// Two readers upgrade together: the first to ask writes first, the second
// only once the first has let go of its write and its read, in either order.
TEST(ReadWriteLockTest, OverlappingUpgradesGoInTheOrderBegun) {
  for (bool releaseWriteFirst : {true, false}) {
    ReadWriteLock lock;
    Actor first, second;
    first.Do([&] { lock.LockRead(); });
    second.Do([&] { lock.LockRead(); });
    first.Begin([&] { lock.LockWrite(); });
    AwaitWaitingWriters(lock, 1);
    EXPECT_FALSE(first.Finished(kBlockedCheckMs));  // the second still reads
    second.Begin([&] { lock.LockWrite(); });        // lends the last read
    ASSERT_TRUE(first.Finished(LongMs()));
    first.Do([&] { releaseWriteFirst ? lock.UnlockWrite() : lock.UnlockRead(); });
    EXPECT_FALSE(second.Finished(kBlockedCheckMs)) << releaseWriteFirst;
    first.Do([&] { releaseWriteFirst ? lock.UnlockRead() : lock.UnlockWrite(); });
    EXPECT_TRUE(second.Finished(LongMs())) << releaseWriteFirst;
    second.Do([&] {
      lock.UnlockWrite();
      lock.UnlockRead();
    });
  }
}

// CPU time the calling thread has used, in milliseconds.
uint32_t ThreadCpuMs() {
  timespec used{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
  return static_cast<uint32_t>(used.tv_sec) * 1000u + static_cast<uint32_t>(used.tv_nsec / 1000000);
}

// A waiting reader or writer sleeps between its re-checks instead of
// spinning on the counters. An upper bound on CPU time only: a busy machine
// gives a spinning waiter less, never a sleeping one more.
TEST(ReadWriteLockWallClock, WaitersSleepBetweenTheirRechecks) {
  struct Case {
    const char* waiter;
    void (ReadWriteLock::*hold)();
    void (ReadWriteLock::*release)();
    void (ReadWriteLock::*wait)();
    void (ReadWriteLock::*leave)();
  };
  const Case cases[] = {
      {"writer", &ReadWriteLock::LockRead, &ReadWriteLock::UnlockRead, &ReadWriteLock::LockWrite,
       &ReadWriteLock::UnlockWrite},
      {"reader", &ReadWriteLock::LockWrite, &ReadWriteLock::UnlockWrite, &ReadWriteLock::LockRead,
       &ReadWriteLock::UnlockRead},
  };
  for (const Case& c : cases) {
    ReadWriteLock lock;
    Actor holder, waiter;
    uint32_t usedMs = 0;
    holder.Do([&] { (lock.*c.hold)(); });
    waiter.Begin([&] {
      const uint32_t start = ThreadCpuMs();
      (lock.*c.wait)();
      usedMs = ThreadCpuMs() - start;
    });
    EXPECT_FALSE(waiter.Finished(300)) << c.waiter;  // longer than a re-check period
    holder.Do([&] { (lock.*c.release)(); });
    ASSERT_TRUE(waiter.Finished(LongMs())) << c.waiter;
    EXPECT_LT(usedMs, pelorin_test::ScaledMs(60)) << c.waiter;  // spinning takes most of the 300
    waiter.Do([&] { (lock.*c.leave)(); });
  }
}

}  // namespace
}  // namespace Quillan
