#pragma once
// EventsScan: reads an events file as the module does (RecordingReader) to
// tell where playback will stop, why, and how many records it offers before
// that. The host cannot ask the module, so it finds out itself; constant
// memory, any file size. Stateless.

#include <atomic>
#include <cstdint>
#include <string>

#include "host/recording/RecordingReader.h"

namespace PelorinHost {

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
  static void Scan(PelorinRecording::RecordingReader& reader, const std::atomic<bool>& cancel,
                   ScanResult* result);
};

}  // namespace PelorinHost
