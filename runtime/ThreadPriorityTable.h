#pragma once
// ThreadPriorityTable: the process-wide map from a thread's priority cell
// (priority class 0..3, level 0..7) to its operating-system scheduling
// priority. Load() asks the head unit's configuration reader for the table
// of "ThreadPriorityMapper.cfg" and falls back to the built-in table; every
// Thread loads it when constructed and looks its cell up when it starts.
// Any thread may call; entries are single words read and written relaxed.

#include <cstdint>

namespace Quillan {

class ThreadPriorityTable {
 public:
  static constexpr int kClassCount = 4;
  static constexpr int kLevelCount = 8;
  static constexpr int kEntryCount = kClassCount * kLevelCount;

  // Fills the table from the configuration reader, or with the built-in
  // table when the reader supplies none.
  static void Load();

  // The entry of (priorityClass, level); false for a cell outside the table,
  // which a thread then treats as "keep the priority it was created with".
  static bool Lookup(int priorityClass, int level, uint32_t* priority);
};

}  // namespace Quillan
