#pragma once
// Timeline: what the picture of one events file shows, gathered as a
// CheckObserver during the checker's single pass: the records of each lane
// (one per tag, and one per method of "$TOT" calls) binned over time, and
// the problems that have a place in time: a "setNewData" file that is
// missing, a time stamp that goes back, and the line where playback ends.
//
// Memory does not grow with the file: at most kMaxLanes lanes (further
// lanes, and names longer than kMaxNameBytes, share one "other" lane) and
// the first kMaxProblems problems (the rest are only counted). Records whose
// time is no date-time (0 or less, or past 2106) are counted but not
// placed. TimelineWriter draws it. One thread.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "host/pelorin-check/CheckObserver.h"
#include "host/pelorin-check/TimelineBins.h"

namespace PelorinCheck {

class Timeline : public CheckObserver {
 public:
  static constexpr size_t kMaxLanes = 32;
  static constexpr size_t kMaxNameBytes = 64;
  static constexpr size_t kMaxProblems = 100;

  struct Lane {
    std::string tag;
    std::string method;  // of "$TOT" lanes
    bool other = false;  // the lane of everything that did not get its own
    uint64_t records = 0;
  };

  enum class ProblemKind { kTpegFileMissing, kTimeBackwards, kPlaybackEnds };

  struct Problem {
    ProblemKind kind = ProblemKind::kPlaybackEnds;
    uint64_t line = 0;
    bool placed = false;  // `time` holds where it happens
    double time = 0.0;
    std::string message;
  };

  // `file`: the events file's name, for the title.
  explicit Timeline(std::string file) : m_file(std::move(file)) {}

  void OnRecord(uint64_t line, const Quillan::Record& record) override;
  void OnDiagnostic(const Diagnostic& diagnostic) override;
  void OnFileChecked(const FileSummary& summary) override;

  // The name a lane is shown with.
  static std::string LaneName(const Lane& lane);

  const std::string& File() const { return m_file; }
  uint64_t Lines() const { return m_lines; }
  uint64_t PlayedRecords() const { return m_playedRecords; }
  uint64_t Records() const { return m_records; }
  uint64_t Unplaced() const { return m_unplaced; }
  const std::vector<Lane>& Lanes() const { return m_lanes; }
  const TimelineBins& Bins() const { return m_bins; }
  const std::vector<Problem>& Problems() const { return m_problems; }
  uint64_t ProblemsNotKept() const { return m_problemsNotKept; }

 private:
  size_t LaneOf(const Quillan::Record& record);
  size_t FindOrAddLane(const std::string& tag, const char* method, size_t methodSize);
  size_t OtherLane();
  void AddProblem(ProblemKind kind, const Diagnostic& diagnostic);

  std::string m_file;
  uint64_t m_lines = 0;
  uint64_t m_playedRecords = 0;
  uint64_t m_records = 0;
  uint64_t m_unplaced = 0;
  std::vector<Lane> m_lanes;
  size_t m_lastLane = 0;
  TimelineBins m_bins;
  bool m_hasTime = false;  // of the latest record: where problems found now are placed
  double m_time = 0.0;
  bool m_ended = false;
  std::vector<Problem> m_problems;
  uint64_t m_problemsNotKept = 0;
};

}  // namespace PelorinCheck
