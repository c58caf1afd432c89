#include "host/pelorin-check/TimelineBins.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace PelorinCheck {

size_t TimelineBins::AddLane() {
  m_counts.resize(m_counts.size() + static_cast<size_t>(kColumns), 0);
  if (m_totals.empty()) {
    m_totals.assign(static_cast<size_t>(kColumns), 0);
    m_columnFirst.assign(static_cast<size_t>(kColumns), 0.0);
    m_columnLast.assign(static_cast<size_t>(kColumns), 0.0);
  }
  return m_lanes++;
}

int64_t TimelineBins::Column(double time) const {
  return static_cast<int64_t>(std::floor(time / m_width));
}

bool TimelineBins::Fits(int64_t column) const {
  return m_records == 0 || std::max(m_high, column) - std::min(m_low, column) < kColumns;
}

void TimelineBins::Add(size_t lane, double time) {
  int64_t column = Column(time);
  while (!Fits(column)) {
    Coarsen();
    column = Column(time);
  }
  const size_t slot = Slot(column);
  if (m_records == 0) {
    m_first = m_last = time;
    m_low = m_high = column;
  }
  if (m_totals[slot] == 0) {
    m_columnFirst[slot] = m_columnLast[slot] = time;
  } else {
    m_columnFirst[slot] = std::min(m_columnFirst[slot], time);
    m_columnLast[slot] = std::max(m_columnLast[slot], time);
  }
  ++m_totals[slot];
  ++m_counts[Cell(lane, column)];
  ++m_records;
  m_first = std::min(m_first, time);
  m_last = std::max(m_last, time);
  m_low = std::min(m_low, column);
  m_high = std::max(m_high, column);
}

void TimelineBins::Coarsen() {
  TimelineBins merged;
  merged.m_width = m_width * 2.0;
  merged.m_lanes = m_lanes;
  merged.m_counts.assign(m_counts.size(), 0);
  merged.m_totals.assign(m_totals.size(), 0);
  merged.m_columnFirst.assign(m_columnFirst.size(), 0.0);
  merged.m_columnLast.assign(m_columnLast.size(), 0.0);
  for (int64_t column = m_low; column <= m_high; ++column) {
    const size_t from = Slot(column);
    if (m_totals[from] == 0) continue;
    const size_t to = Slot(column / 2);
    if (merged.m_totals[to] == 0) {
      merged.m_columnFirst[to] = m_columnFirst[from];
      merged.m_columnLast[to] = m_columnLast[from];
    } else {
      merged.m_columnFirst[to] = std::min(merged.m_columnFirst[to], m_columnFirst[from]);
      merged.m_columnLast[to] = std::max(merged.m_columnLast[to], m_columnLast[from]);
    }
    merged.m_totals[to] += m_totals[from];
    for (size_t lane = 0; lane < m_lanes; ++lane) {
      merged.m_counts[merged.Cell(lane, column / 2)] += m_counts[Cell(lane, column)];
    }
  }
  merged.m_records = m_records;
  merged.m_first = m_first;
  merged.m_last = m_last;
  merged.m_low = m_low / 2;
  merged.m_high = m_high / 2;
  *this = std::move(merged);
}

}  // namespace PelorinCheck
