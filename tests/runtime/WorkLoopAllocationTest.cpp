// Steady posting does not allocate: once the loop's item pool and delayed
// list have grown to the backlog, posting and running reuse them. Every
// allocation of this test program is counted by the replaced operator new.

#include <gtest/gtest.h>

#include "runtime/WorkHandler.h"
#include "runtime/WorkLoop.h"
#include "tests/support/AllocationCounter.h"

namespace Quillan {
namespace {

// Counts its runs; given a loop, stops it (which drains what is queued).
class CountingHandler : public WorkHandler {
 public:
  explicit CountingHandler(WorkLoop* stops = nullptr) : m_stops(stops) {}
  void Execute() override {
    runs += 1;
    if (m_stops != nullptr) m_stops->Stop(nullptr);
  }
  void Release() override {}

  int runs = 0;

 private:
  WorkLoop* const m_stops;
};

// Posts `count` items, a third of them delayed by 0 ms, then runs the loop on
// this thread until all of them have run.
bool PostRound(WorkLoop& loop, CountingHandler& counted, int count) {
  CountingHandler stopper(&loop);
  counted.runs = 0;
  for (int index = 0; index < count; ++index) {
    const uint32_t id =
        index % 3 == 0 ? loop.PostDelayed(&counted, 0, index % 5) : loop.Post(&counted, index % 5);
    if (id == 0) return false;
  }
  loop.Post(&stopper, 0);
  loop.Run();
  return counted.runs == count && stopper.runs == 1;
}

TEST(WorkLoopAllocationTest, SteadyPostingDoesNotAllocate) {
  CountingHandler counted;
  WorkLoop loop;
  ASSERT_TRUE(PostRound(loop, counted, 300));  // grows the pool and the delayed list
  const long before = pelorin_test::AllocationCount();
  bool allRan = true;
  for (int round = 0; round < 20; ++round) allRan = PostRound(loop, counted, 300) && allRan;
  EXPECT_EQ(pelorin_test::AllocationCount() - before, 0);
  EXPECT_TRUE(allRan);
}

}  // namespace
}  // namespace Quillan
