// The thread priority table: built in, supplied by the configuration
// reader, and cells outside it.

#include "runtime/ThreadPriorityTable.h"

#include <gtest/gtest.h>

#include "FerrixCfgFileReader.h"

namespace Quillan {
namespace {

uint32_t Cell(int priorityClass, int level) {
  uint32_t priority = 77;
  return ThreadPriorityTable::Lookup(priorityClass, level, &priority) ? priority : 0;
}

TEST(ThreadPriorityTableTest, BuiltInUnlessTheReaderSuppliesATableAndNothingOutside) {
  ThreadPriorityTable::Load();
  EXPECT_EQ(Cell(0, 0), 13u);
  EXPECT_EQ(Cell(2, 7), 13u);
  EXPECT_EQ(Cell(3, 3), 10u);  // a Thread's default cell
  EXPECT_EQ(Cell(3, 7), 6u);
  uint32_t configured[32];
  for (uint32_t index = 0; index < 32; ++index) configured[index] = 100 + index;
  FerrixCfgFileReader_SetPriorityTableForTesting(configured);
  ThreadPriorityTable::Load();
  EXPECT_EQ(Cell(1, 2), 110u);  // level + class * 8, kept as supplied
  EXPECT_EQ(Cell(3, 7), 131u);
  FerrixCfgFileReader_SetPriorityTableForTesting(nullptr);
  ThreadPriorityTable::Load();
  EXPECT_EQ(Cell(1, 2), 13u);
  for (int outside : {Cell(4, 0), Cell(0, 8), Cell(-1, 0), Cell(0, -1)}) EXPECT_EQ(outside, 0);
}

}  // namespace
}  // namespace Quillan
