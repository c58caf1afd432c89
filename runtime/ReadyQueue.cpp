#include "runtime/ReadyQueue.h"

namespace Quillan {

void ReadyQueue::Insert(WorkItem* item) {
  item->dueOrAge = 0;
  item->leadsGroup = false;
  // The queue is always sorted, so "behind every item whose priority is at
  // least mine" is behind the last such group.
  WorkItem* leader = m_leaders.Tail();
  while (leader != nullptr && leader->priority < item->priority) leader = leader->groupPrev;
  if (leader == nullptr) {
    m_items.InsertAfter(nullptr, item);
    LinkLeader(nullptr, item);
    return;
  }
  m_items.InsertAfter(LastOfGroup(leader), item);
  // Same priority and no aging yet: the same future as the group it follows.
  if (leader->priority == item->priority && leader->dueOrAge == 0) return;
  LinkLeader(leader, item);
}

WorkItem* ReadyQueue::PopHead() {
  WorkItem* head = m_items.Head();
  if (head != nullptr) Unlink(head);
  return head;
}

void ReadyQueue::Unlink(WorkItem* item) {
  WorkItem* following = item->next;
  m_items.Unlink(item);
  if (!item->leadsGroup) return;
  item->leadsGroup = false;
  if (following != nullptr && !following->leadsGroup) {
    // The next member takes over the lead, with the group's state.
    following->priority = item->priority;
    following->dueOrAge = item->dueOrAge;
    LinkLeader(item, following);
  }
  m_leaders.Unlink(item);
}

void ReadyQueue::Age() {
  WorkItem* leader = m_leaders.Head();
  while (leader != nullptr) {
    WorkItem* following = leader->groupNext;
    leader->dueOrAge += 1;
    leader->priority += leader->dueOrAge;
    WorkItem* before = leader->groupPrev;
    if (before != nullptr && leader->priority > before->priority) {
      while (before != nullptr && before->priority < leader->priority) before = before->groupPrev;
      MoveGroupBehind(leader, before);
    }
    leader = following;
  }
}

WorkItem* ReadyQueue::Find(uint32_t id) const {
  for (WorkItem* item = m_items.Head(); item != nullptr; item = item->next) {
    if (item->id == id) return item;
  }
  return nullptr;
}

WorkItem* ReadyQueue::LastOfGroup(const WorkItem* leader) const {
  return leader->groupNext != nullptr ? leader->groupNext->prev : m_items.Tail();
}

void ReadyQueue::LinkLeader(WorkItem* after, WorkItem* item) {
  item->leadsGroup = true;
  m_leaders.InsertAfter(after, item);
}

void ReadyQueue::MoveGroupBehind(WorkItem* leader, WorkItem* target) {
  WorkItem* last = LastOfGroup(leader);
  m_items.UnlinkRange(leader, last);
  m_leaders.Unlink(leader);
  m_items.InsertRangeAfter(target != nullptr ? LastOfGroup(target) : nullptr, leader, last);
  m_leaders.InsertAfter(target, leader);
}

}  // namespace Quillan
