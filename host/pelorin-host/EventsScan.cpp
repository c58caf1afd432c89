#include "EventsScan.h"

namespace PelorinHost {

void EventsScan::Scan(PelorinRecording::RecordingReader& reader, const std::atomic<bool>& cancel,
                      ScanResult* result) {
  ScanResult scan;
  while (!cancel.load(std::memory_order_relaxed)) {
    const Quillan::ReadStatus status = reader.Next();
    if (status == Quillan::ReadStatus::kEndOfInput) break;
    scan.lines = reader.Number();
    if (status != Quillan::ReadStatus::kRecord) {
      scan.complete = false;
      scan.stopLine = scan.lines;
      scan.reason = status == Quillan::ReadStatus::kReadError ? "read error"
                                                              : reader.Shape().StopReason();
      break;
    }
    ++scan.records;
    if (reader.TagKnown()) ++scan.playable;
    scan.lastTime = reader.Record().time;
  }
  *result = scan;
}

}  // namespace PelorinHost
