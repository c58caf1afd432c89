#include "PausePoints.h"

#include <algorithm>

#include "RecordTime.h"
#include "host/recording/SelectedRecords.h"

namespace PelorinHost {

using PelorinRecording::SelectedRecord;
using PelorinRecording::SelectedRecords;

bool PausePoints::Resolve(const std::string& recording, const Selection& selection,
                          const std::vector<std::string>& bounds, std::string* error) {
  std::vector<SelectionBound> parsed(bounds.size());
  for (size_t i = 0; i < bounds.size(); ++i) {
    if (!Selection::ParseBound("--pause-at", bounds[i], &parsed[i], error)) return false;
  }
  if (bounds.empty()) return true;
  std::vector<bool> reached(bounds.size(), false);
  size_t left = bounds.size();
  SelectedRecords records(selection, SelectedRecords::Keep::kYield);
  if (!records.Open(recording, error)) return false;
  SelectedRecord record;
  uint64_t lastItem = 0;
  while (left > 0 && records.Next(&record)) {
    for (size_t i = 0; i < bounds.size(); ++i) {
      if (reached[i] ||
          !Selection::Reached(parsed[i], record.line, record.time, records.FirstTime())) {
        continue;
      }
      reached[i] = true;
      --left;
      // Pauses with no item between them are one pause: the first.
      if (m_points.empty() || m_points.back().after != lastItem) {
        std::string time = record.timeText;
        RecordTime::MakeJsonNumber(&time);
        m_points.push_back(PausePoint{record.line, time, lastItem, bounds[i]});
      }
    }
    if (record.yield.Yields()) lastItem = record.line;
  }
  for (size_t i = 0; i < bounds.size(); ++i) {
    if (!reached[i]) m_unreached.push_back(bounds[i]);
  }
  return true;
}

const PausePoint* PausePoints::After(uint64_t line) const {
  if (line == 0) return nullptr;
  const auto point = std::find_if(m_points.begin(), m_points.end(),
                                  [line](const PausePoint& p) { return p.after == line; });
  return point == m_points.end() ? nullptr : &*point;
}

const PausePoint* PausePoints::AtStart() const {
  return !m_points.empty() && m_points.front().after == 0 ? &m_points.front() : nullptr;
}

}  // namespace PelorinHost
