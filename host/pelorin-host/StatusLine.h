#pragma once
// StatusLine: the one line on a terminal that tells a person where playback
// stands: the record time as a UTC date-time, the records played, the speed
// and whether playback runs. The main thread calls Update a few times a
// second; the line is redrawn only when its text changes.

#include <cstdint>
#include <string>

namespace PelorinHost {

class Output;

struct StatusInfo {
  int64_t recordTime = 0;  // seconds since 1970, 0 when not known yet
  uint32_t records = 0;
  std::string speed;  // e.g. "1.5x"
  std::string state;  // e.g. "playing", "stopped", "finished"
};

class StatusLine {
 public:
  // `enabled` false: Update and Clear do nothing.
  StatusLine(Output& output, bool enabled) : m_output(output), m_enabled(enabled) {}

  void Update(const StatusInfo& info);
  void Clear();

  static std::string Format(const StatusInfo& info);
  // "2014-11-16 09:51:00 UTC", or "--" for 0.
  static std::string FormatUtc(int64_t seconds);
  // A speed factor as a person reads it: "1x", "1.5x", "0.25x".
  static std::string FormatSpeed(double factor);

 private:
  Output& m_output;
  const bool m_enabled;
  std::string m_shown;
};

}  // namespace PelorinHost
