// ReadWriteLock: writer preference, re-entrant reads and writes, reading
// while writing, upgrading a read, and exclusion under load.

#include "runtime/ReadWriteLock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

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
  // Runs `step` and expects it to finish without waiting for anyone.
  void Do(std::function<void()> step) {
    Begin(std::move(step));
    EXPECT_TRUE(Finished(LongMs()));
  }

 private:
  void Loop() {
    for (;;) {
      std::unique_lock<std::mutex> guard(m_lock);
      m_changed.wait(guard, [this] { return m_pending; });
      if (!m_step) return;
      std::function<void()> step = m_step;
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

constexpr uint32_t kBlockedCheckMs = 30;  // a step still unfinished after this is waiting

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
  writer.Begin([&] { lock.LockWrite(); });
  AwaitWaitingWriters(lock, 1);
  reader.Do([&] { lock.LockRead(); });  // re-entrant: passes the waiting writer
  newcomer.Begin([&] { lock.LockRead(); });
  EXPECT_FALSE(newcomer.Finished(kBlockedCheckMs));
  reader.Do([&] {
    lock.UnlockRead();
    lock.UnlockRead();
  });
  EXPECT_TRUE(writer.Finished(LongMs()));
  EXPECT_FALSE(newcomer.Finished(kBlockedCheckMs));  // the writer holds it now
  writer.Do([&] { lock.UnlockWrite(); });
  EXPECT_TRUE(newcomer.Finished(LongMs()));
  newcomer.Do([&] { lock.UnlockRead(); });
}

TEST(ReadWriteLockTest, NestedWritesKeepAccessUntilTheOutermostUnlock) {
  ReadWriteLock lock;
  Actor owner, other;
  owner.Do([&] {
    lock.LockWrite();
    lock.LockWrite();
    lock.LockRead();  // a writer may also read
    lock.UnlockRead();
  });
  other.Begin([&] { lock.LockWrite(); });
  AwaitWaitingWriters(lock, 3);
  owner.Do([&] { lock.UnlockWrite(); });
  EXPECT_FALSE(other.Finished(kBlockedCheckMs));
  owner.Do([&] { lock.UnlockWrite(); });
  EXPECT_TRUE(other.Finished(LongMs()));
  other.Do([&] { lock.UnlockWrite(); });
}

// A reader upgrades to write once the other reader leaves; after releasing
// both in either order, another thread can write.
TEST(ReadWriteLockTest, ReaderUpgradesOnceOtherReadsAreReleased) {
  for (bool releaseWriteFirst : {true, false}) {
    ReadWriteLock lock;
    Actor upgrader, reader, next;
    upgrader.Do([&] { lock.LockRead(); });
    reader.Do([&] { lock.LockRead(); });
    upgrader.Begin([&] { lock.LockWrite(); });
    AwaitWaitingWriters(lock, 1);
    EXPECT_FALSE(upgrader.Finished(kBlockedCheckMs));
    reader.Do([&] { lock.UnlockRead(); });
    EXPECT_TRUE(upgrader.Finished(LongMs()));
    next.Begin([&] { lock.LockWrite(); });
    AwaitWaitingWriters(lock, 2);
    upgrader.Do([&] {
      if (releaseWriteFirst) lock.UnlockWrite();
      lock.UnlockRead();
      if (!releaseWriteFirst) lock.UnlockWrite();
    });
    EXPECT_TRUE(next.Finished(LongMs()));
    next.Do([&] { lock.UnlockWrite(); });
  }
}

// Two readers upgrade together: the first to ask writes first, the second
// only once the first has let go of everything.
TEST(ReadWriteLockTest, OverlappingUpgradesGoInTheOrderBegun) {
  ReadWriteLock lock;
  Actor first, second;
  first.Do([&] { lock.LockRead(); });
  second.Do([&] { lock.LockRead(); });
  first.Begin([&] { lock.LockWrite(); });
  AwaitWaitingWriters(lock, 1);
  second.Begin([&] { lock.LockWrite(); });  // lends the last read
  ASSERT_TRUE(first.Finished(LongMs()));
  EXPECT_FALSE(second.Finished(kBlockedCheckMs));
  first.Do([&] { lock.UnlockWrite(); });
  EXPECT_FALSE(second.Finished(kBlockedCheckMs));  // still reads
  first.Do([&] { lock.UnlockRead(); });
  EXPECT_TRUE(second.Finished(LongMs()));
  second.Do([&] {
    lock.UnlockWrite();
    lock.UnlockRead();
  });
}

TEST(ReadWriteLockTest, WritersExcludeEveryoneUnderLoad) {
  ReadWriteLock lock;
  std::atomic<int> readers{0}, writers{0}, violations{0};
  long shared = 0;  // plain data: written under write access only
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&, thread] {
      std::mt19937 random(static_cast<uint32_t>(thread) + 1);
      for (int round = 0; round < 1500; ++round) {
        const uint32_t choice = random() % 4;
        if (choice == 0) {
          const bool nested = random() % 2 == 0;
          lock.LockWrite();
          if (nested) lock.LockWrite();
          if (writers.fetch_add(1) != 0 || readers.load() != 0) violations += 1;
          shared += 1;
          writers -= 1;
          lock.LockRead();  // reading inside the write
          lock.UnlockRead();
          if (nested) lock.UnlockWrite();
          lock.UnlockWrite();
        } else {
          const bool nested = choice == 1;
          lock.LockRead();
          if (nested) lock.LockRead();
          readers += 1;
          if (writers.load() != 0) violations += 1;
          const long seen = shared;
          EXPECT_GE(seen, 0);
          readers -= 1;
          if (nested) lock.UnlockRead();
          lock.UnlockRead();
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(violations, 0);
  EXPECT_GT(shared, 0);
}

}  // namespace
}  // namespace Quillan
