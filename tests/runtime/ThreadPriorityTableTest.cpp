// The thread priority table: built in, supplied by the configuration
// reader, and cells outside it.

#include "runtime/ThreadPriorityTable.h"

#include <gtest/gtest.h>

#include <utility>

#include "FerrixCfgFileReader.h"

namespace Quillan {
namespace {

uint32_t Cell(int priorityClass, int level) {
  uint32_t priority = 0;
  EXPECT_TRUE(ThreadPriorityTable::Lookup(priorityClass, level, &priority));
  return priority;
}

TEST(ThreadPriorityTableTest, BuiltInUnlessTheReaderSuppliesATableAndNothingOutside) {
  ThreadPriorityTable::Load();
  for (int level = 0; level < 8; ++level) {
    for (int priorityClass = 0; priorityClass < 3; ++priorityClass) {
      EXPECT_EQ(Cell(priorityClass, level), 13u);
    }
    EXPECT_EQ(Cell(3, level), 13u - level);  // 10 for a Thread's default cell (3, 3)
  }
  uint32_t configured[32];
  for (uint32_t index = 0; index < 32; ++index) configured[index] = 100 + index;
  FerrixCfgFileReader_SetPriorityTableForTesting(configured);
  ThreadPriorityTable::Load();
  EXPECT_EQ(Cell(1, 2), 110u);  // level + class * 8, kept as supplied
  EXPECT_EQ(Cell(3, 7), 131u);
  FerrixCfgFileReader_SetPriorityTableForTesting(nullptr);
  ThreadPriorityTable::Load();
  EXPECT_EQ(Cell(1, 2), 13u);
  uint32_t priority = 77;
  const std::pair<int, int> outside[] = {{4, 0}, {0, 8}, {-1, 0}, {0, -1}};
  for (const auto& cell : outside) {
    EXPECT_FALSE(ThreadPriorityTable::Lookup(cell.first, cell.second, &priority)) << cell.first;
  }
  EXPECT_EQ(priority, 77u);
}

}  // namespace
}  // namespace Quillan
