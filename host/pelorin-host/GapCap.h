#pragma once
// GapCap: --max-gap. Follows the record times of one pass in file order and
// tells how much of the recording's time is skipped before each record:
// every gap longer than the limit is played as the limit, in whole
// milliseconds. The private events file moves its record times by it (the
// module paces each record from the one before), and the items' origins sum
// it for the summary; both walk the same records. A value; one thread.

#include <cstdint>
#include <string>

namespace PelorinHost {

class GapCap {
 public:
  // `maxGapSeconds` 0: no limit.
  explicit GapCap(double maxGapSeconds)
      : m_limitMs(static_cast<int64_t>(maxGapSeconds * 1000.0 + 0.5)) {}

  bool Limits() const { return m_limitMs > 0; }
  // A new pass: nothing skipped yet.
  void Restart();
  // The next record is at `time` (seconds); returns the milliseconds skipped
  // in the gap before it.
  int64_t Next(double time);
  // Milliseconds skipped in this pass so far: how far the current record
  // moves.
  int64_t SkippedMs() const { return m_skippedMs; }
  // `time` moved back by what was skipped, as an events file writes it:
  // up to three decimals, no trailing zeros.
  std::string Played(double time) const;

 private:
  const int64_t m_limitMs;
  bool m_started = false;
  double m_last = 0.0;
  int64_t m_skippedMs = 0;
};

}  // namespace PelorinHost
