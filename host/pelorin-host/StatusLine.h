#pragma once
// StatusLine: the one line on standard error that tells a person where
// playback stands: the line of the events file reached (of how many), the
// playback clock as a UTC date-time, the speed, the time left at that speed,
// how far playback is behind the recording's schedule and whether it runs.
// On a terminal it is redrawn in place, only when its text changes;
// elsewhere (--progress) it is a plain line each Update.
// Only the main thread calls it.

#include <cstdint>
#include <string>

namespace PelorinHost {

class Output;

struct StatusInfo {
  int64_t recordTime = 0;  // seconds since 1970, 0 when not known yet
  uint32_t records = 0;    // shown when the line is not known
  uint64_t line = 0;       // the line reached, 0 when not known
  uint64_t lines = 0;      // lines of the events file, 0 when not known
  int64_t leftMs = -1;     // time left at the current speed, -1 when not known
  int64_t lagMs = -1;      // behind the recording's schedule, -1 when not known
  std::string speed;  // e.g. "1.5x"
  double speedFactor = 0.0;  // of real-time and interactive playback, else 0
  std::string state;  // e.g. "playing", "stopped", "finished"
};

class StatusLine {
 public:
  // `enabled` false: Update and Clear do nothing. `plain`: whole lines, not
  // redrawn in place.
  StatusLine(Output& output, bool enabled, bool plain)
      : m_output(output), m_enabled(enabled), m_plain(plain) {}

  void Update(const StatusInfo& info);
  void Clear();

  static std::string Format(const StatusInfo& info);
  // "2014-11-16 09:51:00 UTC", or "--" for 0 and for times beyond the
  // module's 32-bit seconds.
  static std::string FormatUtc(int64_t seconds);
  // A speed factor as a person reads it: "1x", "1.5x", "0.25x".
  static std::string FormatSpeed(double factor);

 private:
  Output& m_output;
  const bool m_enabled;
  const bool m_plain;
  std::string m_shown;
};

}  // namespace PelorinHost
