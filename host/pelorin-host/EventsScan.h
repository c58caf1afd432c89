#pragma once
// EventsScan: reads an events file with the module's own line rules (a line
// ends at LF, CR LF or a lone CR; the byte after a lone CR starts the next
// line as plain data; a line is malformed when it is empty, has no blank,
// starts with a blank or has an empty tag) to tell where playback will stop
// and how many records it offers before that. The host cannot ask the
// module, so it finds out itself; constant memory, any file size.
// Lines come from EventLines, the host's one line splitter. A value used
// by one thread.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

#include "host/common/LineShape.h"

namespace PelorinHost {

class EventLines;

struct ScanResult {
  bool complete = true;    // playback reaches the end of the file
  uint64_t lines = 0;      // lines up to the end or the stop
  uint64_t records = 0;    // well-formed records before the stop
  uint64_t playable = 0;   // of those, records with a tag the module plays
  double lastTime = 0.0;   // time of the last record before the stop, 0 when none
  uint64_t stopLine = 0;   // 1-based, when not complete
  std::string reason;      // why playback stops there, when not complete
};

class EventsScan {
 public:
  // Scans the lines of an open file up to the stop or the end, or until
  // `cancel` is set (the result then tells of the lines seen).
  static void Scan(EventLines& lines, const std::atomic<bool>& cancel, ScanResult* result);

 private:
  void Take(const char* bytes, size_t size, uint64_t offset);
  void EndLine();
  void Stop(const std::string& reason);
  bool Stopped() const { return !m_result.complete; }

  ScanResult m_result;
  uint64_t m_lines = 0;   // lines ended so far
  bool m_lineStarted = false;
  PelorinTools::LineShape m_line;
  std::string m_tag;  // the tag's first bytes
  std::string m_lastTimeText;  // of the last well-formed record
  bool m_inTag = false;
  bool m_shapeKnown = false;  // the line is a record; its other bytes do not matter
};

}  // namespace PelorinHost
