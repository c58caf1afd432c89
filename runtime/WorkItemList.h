#pragma once
// WorkItemList: an intrusive doubly linked list of WorkItems through one pair
// of their links (next/prev for the loop's lists, groupNext/groupPrev for the
// chain of group leaders in the ready queue). It owns nothing; the caller
// guards it. A null position means "in front of the first item".

#include "runtime/WorkItem.h"

namespace Quillan {

template <WorkItem* WorkItem::*Next, WorkItem* WorkItem::*Prev>
class LinkedWorkItems {
 public:
  WorkItem* Head() const { return m_head; }
  WorkItem* Tail() const { return m_tail; }
  bool IsEmpty() const { return m_head == nullptr; }

  void InsertAfter(WorkItem* position, WorkItem* item) { InsertRangeAfter(position, item, item); }
  void Unlink(WorkItem* item) { UnlinkRange(item, item); }

  // Links the chain first..last (already linked among itself) behind
  // `position`.
  void InsertRangeAfter(WorkItem* position, WorkItem* first, WorkItem* last) {
    WorkItem* following = position != nullptr ? position->*Next : m_head;
    first->*Prev = position;
    last->*Next = following;
    (position != nullptr ? position->*Next : m_head) = first;
    (following != nullptr ? following->*Prev : m_tail) = last;
  }

  // Takes the chain first..last out, keeping its inner links.
  void UnlinkRange(WorkItem* first, WorkItem* last) {
    WorkItem* before = first->*Prev;
    WorkItem* after = last->*Next;
    (before != nullptr ? before->*Next : m_head) = after;
    (after != nullptr ? after->*Prev : m_tail) = before;
    first->*Prev = nullptr;
    last->*Next = nullptr;
  }

 private:
  WorkItem* m_head = nullptr;
  WorkItem* m_tail = nullptr;
};

using WorkItemList = LinkedWorkItems<&WorkItem::next, &WorkItem::prev>;
using GroupLeaderList = LinkedWorkItems<&WorkItem::groupNext, &WorkItem::groupPrev>;

}  // namespace Quillan
