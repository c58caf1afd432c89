#pragma once
// PlaybackSummary: the figures of a run that tell how playback went: the
// records the module dispatched to a producer per tag, those it dropped (an
// unknown tag, a payload it cannot use), the wall time and the mean speed
// (recorded time played per wall time), how far playback was behind the
// recording and the longest wait on the online traffic service; where
// playback stopped short of the end of the file comes from the events scan.
// The "finished" JSON item and the summary on standard error are written
// from it, so both tell the same. A value.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "LagMeter.h"

namespace PelorinTools {
class JsonWriter;
}

namespace PelorinHost {

// Records as the module read them, counted while their items are followed.
struct RecordTally {
  // Records handed to a producer, per tag in order of first sight.
  std::vector<std::pair<std::string, uint64_t>> byTag;
  uint64_t unknownTag = 0;
  uint64_t badPayload = 0;
  double spanSeconds = 0.0;  // recorded time played, summed over passes
  bool capsGaps = false;      // --max-gap: long gaps were shortened
  double skippedSeconds = 0.0;  // the recorded time they skipped

  void Count(const std::string& tag, bool known, bool yields);
};

struct PlaybackSummary {
  bool tallyKnown = false;  // false when the host does not read the recording
  RecordTally tally;
  double wallSeconds = 0.0;
  LagMeter::Figures lag;

  double MeanSpeed() const { return wallSeconds > 0.0 ? tally.spanSeconds / wallSeconds : 0.0; }
  // The figures as members of the "finished" item.
  void AppendJson(PelorinTools::JsonWriter& json) const;
  // The figures as fields of the readable "finished" item.
  void AppendFields(std::string& line) const;
  // The summary for standard error, lines without the program name (where
  // and why playback stopped short is told before it, by the host).
  std::vector<std::string> Lines() const;
};

}  // namespace PelorinHost
