#include "runtime/DelayedList.h"

#include <new>

#include "runtime/TimeBase.h"

namespace Quillan {
namespace {

constexpr uint32_t kFirstCapacity = 64;
// The longest wait one due tick is armed for: a quarter of the tick range,
// not the half that signed differences can tell apart, so that an item
// already overdue by up to about 12 days still compares as due earlier.
constexpr uint32_t kLongestStepMs = 0x40000000u;

uint32_t NextStep(uint32_t remainingMs) {
  return remainingMs < kLongestStepMs ? remainingMs : kLongestStepMs;
}

}  // namespace

DelayedList::~DelayedList() { delete[] m_slots; }

bool DelayedList::Reserve() {
  if (m_count < m_capacity) return true;
  const uint32_t capacity = m_capacity == 0 ? kFirstCapacity : m_capacity * 2;
  if (capacity <= m_capacity) return false;
  WorkItem** slots = new (std::nothrow) WorkItem*[capacity];
  if (slots == nullptr) return false;
  for (uint32_t index = 0; index < m_count; ++index) slots[index] = m_slots[index];
  delete[] m_slots;
  m_slots = slots;
  m_capacity = capacity;
  return true;
}

void DelayedList::Arm(WorkItem* item, uint32_t now, uint32_t delayMs) {
  const uint32_t step = NextStep(delayMs);
  item->dueOrAge = now + step;
  item->laterMs = delayMs - step;
}

bool DelayedList::Insert(WorkItem* item) {
  item->order = m_nextOrder++;
  Place(item, m_count++);
  SiftUp(item->heapIndex);
  return m_slots[0] == item;
}

WorkItem* DelayedList::PopDue(uint32_t now, bool all) {
  for (;;) {
    WorkItem* head = Head();
    if (head == nullptr || (!all && TickDiff(head->dueOrAge, now) > 0)) return nullptr;
    if (all || head->laterMs == 0) {
      Unlink(head);
      return head;
    }
    // Counted from the step's due tick, so the steps add up to the delay.
    const uint32_t step = NextStep(head->laterMs);
    head->laterMs -= step;
    head->dueOrAge += step;
    SiftDown(head->heapIndex);
  }
}

void DelayedList::Unlink(WorkItem* item) {
  const uint32_t index = item->heapIndex;
  WorkItem* last = m_slots[--m_count];
  if (last == item) return;
  Place(last, index);
  SiftUp(index);
  SiftDown(last->heapIndex);
}

void DelayedList::Reschedule(WorkItem* item, uint32_t due) {
  item->dueOrAge = due;
  item->laterMs = 0;
  SiftUp(item->heapIndex);
  SiftDown(item->heapIndex);
}

WorkItem* DelayedList::Find(uint32_t id) const {
  WorkItem* found = nullptr;
  for (uint32_t index = 0; index < m_count; ++index) {
    WorkItem* item = m_slots[index];
    if (item->id == id && (found == nullptr || item->order < found->order)) found = item;
  }
  return found;
}

// Due earlier, or due together and posted earlier.
bool DelayedList::Earlier(const WorkItem* first, const WorkItem* second) {
  const int32_t difference = TickDiff(first->dueOrAge, second->dueOrAge);
  return difference < 0 || (difference == 0 && first->order < second->order);
}

void DelayedList::Place(WorkItem* item, uint32_t index) {
  m_slots[index] = item;
  item->heapIndex = index;
}

void DelayedList::SiftUp(uint32_t index) {
  WorkItem* item = m_slots[index];
  while (index > 0) {
    const uint32_t parent = (index - 1) / 2;
    if (!Earlier(item, m_slots[parent])) break;
    Place(m_slots[parent], index);
    index = parent;
  }
  Place(item, index);
}

void DelayedList::Rebuild() {
  for (uint32_t index = m_count / 2; index-- > 0;) SiftDown(index);
}

void DelayedList::SiftDown(uint32_t index) {
  WorkItem* item = m_slots[index];
  for (;;) {
    uint32_t child = index * 2 + 1;
    if (child >= m_count) break;
    if (child + 1 < m_count && Earlier(m_slots[child + 1], m_slots[child])) child += 1;
    if (!Earlier(m_slots[child], item)) break;
    Place(m_slots[child], index);
    index = child;
  }
  Place(item, index);
}

}  // namespace Quillan
