// The ready queue against a plain per-item model of the ordering and aging
// rule: random inserts, loop steps (take the head, then age) and unlinks
// must leave both in the same order, also where priorities wrap.

#include "runtime/ReadyQueue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>
#include <vector>

namespace Quillan {
namespace {

// Every item on its own: inserted behind all items of at least its
// priority; aged head to tail, each moving forward past lower predecessors.
class ModelQueue {
 public:
  void Insert(uint32_t id, uint32_t priority) {
    size_t position = 0;
    for (size_t index = 0; index < m_items.size(); ++index) {
      if (m_items[index].priority >= priority) position = index + 1;
    }
    m_items.insert(m_items.begin() + static_cast<long>(position), Item{id, priority, 0});
  }
  void Step() {
    if (!m_items.empty()) m_items.erase(m_items.begin());
    for (size_t index = 0; index < m_items.size(); ++index) {
      Item item = m_items[index];
      item.age += 1;
      item.priority += item.age;
      size_t target = index;
      while (target > 0 && m_items[target - 1].priority < item.priority) --target;
      if (target < index && m_items[index - 1].priority < item.priority) {
        m_items.erase(m_items.begin() + static_cast<long>(index));
        m_items.insert(m_items.begin() + static_cast<long>(target), item);
      } else {
        m_items[index] = item;
      }
    }
  }
  void Unlink(uint32_t id) {
    for (size_t index = 0; index < m_items.size(); ++index) {
      if (m_items[index].id == id) {
        m_items.erase(m_items.begin() + static_cast<long>(index));
        return;
      }
    }
  }
  std::vector<uint32_t> Ids() const {
    std::vector<uint32_t> ids;
    for (const Item& item : m_items) ids.push_back(item.id);
    return ids;
  }

 private:
  struct Item {
    uint32_t id;
    uint32_t priority;
    uint32_t age;
  };
  std::vector<Item> m_items;
};

std::vector<uint32_t> IdsOf(const ReadyQueue& queue) {
  std::vector<uint32_t> ids;
  for (const WorkItem* item = queue.Head(); item != nullptr; item = item->next) {
    ids.push_back(item->id);
  }
  return ids;
}

void RunRandomTrace(uint32_t seed, uint32_t priorityBase) {
  std::mt19937 random(seed);
  std::deque<WorkItem> storage;
  std::vector<WorkItem*> queued;
  ReadyQueue queue;
  ModelQueue model;
  for (int operation = 0; operation < 3000; ++operation) {
    const uint32_t choice = random() % 10;
    if (choice < 5) {
      // A few priorities only, so that groups and ties are common.
      storage.emplace_back();
      WorkItem* item = &storage.back();
      item->id = static_cast<uint32_t>(storage.size());
      item->priority = priorityBase + (random() % 4) * 7;
      queue.Insert(item);
      model.Insert(item->id, item->priority);
      queued.push_back(item);
    } else if (choice < 9) {
      WorkItem* head = queue.PopHead();
      queue.Age();
      model.Step();
      if (head != nullptr) queued.erase(std::find(queued.begin(), queued.end(), head));
    } else if (!queued.empty()) {
      WorkItem* item = queued[random() % queued.size()];
      queue.Unlink(item);
      model.Unlink(item->id);
      queued.erase(std::find(queued.begin(), queued.end(), item));
    }
    ASSERT_EQ(IdsOf(queue), model.Ids()) << "seed " << seed << ", operation " << operation;
  }
}

TEST(ReadyQueueTest, OrderAndAgingMatchThePerItemRule) {
  for (uint32_t seed = 1; seed <= 20; ++seed) RunRandomTrace(seed, 10);
}

TEST(ReadyQueueTest, OrderAndAgingMatchThePerItemRuleWherePrioritiesWrap) {
  for (uint32_t seed = 1; seed <= 20; ++seed) RunRandomTrace(seed, 0xFFFFFF00u);
}

TEST(ReadyQueueTest, FindSeesEveryQueuedItem) {
  std::vector<WorkItem> items(5);
  ReadyQueue queue;
  for (uint32_t index = 0; index < items.size(); ++index) {
    items[index].id = index + 1;
    items[index].priority = index % 2;
    queue.Insert(&items[index]);
  }
  for (const WorkItem& item : items) EXPECT_EQ(queue.Find(item.id), &item);
  EXPECT_EQ(queue.Find(99), nullptr);
}

}  // namespace
}  // namespace Quillan
