#pragma once
// ReadyQueue: the WorkLoop's queue of items ready to run, highest priority
// first. An item goes in behind every item whose priority is at least its
// own, so equal priorities keep their order of arrival. Age() is the aging
// step the loop applies after taking the head: every waiting item's age
// grows by one and its priority by its new age; an item that now outranks
// its predecessor moves forward to just behind the nearest item before it
// whose priority is at least its own (or to the front). Priorities compare
// as unsigned 32-bit values and wrap.
//
// Items that entered with the same priority at the same step stay equal and
// adjacent forever, so they are kept as one group led by its first item and
// aged and moved as one: a step costs one visit per group, not per item.
// Not thread-safe: the loop's state lock guards it.

#include <cstdint>

#include "runtime/WorkItemList.h"

namespace Quillan {

class ReadyQueue {
 public:
  bool IsEmpty() const { return m_items.IsEmpty(); }
  // First item in queue order; continue with item->next.
  WorkItem* Head() const { return m_items.Head(); }

  // Inserts `item` (its priority set) with age 0.
  void Insert(WorkItem* item);
  // Takes the head out, or returns null when empty.
  WorkItem* PopHead();
  // Takes any queued item out.
  void Unlink(WorkItem* item);
  void Age();
  // The first item with this id, or null.
  WorkItem* Find(uint32_t id) const;

 private:
  WorkItem* LastOfGroup(const WorkItem* leader) const;
  void LinkLeader(WorkItem* after, WorkItem* item);
  // Moves the group of `leader` behind the group of `target` (front if null).
  void MoveGroupBehind(WorkItem* leader, WorkItem* target);

  WorkItemList m_items;
  GroupLeaderList m_leaders;
};

}  // namespace Quillan
