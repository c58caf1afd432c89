#include "host/pelorin-check/Timeline.h"

#include <algorithm>
#include <cstring>

#include "producers/TotCall.h"

namespace PelorinCheck {
namespace {

// A time stamp that is a date-time (as the module's 32-bit seconds) has a
// place on the time axis.
bool Placeable(double time) { return time > 0.0 && time < 4294967296.0; }

bool LaneIs(const Timeline::Lane& lane, const std::string& tag, const char* method,
            size_t methodSize) {
  return !lane.other && lane.tag == tag && lane.method.size() == methodSize &&
         std::memcmp(lane.method.data(), method, methodSize) == 0;
}

}  // namespace

std::string Timeline::LaneName(const Lane& lane) {
  if (lane.other) return "(other tags)";
  if (lane.tag != Quillan::TotCall::kTag) return lane.tag;
  return lane.tag + " " + (lane.method.empty() ? std::string("(no method)") : lane.method);
}

void Timeline::OnRecord(uint64_t /*line*/, const Quillan::Record& record) {
  const size_t lane = LaneOf(record);
  ++m_lanes[lane].records;
  ++m_records;
  m_hasTime = Placeable(record.time);
  m_time = record.time;
  if (m_hasTime) {
    m_bins.Add(lane, record.time);
  } else {
    ++m_unplaced;
  }
}

size_t Timeline::LaneOf(const Quillan::Record& record) {
  std::string call;
  if (record.tag == Quillan::TotCall::kTag) call = Quillan::TotCall::Parse(record.payload).method;
  const char* method = call.data();
  const size_t methodSize = call.size();
  if (m_lastLane < m_lanes.size() && LaneIs(m_lanes[m_lastLane], record.tag, method, methodSize)) {
    return m_lastLane;
  }
  m_lastLane = FindOrAddLane(record.tag, method, methodSize);
  return m_lastLane;
}

size_t Timeline::FindOrAddLane(const std::string& tag, const char* method, size_t methodSize) {
  for (size_t i = 0; i < m_lanes.size(); ++i) {
    if (LaneIs(m_lanes[i], tag, method, methodSize)) return i;
  }
  if (tag.size() + methodSize > kMaxNameBytes || m_lanes.size() + 1 >= kMaxLanes) {
    return OtherLane();
  }
  Lane lane;
  lane.tag = tag;
  lane.method.assign(method, methodSize);
  m_lanes.push_back(lane);
  m_bins.AddLane();
  return m_lanes.size() - 1;
}

size_t Timeline::OtherLane() {
  for (size_t i = 0; i < m_lanes.size(); ++i) {
    if (m_lanes[i].other) return i;
  }
  Lane lane;
  lane.other = true;
  m_lanes.push_back(lane);
  m_bins.AddLane();
  return m_lanes.size() - 1;
}

void Timeline::OnDiagnostic(const Diagnostic& diagnostic) {
  switch (diagnostic.kind) {
    case DiagnosticKind::kTpegFileMissing:
      AddProblem(ProblemKind::kTpegFileMissing, diagnostic);
      break;
    case DiagnosticKind::kTimeBackwards:
      AddProblem(ProblemKind::kTimeBackwards, diagnostic);
      break;
    case DiagnosticKind::kMalformedLine:
    case DiagnosticKind::kBinaryData:
    case DiagnosticKind::kReadError:
      // Only the first such line ends playback; it is placed after the
      // latest record read before it.
      if (!m_ended) AddProblem(ProblemKind::kPlaybackEnds, diagnostic);
      m_ended = true;
      break;
    default:
      break;
  }
}

void Timeline::AddProblem(ProblemKind kind, const Diagnostic& diagnostic) {
  if (m_problems.size() >= kMaxProblems) {
    ++m_problemsNotKept;
    return;
  }
  Problem problem;
  problem.kind = kind;
  problem.line = diagnostic.line;
  problem.placed = m_hasTime;
  problem.time = m_time;
  problem.message = diagnostic.message;
  m_problems.push_back(problem);
}

void Timeline::OnFileChecked(const FileSummary& summary) {
  m_lines = summary.Lines();
  m_playedRecords = summary.PlayedRecords();
}

}  // namespace PelorinCheck
