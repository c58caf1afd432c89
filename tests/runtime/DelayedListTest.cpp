// The delayed list against a plainly sorted model: due order by signed tick
// difference around the wrap, ties in posting order, and the head after
// unlinking, rescheduling and unlinking by handler.

#include "runtime/DelayedList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>
#include <vector>

#include "runtime/TimeBase.h"

namespace Quillan {
namespace {

struct Entry {
  uint32_t due;
  uint64_t posted;
  WorkItem* item;
};

// Due times stay within 2^31 ms of each other, as the loop's do.
class DelayedListTrace {
 public:
  explicit DelayedListTrace(uint32_t seed) : m_random(seed) {}

  void Insert() {
    m_storage.emplace_back();
    WorkItem* item = &m_storage.back();
    item->id = static_cast<uint32_t>(m_storage.size());
    item->dueOrAge = kBase + m_random() % 50;  // across the wrap, many ties
    item->handler =
        reinterpret_cast<WorkHandler*>(static_cast<uintptr_t>(8 + 8 * (m_random() % 3)));
    ASSERT_TRUE(m_list.Reserve());
    const bool becameHead = m_list.Insert(item);
    m_model.push_back(Entry{item->dueOrAge, m_posted++, item});
    Sort();
    EXPECT_EQ(becameHead, m_model.front().item == item);
  }
  void Unlink() {
    if (m_model.empty()) return;
    const size_t index = m_random() % m_model.size();
    m_list.Unlink(m_model[index].item);
    m_model.erase(m_model.begin() + static_cast<long>(index));
  }
  void Reschedule() {
    if (m_model.empty()) return;
    Entry& entry = m_model[m_random() % m_model.size()];
    entry.due = kBase + m_random() % 50;
    m_list.Reschedule(entry.item, entry.due);
    Sort();
  }
  void UnlinkHandler() {
    const auto handler =
        reinterpret_cast<WorkHandler*>(static_cast<uintptr_t>(8 + 8 * (m_random() % 3)));
    const bool any = m_list.UnlinkIf(
        [handler](const WorkItem* item) { return item->handler == handler; }, [](WorkItem*) {});
    const size_t before = m_model.size();
    m_model.erase(
        std::remove_if(m_model.begin(), m_model.end(),
                       [handler](const Entry& entry) { return entry.item->handler == handler; }),
        m_model.end());
    EXPECT_EQ(any, m_model.size() != before);
  }
  void CheckHead() const {
    EXPECT_EQ(m_list.Head(), m_model.empty() ? nullptr : m_model.front().item);
    EXPECT_EQ(m_list.Count(), m_model.size());
  }
  // Empties the list at once, as a stopping loop does.
  void CheckDrainOrder() {
    for (const Entry& entry : m_model) EXPECT_EQ(m_list.PopDue(0, true), entry.item);
    EXPECT_TRUE(m_list.IsEmpty());
  }

 private:
  static constexpr uint32_t kBase = 0xFFFFFFE0u;

  void Sort() {
    std::stable_sort(m_model.begin(), m_model.end(), [](const Entry& first, const Entry& second) {
      const int32_t difference = TickDiff(first.due, second.due);
      return difference < 0 || (difference == 0 && first.posted < second.posted);
    });
  }

  std::mt19937 m_random;
  std::deque<WorkItem> m_storage;
  std::vector<Entry> m_model;
  DelayedList m_list;
  uint64_t m_posted = 0;
};

TEST(DelayedListTest, KeepsDueOrderAndPostingOrderOfTiesThroughEveryChange) {
  for (uint32_t seed = 1; seed <= 30; ++seed) {
    DelayedListTrace trace(seed);
    std::mt19937 choices(seed * 7);
    for (int operation = 0; operation < 400; ++operation) {
      const uint32_t choice = choices() % 12;
      if (choice < 7) {
        trace.Insert();
      } else if (choice < 9) {
        trace.Unlink();
      } else if (choice < 11) {
        trace.Reschedule();
      } else {
        trace.UnlinkHandler();
      }
      trace.CheckHead();
    }
    trace.CheckDrainOrder();
  }
}

TEST(DelayedListTest, OnlyDueItemsLeaveUnlessAllAreAsked) {
  std::vector<WorkItem> items(3);
  DelayedList list;
  const uint32_t dues[] = {0xFFFFFFF0u, 0x00000010u, 0x00000010u};
  for (size_t index = 0; index < items.size(); ++index) {
    items[index].dueOrAge = dues[index];
    ASSERT_TRUE(list.Reserve());
    list.Insert(&items[index]);
  }
  EXPECT_EQ(list.PopDue(0xFFFFFFEFu, false), nullptr);
  EXPECT_EQ(list.PopDue(0x00000000u, false), &items[0]);  // 0x10 ms past it, across the wrap
  EXPECT_EQ(list.PopDue(0x0000000Fu, false), nullptr);
  EXPECT_EQ(list.PopDue(0x0000000Fu, true), &items[1]);
  EXPECT_EQ(list.PopDue(0x00000010u, false), &items[2]);
  EXPECT_EQ(list.PopDue(0x00000010u, true), nullptr);
}

}  // namespace
}  // namespace Quillan
