#include "runtime/WorkItemPool.h"

#include <new>

namespace Quillan {

WorkItemPool::~WorkItemPool() {
  while (m_blocks != nullptr) {
    Block* block = m_blocks;
    m_blocks = block->next;
    delete[] block->items;
    delete block;
  }
}

WorkItem* WorkItemPool::Acquire() {
  if (m_free == nullptr && !Grow()) return nullptr;
  WorkItem* item = m_free;
  m_free = item->next;
  *item = WorkItem();
  return item;
}

void WorkItemPool::GiveBack(WorkItem* item) {
  item->next = m_free;
  m_free = item;
}

bool WorkItemPool::Grow() {
  const uint32_t count = m_blocks == nullptr ? kFirstBlockSize : kLaterBlockSize;
  Block* block = new (std::nothrow) Block{m_blocks, nullptr};
  if (block == nullptr) return false;
  block->items = new (std::nothrow) WorkItem[count];
  if (block->items == nullptr) {
    delete block;
    return false;
  }
  m_blocks = block;
  for (uint32_t index = 0; index < count; ++index) GiveBack(&block->items[index]);
  return true;
}

}  // namespace Quillan
