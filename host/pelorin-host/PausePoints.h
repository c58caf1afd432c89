#pragma once
// PausePoints: --pause-at. Each bound (T, +S or @N, read as --from reads
// them) names the first record of the selection that it reaches; playback
// is to stop before that record. The host cannot make the module stop
// between two records of its choice, but it is called inside the runner's
// step whenever a record makes an item: stopping there, the runner reads
// the next record ahead and does not play it until "start". So a pause
// belongs to the last record before it that makes an item (`after`); the
// records between, which make none, play after the start. A pause before
// the first item of the selection holds playback at the start instead.
// Resolve runs on the main thread before playback; After and the accessors
// from any thread afterwards (nothing changes then).

#include <cstdint>
#include <string>
#include <vector>

#include "host/recording/Selection.h"

namespace PelorinHost {

using PelorinRecording::Selection;
using PelorinRecording::SelectionBound;

struct PausePoint {
  uint64_t line = 0;       // the record playback stops before
  std::string recordTime;  // its time as a JSON number, as items carry it
  uint64_t after = 0;      // the record whose item stops playback, 0: none (at the start)
  std::string bound;       // as given
};

class PausePoints {
 public:
  // Reads the selected records of `recording` once; false with `error`
  // when it cannot be read.
  bool Resolve(const std::string& recording, const Selection& selection,
               const std::vector<std::string>& bounds, std::string* error);
  // The pause due once the record of `line` has made its item; null when none.
  const PausePoint* After(uint64_t line) const;
  // The pause before the first item of the selection; null when none.
  const PausePoint* AtStart() const;
  // Bounds that reach no record of the selection.
  const std::vector<std::string>& Unreached() const { return m_unreached; }

 private:
  std::vector<PausePoint> m_points;  // by line; one per `after`
  std::vector<std::string> m_unreached;
};

}  // namespace PelorinHost
