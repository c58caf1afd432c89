// Steady posting does not allocate: once the loop's item pool and delayed
// list have grown to the backlog, posting and running reuse them. Every
// allocation of this test program is counted by the replaced operator new.

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "runtime/Event.h"
#include "runtime/WorkHandler.h"
#include "runtime/WorkLoop.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/TestTime.h"

namespace Quillan {
namespace {

// Sets `done` when it has run `expected` times.
class CountingHandler : public WorkHandler {
 public:
  void Expect(int count) {
    done.Reset();
    m_remaining = count;
  }
  void Execute() override {
    if (--m_remaining == 0) done.Set();
  }
  void Release() override {}

  Event done;

 private:
  std::atomic<int> m_remaining{0};
};

// Holds the loop busy until Go(), so that a round's items all wait at once.
class BlockingHandler : public WorkHandler {
 public:
  void Arm() {
    entered.Reset();
    go.Reset();
  }
  void Execute() override {
    entered.Set();
    go.Wait();
  }
  void Release() override {}

  Event entered, go;
};

// Posts `count` items, a third of them delayed by 0 ms, while the loop is
// held busy, then lets them run and waits for them.
bool PostRound(WorkLoop& loop, BlockingHandler& blocker, CountingHandler& handler, int count) {
  const uint32_t longMs = pelorin_test::ScaledMs(10000);
  blocker.Arm();
  handler.Expect(count);
  if (loop.Post(&blocker, 100) == 0 || !blocker.entered.TimedWait(longMs)) return false;
  for (int index = 0; index < count; ++index) {
    const uint32_t id =
        index % 3 == 0 ? loop.PostDelayed(&handler, 0, index % 5) : loop.Post(&handler, index % 5);
    if (id == 0) return false;
  }
  blocker.go.Set();
  return handler.done.TimedWait(longMs);
}

TEST(WorkLoopAllocationTest, SteadyPostingDoesNotAllocate) {
  BlockingHandler blocker;
  CountingHandler handler;
  WorkLoop loop;
  loop.Start();
  ASSERT_TRUE(PostRound(loop, blocker, handler, 300));  // grows the pool and the delayed list
  const long before = pelorin_test::AllocationCount();
  bool allRan = true;
  for (int round = 0; round < 20; ++round) {
    allRan = PostRound(loop, blocker, handler, 300) && allRan;
  }
  const long allocated = pelorin_test::AllocationCount() - before;
  EXPECT_TRUE(allRan);
  EXPECT_EQ(allocated, 0);
}

}  // namespace
}  // namespace Quillan
