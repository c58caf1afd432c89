#pragma once
// WorkItem: a WorkLoop's entry for one posted handler. It lives in the
// loop's WorkItemPool and sits in at most one list at a time (the ready
// queue, the delayed list or the pool's free list), all guarded by the
// loop's state lock. The item does not own its handler.

#include <cstdint>

namespace Quillan {

class WorkHandler;

struct WorkItem {
  WorkItem* next = nullptr;
  WorkItem* prev = nullptr;
  // Larger runs first; grows while the item waits in the ready queue.
  uint32_t priority = 0;
  // The value returned to the poster.
  uint32_t id = 0;
  // 1 once Cancel has marked the item: released without running.
  uint8_t cancelled = 0;
  // In the delayed list: the due tick. In the ready queue: the number of
  // aging steps undergone.
  uint32_t dueOrAge = 0;
  // Delayed list only: what is left of a long delay once the due tick is
  // reached (ticks compare only within half their range).
  uint32_t laterMs = 0;
  WorkHandler* handler = nullptr;

  // Delayed list only: the item's place in the list's heap, and its posting
  // sequence, which orders items with equal due ticks.
  uint32_t heapIndex = 0;
  uint64_t order = 0;

  // Ready queue only: items that entered it with equal priority at the same
  // step age alike forever, so they form one group. The first item of a
  // group leads it: its priority and age are the group's, and the leaders
  // are chained among themselves.
  WorkItem* groupNext = nullptr;
  WorkItem* groupPrev = nullptr;
  bool leadsGroup = false;
};

}  // namespace Quillan
