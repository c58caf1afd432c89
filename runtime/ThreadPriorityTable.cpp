#include "runtime/ThreadPriorityTable.h"

#include <atomic>

#include "FerrixCfgFileReader.h"

namespace Quillan {
namespace {

// Row `priorityClass`, column `level`. Only class 3 spreads its levels.
constexpr uint32_t kBuiltInTable[ThreadPriorityTable::kEntryCount] = {
    13, 13, 13, 13, 13, 13, 13, 13,  //
    13, 13, 13, 13, 13, 13, 13, 13,  //
    13, 13, 13, 13, 13, 13, 13, 13,  //
    13, 12, 11, 10, 9,  8,  7,  6,
};

std::atomic<uint32_t> g_table[ThreadPriorityTable::kEntryCount] = {
    13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13, 13,
    13, 13, 13, 13, 13, 13, 13, 13, 13, 12, 11, 10, 9,  8,  7,  6,
};

void Store(const uint32_t (&table)[ThreadPriorityTable::kEntryCount]) {
  for (int index = 0; index < ThreadPriorityTable::kEntryCount; ++index) {
    g_table[index].store(table[index], std::memory_order_relaxed);
  }
}

// Asks the reader to load its configuration and to fill `table`.
bool ReadConfiguredTable(uint32_t (&table)[ThreadPriorityTable::kEntryCount]) {
  FerrixCfgFileReader* reader = FerrixCfgFileReader_GetInstance();
  if (reader == nullptr) return false;
  reader->LoadConfig("ThreadPriorityMapper.cfg");
  reader = FerrixCfgFileReader_GetInstance();
  return reader != nullptr && reader->FillPriorityTable(table);
}

}  // namespace

void ThreadPriorityTable::Load() {
  uint32_t configured[kEntryCount] = {};
  Store(ReadConfiguredTable(configured) ? configured : kBuiltInTable);
}

bool ThreadPriorityTable::Lookup(int priorityClass, int level, uint32_t* priority) {
  if (priorityClass < 0 || priorityClass >= kClassCount) return false;
  if (level < 0 || level >= kLevelCount) return false;
  *priority = g_table[level + priorityClass * kLevelCount].load(std::memory_order_relaxed);
  return true;
}

}  // namespace Quillan
