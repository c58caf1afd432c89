#pragma once
// TimelineBins: how many records each lane has in each stretch of time, in
// memory that does not grow with the file. Time is cut into columns of one
// width (a power of two times a microsecond); the columns that hold records
// always lie within kColumns of each other. When a record falls further
// out, the width doubles and neighbouring columns merge, so the columns end
// up between a half and a whole kColumns-th of the span. Each column also
// keeps the first and last time in it, exactly, so that gaps between
// columns have their true length. One thread.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace PelorinCheck {

class TimelineBins {
 public:
  static constexpr int64_t kColumns = 2048;

  // Adds a lane of empty columns; returns its index.
  size_t AddLane();

  // Counts a record of `lane` at `time` seconds, 0 < time < 2^32.
  void Add(size_t lane, double time);

  bool Empty() const { return m_records == 0; }
  // Earliest and latest time added.
  double First() const { return m_first; }
  double Last() const { return m_last; }

  // Columns are numbered from time 0; those between LowColumn and
  // HighColumn (inclusive) may hold records.
  int64_t LowColumn() const { return m_low; }
  int64_t HighColumn() const { return m_high; }
  uint64_t Count(size_t lane, int64_t column) const { return m_counts[Cell(lane, column)]; }
  uint64_t ColumnRecords(int64_t column) const { return m_totals[Slot(column)]; }
  // Earliest and latest time in a column that holds records.
  double ColumnFirst(int64_t column) const { return m_columnFirst[Slot(column)]; }
  double ColumnLast(int64_t column) const { return m_columnLast[Slot(column)]; }

 private:
  int64_t Column(double time) const;
  static size_t Slot(int64_t column) { return static_cast<size_t>(column % kColumns); }
  size_t Cell(size_t lane, int64_t column) const {
    return lane * static_cast<size_t>(kColumns) + Slot(column);
  }
  bool Fits(int64_t column) const;
  // Doubles the column width, merging column pairs.
  void Coarsen();

  double m_width = 1e-6;
  size_t m_lanes = 0;
  uint64_t m_records = 0;
  double m_first = 0.0;
  double m_last = 0.0;
  int64_t m_low = 0;
  int64_t m_high = 0;
  std::vector<uint64_t> m_counts;  // lane by lane, kColumns each, by Slot
  std::vector<uint64_t> m_totals;  // of all lanes, by Slot
  std::vector<double> m_columnFirst;
  std::vector<double> m_columnLast;
};

}  // namespace PelorinCheck
