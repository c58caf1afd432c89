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
#include "tests/support/TestTime.h"

namespace {

std::atomic<long> g_allocations{0};

void* CountedAllocation(std::size_t size) {
  g_allocations += 1;
  return std::malloc(size != 0 ? size : 1);
}

}  // namespace

void* operator new(std::size_t size) {
  void* memory = CountedAllocation(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return CountedAllocation(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return CountedAllocation(size);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

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

// Posts `count` items, a third of them delayed by 0 ms, and waits for them.
bool PostRound(WorkLoop& loop, CountingHandler& handler, int count) {
  handler.Expect(count);
  for (int index = 0; index < count; ++index) {
    const uint32_t id =
        index % 3 == 0 ? loop.PostDelayed(&handler, 0, index % 5) : loop.Post(&handler, index % 5);
    if (id == 0) return false;
  }
  return handler.done.TimedWait(pelorin_test::ScaledMs(10000));
}

TEST(WorkLoopAllocationTest, SteadyPostingDoesNotAllocate) {
  WorkLoop loop;
  CountingHandler handler;
  loop.Start();
  ASSERT_TRUE(PostRound(loop, handler, 300));  // grows the pool and the delayed list
  const long before = g_allocations.load();
  bool allRan = true;
  for (int round = 0; round < 50; ++round) allRan = PostRound(loop, handler, 300) && allRan;
  const long allocated = g_allocations.load() - before;
  EXPECT_TRUE(allRan);
  EXPECT_EQ(allocated, 0);
}

TEST(WorkLoopAllocationTest, AGrowingBacklogTakesNewBlocks) {
  WorkLoop loop;
  CountingHandler handler;
  const long before = g_allocations.load();
  for (int index = 0; index < 64; ++index) loop.Post(&handler, 1);
  const long firstBlock = g_allocations.load() - before;
  loop.Post(&handler, 1);
  EXPECT_GT(g_allocations.load() - before, firstBlock);  // the 65th item needs a new block
}

}  // namespace
}  // namespace Quillan
