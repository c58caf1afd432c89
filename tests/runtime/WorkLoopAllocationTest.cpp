// Steady posting does not allocate: once the loop's item pool and delayed
// list have grown to the backlog, posting and running reuse them. Every
// allocation of this test program is counted by the replaced operator new.

#include <gtest/gtest.h>

#include <atomic>

#include "runtime/Event.h"
#include "runtime/WorkHandler.h"
#include "runtime/WorkLoop.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/TestTime.h"

namespace Quillan {
namespace {

// A blocker holds the loop busy until `go`; any other sets `done` once it
// has run `remaining` times.
class RoundHandler : public WorkHandler {
 public:
  explicit RoundHandler(bool blocks) : m_blocks(blocks) {}
  void Execute() override {
    if (m_blocks) {
      entered.Set();
      go.Wait();
    } else if (--remaining == 0) {
      done.Set();
    }
  }
  void Release() override {}

  std::atomic<int> remaining{0};
  Event entered, go, done;

 private:
  const bool m_blocks;
};

// Posts `count` items, a third of them delayed by 0 ms, while the loop is
// held busy, then lets them run and waits for them.
bool PostRound(WorkLoop& loop, RoundHandler& blocker, RoundHandler& counted, int count) {
  const uint32_t longMs = pelorin_test::ScaledMs(10000);
  blocker.entered.Reset();
  blocker.go.Reset();
  counted.done.Reset();
  counted.remaining = count;
  if (loop.Post(&blocker, 100) == 0 || !blocker.entered.TimedWait(longMs)) return false;
  for (int index = 0; index < count; ++index) {
    const uint32_t id =
        index % 3 == 0 ? loop.PostDelayed(&counted, 0, index % 5) : loop.Post(&counted, index % 5);
    if (id == 0) return false;
  }
  blocker.go.Set();
  return counted.done.TimedWait(longMs);
}

TEST(WorkLoopAllocationTest, SteadyPostingDoesNotAllocate) {
  RoundHandler blocker(true), counted(false);
  WorkLoop loop;
  loop.Start();
  ASSERT_TRUE(PostRound(loop, blocker, counted, 300));  // grows the pool and the delayed list
  const long before = pelorin_test::AllocationCount();
  bool allRan = true;
  for (int round = 0; round < 20; ++round) {
    allRan = PostRound(loop, blocker, counted, 300) && allRan;
  }
  EXPECT_EQ(pelorin_test::AllocationCount() - before, 0);
  EXPECT_TRUE(allRan);
}

}  // namespace
}  // namespace Quillan
