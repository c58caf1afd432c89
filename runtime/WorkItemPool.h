#pragma once
// WorkItemPool: the WorkLoop's supply of WorkItems. Items come in blocks,
// 64 in the first and 32 in every later one; given-back items wait on a free
// list and are handed out again, so a loop whose backlog stays bounded stops
// allocating. Blocks are freed only with the pool. Not thread-safe: the
// loop's state lock guards it.

#include <cstdint>

#include "runtime/WorkItem.h"

namespace Quillan {

class WorkItemPool {
 public:
  static constexpr uint32_t kFirstBlockSize = 64;
  static constexpr uint32_t kLaterBlockSize = 32;

  WorkItemPool() = default;
  ~WorkItemPool();
  WorkItemPool(const WorkItemPool&) = delete;
  WorkItemPool& operator=(const WorkItemPool&) = delete;

  // A cleared item, or null when no block can be allocated.
  WorkItem* Acquire();
  void GiveBack(WorkItem* item);

 private:
  struct Block {
    Block* next;
    WorkItem* items;
  };

  bool Grow();

  Block* m_blocks = nullptr;
  WorkItem* m_free = nullptr;  // chained through `next`
};

}  // namespace Quillan
