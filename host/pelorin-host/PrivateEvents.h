#pragma once
// PrivateEvents: the events file that the module plays when only part of a
// recording is played or it is played repeatedly, written by the host into
// its private storage root: only the selected records, each keeping its
// bytes (line ends become LF, or a lone CR before a line that starts with a
// CR). With --max-gap, record times after a long gap move back by the
// time skipped (GapCap), so that the module plays the gap as the limit.
// - A regular file holding one pass, for the interactive runner, which
//   rewinds it for every replay.
// - A named pipe for the batched and real-time runners, which play a file
//   once: a thread of this class feeds it pass after pass (--loop), reading
//   the recording again for each, in constant memory.
// Create and Stop run on the main thread; the feeding thread writes only the
// pipe. The destructor stops the thread and removes the file.

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

#include "host/recording/SelectedRecords.h"
#include "host/recording/Selection.h"

namespace PelorinHost {

using PelorinRecording::SelectedRecord;
using PelorinRecording::SelectedRecords;
using PelorinRecording::Selection;

class PrivateEvents {
 public:
  // Where the module finds it, and its name in the storage root's folder.
  static const char kModulePath[];
  static const char kFileName[];

  // `passes` 0: until stopped; `maxGapSeconds` 0: gaps as recorded.
  PrivateEvents(const Selection& selection, uint32_t passes, double maxGapSeconds)
      : m_selection(selection), m_passes(passes), m_maxGapSeconds(maxGapSeconds) {}
  ~PrivateEvents();
  PrivateEvents(const PrivateEvents&) = delete;
  PrivateEvents& operator=(const PrivateEvents&) = delete;

  // False with `error` when the recording cannot be read or the file not
  // written.
  bool Create(const std::string& recording, const std::string& path, bool piped,
              std::string* error);
  void Stop();
  // Records in one pass of a regular file.
  uint64_t Records() const { return m_records; }

  // The private file's bytes for `passes` passes of the recording (tests).
  static bool Text(const Selection& selection, const std::string& recording, uint32_t passes,
                   double maxGapSeconds, std::string* text);

 private:
  class Writer;

  void Feed();

  const Selection& m_selection;
  const uint32_t m_passes;
  const double m_maxGapSeconds;
  std::string m_recording;
  std::string m_path;
  uint64_t m_records = 0;
  std::atomic<bool> m_stop{false};
  std::thread m_feeder;
};

}  // namespace PelorinHost
