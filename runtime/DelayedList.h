#pragma once
// DelayedList: the WorkLoop's items waiting for their due tick, earliest
// first. Ticks are 32-bit and wrap, so due times are compared only by their
// signed difference; an item goes in behind every item that is not due later
// than it, so equal due times keep their order of posting. Kept as a binary
// heap of item pointers (each item knows its slot), so that inserting,
// taking the head and unlinking cost O(log n) however the delays are mixed.
// The slot array grows by doubling and is freed only with the list. Not
// thread-safe: the loop's state lock guards it.
// Delays of 2^30 ms and more wait in steps of 2^30 ms, re-armed until done,
// so that they stay well inside the signed window that overdue items need.

#include <cstdint>

#include "runtime/WorkItem.h"

namespace Quillan {

class DelayedList {
 public:
  DelayedList() = default;
  ~DelayedList();
  DelayedList(const DelayedList&) = delete;
  DelayedList& operator=(const DelayedList&) = delete;

  bool IsEmpty() const { return m_count == 0; }
  uint32_t Count() const { return m_count; }
  WorkItem* Head() const { return m_count != 0 ? m_slots[0] : nullptr; }
  // Makes room for one more item; false when it cannot be allocated.
  bool Reserve();
  // Sets the due tick of `item`, `delayMs` after `now`.
  static void Arm(WorkItem* item, uint32_t now, uint32_t delayMs);
  // Inserts `item` (armed; room reserved); true when it became the head.
  bool Insert(WorkItem* item);
  // Takes the head out when it is due at `now` (having waited its whole
  // delay), or at once when `all`.
  WorkItem* PopDue(uint32_t now, bool all);
  void Unlink(WorkItem* item);
  // Gives a listed item a new due tick, with nothing left to wait after it.
  void Reschedule(WorkItem* item, uint32_t due);
  // The first-posted item with this id, or null.
  WorkItem* Find(uint32_t id) const;

  // Unlinks every item for which `match(item)` holds and hands it to
  // `unlinked(item)`; true when there was any.
  template <typename Match, typename Unlinked>
  bool UnlinkIf(Match match, Unlinked unlinked) {
    uint32_t kept = 0;
    for (uint32_t index = 0; index < m_count; ++index) {
      WorkItem* item = m_slots[index];
      if (match(item)) {
        unlinked(item);
      } else {
        Place(item, kept++);
      }
    }
    const bool any = kept != m_count;
    m_count = kept;
    if (any) Rebuild();
    return any;
  }

 private:
  static bool Earlier(const WorkItem* first, const WorkItem* second);
  void Place(WorkItem* item, uint32_t index);
  void SiftUp(uint32_t index);
  void SiftDown(uint32_t index);
  void Rebuild();

  WorkItem** m_slots = nullptr;
  uint32_t m_count = 0;
  uint32_t m_capacity = 0;
  uint64_t m_nextOrder = 0;
};

}  // namespace Quillan
