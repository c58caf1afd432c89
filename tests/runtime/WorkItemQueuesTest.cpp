// The loop's two queues against plain models of their rules, under random
// operations. Ready queue: behind every item of at least the same priority;
// each step takes the head, then every waiting item ages by one and gains its
// age in priority, moving forward past lower predecessors (priorities wrap).
// Delayed list: due order by signed tick difference, ties in posting order.

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>
#include <vector>

#include "runtime/DelayedList.h"
#include "runtime/ReadyQueue.h"
#include "runtime/TimeBase.h"

namespace Quillan {
namespace {

struct ModelItem {
  WorkItem* item;
  uint32_t key;  // priority, or due tick
  uint32_t age;  // aging steps, or posting number
};
using Model = std::vector<ModelItem>;

void ModelInsertReady(Model& model, WorkItem* item) {
  auto position = model.begin();
  for (auto it = model.begin(); it != model.end(); ++it) {
    if (it->key >= item->priority) position = it + 1;
  }
  model.insert(position, ModelItem{item, item->priority, 0});
}

void ModelStep(Model& model) {
  if (!model.empty()) model.erase(model.begin());
  for (size_t index = 0; index < model.size(); ++index) {
    ModelItem moved = model[index];
    moved.age += 1;
    moved.key += moved.age;
    size_t target = index;
    while (target > 0 && model[target - 1].key < moved.key) --target;
    model.erase(model.begin() + static_cast<long>(index));
    model.insert(model.begin() + static_cast<long>(target), moved);
  }
}

void RandomReadyTrace(uint32_t seed, uint32_t priorityBase) {
  std::mt19937 random(seed);
  std::deque<WorkItem> storage;
  ReadyQueue queue;
  Model model;
  for (int operation = 0; operation < 2000; ++operation) {
    const uint32_t choice = random() % 10;
    if (choice < 5) {
      storage.emplace_back();
      storage.back().priority = priorityBase + (random() % 4) * 7;  // few values: many ties
      queue.Insert(&storage.back());
      ModelInsertReady(model, &storage.back());
    } else if (choice < 9) {
      queue.PopHead();
      queue.Age();
      ModelStep(model);
    } else if (!model.empty()) {
      const size_t index = random() % model.size();
      queue.Unlink(model[index].item);
      model.erase(model.begin() + static_cast<long>(index));
    }
    const WorkItem* item = queue.Head();
    for (const ModelItem& expected : model) {
      ASSERT_EQ(item, expected.item) << "seed " << seed << " operation " << operation;
      item = item->next;
    }
    ASSERT_EQ(item, nullptr);
  }
}

TEST(ReadyQueueTest, OrderAndAgingFollowThePerItemRuleAlsoWherePrioritiesWrap) {
  for (uint32_t seed = 1; seed <= 15; ++seed) {
    RandomReadyTrace(seed, 10);
    RandomReadyTrace(seed, 0xFFFFFF00u);
  }
}

TEST(DelayedListTest, HeadFollowsDueOrderWithTiesInPostingOrderThroughEveryChange) {
  constexpr uint32_t kBase = 0xFFFFFFE0u;  // due times straddle the wrap
  for (uint32_t seed = 1; seed <= 30; ++seed) {
    std::mt19937 random(seed);
    std::deque<WorkItem> storage;
    DelayedList list;
    Model model;
    uint32_t posted = 0;
    auto sort = [&model] {
      std::stable_sort(model.begin(), model.end(), [](const ModelItem& a, const ModelItem& b) {
        const int32_t difference = TickDiff(a.key, b.key);
        return difference < 0 || (difference == 0 && a.age < b.age);
      });
    };
    for (int operation = 0; operation < 400; ++operation) {
      const uint32_t choice = random() % 11;
      if (choice < 7) {
        storage.emplace_back();
        WorkItem* item = &storage.back();
        item->dueOrAge = kBase + random() % 50;
        ASSERT_TRUE(list.Reserve());
        const bool becameHead = list.Insert(item);
        model.push_back(ModelItem{item, item->dueOrAge, posted++});
        sort();
        EXPECT_EQ(becameHead, model.front().item == item);
      } else if (choice < 9 && !model.empty()) {
        const size_t index = random() % model.size();
        list.Unlink(model[index].item);
        model.erase(model.begin() + static_cast<long>(index));
      } else if (!model.empty()) {
        ModelItem& entry = model[random() % model.size()];
        entry.key = kBase + random() % 50;
        list.Reschedule(entry.item, entry.key);
        sort();
      }
      ASSERT_EQ(list.Head(), model.empty() ? nullptr : model.front().item) << "seed " << seed;
    }
    for (const ModelItem& entry : model) EXPECT_EQ(list.PopDue(0, true), entry.item);
    EXPECT_TRUE(list.IsEmpty());
  }
}

// A delay beyond the longest step waits in steps; after each step the item
// goes back behind items due sooner, and in all it waits its whole delay.
TEST(DelayedListTest, ALongDelayStepsBackBehindItemsDueSooner) {
  WorkItem longItem, shortItem;
  DelayedList list;
  DelayedList::Arm(&longItem, 0, 0xFFFFFFFFu);
  ASSERT_TRUE(list.Reserve());
  list.Insert(&longItem);
  DelayedList::Arm(&shortItem, 0x7FFFFFF0u, 100);
  ASSERT_TRUE(list.Reserve());
  list.Insert(&shortItem);
  EXPECT_EQ(list.PopDue(0x7FFFFFFFu, false), nullptr);
  EXPECT_EQ(list.PopDue(0x80000054u, false), &shortItem);
  EXPECT_EQ(list.PopDue(0xFFFFFFFEu, false), nullptr);
  EXPECT_EQ(list.PopDue(0xFFFFFFFFu, false), &longItem);
}

// An item already overdue when a long delay is posted still comes first:
// the long delay's first step leaves room for items late by up to days.
TEST(DelayedListTest, AnOverdueItemComesBeforeALongDelayPostedLater) {
  const uint32_t kDayMs = 86400000u;
  for (uint32_t lateMs : {1u, 95u, kDayMs, 10 * kDayMs}) {
    for (uint32_t longMs : {0x7FFFFFFFu, 0x80000000u, 0x80000001u, 0xC0000000u, 0xFFFFFFFFu}) {
      WorkItem overdue, longItem;
      DelayedList list;
      ASSERT_TRUE(list.Reserve() && list.Reserve());
      DelayedList::Arm(&overdue, 0, 5);
      list.Insert(&overdue);
      const uint32_t now = 5 + lateMs;
      DelayedList::Arm(&longItem, now, longMs);
      EXPECT_FALSE(list.Insert(&longItem));
      EXPECT_EQ(list.PopDue(now, false), &overdue) << lateMs << " late, " << longMs;
      // Woken at each due tick, as the loop is, until the whole delay is up.
      uint32_t tick = now;
      while (list.PopDue(tick, false) == nullptr) tick = longItem.dueOrAge;
      EXPECT_EQ(tick - now, longMs);
    }
  }
}

}  // namespace
}  // namespace Quillan
