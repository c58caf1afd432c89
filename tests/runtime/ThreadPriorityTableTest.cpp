// The thread priority table: built in, supplied by the configuration
// reader, and cells outside it.

#include "runtime/ThreadPriorityTable.h"

#include <gtest/gtest.h>

#include "FerrixCfgFileReader.h"

namespace Quillan {
namespace {

uint32_t Cell(int priorityClass, int level) {
  uint32_t priority = 0;
  EXPECT_TRUE(ThreadPriorityTable::Lookup(priorityClass, level, &priority));
  return priority;
}

TEST(ThreadPriorityTableTest, BuiltInUnlessTheReaderSuppliesATable) {
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
}

TEST(ThreadPriorityTableTest, CellsOutsideTheTableAreRefused) {
  uint32_t priority = 77;
  EXPECT_FALSE(ThreadPriorityTable::Lookup(4, 0, &priority));
  EXPECT_FALSE(ThreadPriorityTable::Lookup(0, 8, &priority));
  EXPECT_FALSE(ThreadPriorityTable::Lookup(-1, 0, &priority));
  EXPECT_FALSE(ThreadPriorityTable::Lookup(0, -1, &priority));
  EXPECT_EQ(priority, 77u);
}

}  // namespace
}  // namespace Quillan
