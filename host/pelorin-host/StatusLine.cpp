#include "StatusLine.h"

#include <algorithm>
#include <cstdio>
#include <ctime>

#include "Output.h"
#include "host/common/TimeText.h"

namespace PelorinHost {

std::string StatusLine::FormatUtc(int64_t seconds) {
  if (seconds <= 0) return "--";
  const time_t value = static_cast<time_t>(seconds);
  if (static_cast<int64_t>(value) != seconds) return "--";  // beyond a 32-bit time_t
  tm parts{};
  if (gmtime_r(&value, &parts) == nullptr) return "--";
  char text[40];
  std::snprintf(text, sizeof(text), "%04d-%02d-%02d %02d:%02d:%02d UTC", parts.tm_year + 1900,
                parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec);
  return text;
}

std::string StatusLine::FormatSpeed(double factor) {
  char text[32];
  std::snprintf(text, sizeof(text), "%.3g", factor);
  return std::string(text) + "x";
}

std::string StatusLine::Format(const StatusInfo& info) {
  std::string text;
  if (info.line > 0 && info.lines > 0) {
    text = "line " + std::to_string(info.line) + " of " + std::to_string(info.lines) + " (" +
           std::to_string(info.line * 100 / std::max(info.lines, info.line)) + " %)  ";
  } else {
    text = "records " + std::to_string(info.records) + "  ";
  }
  text += FormatUtc(info.recordTime);
  if (!info.speed.empty()) text += "  speed " + info.speed;
  if (info.leftMs >= 0) text += "  left " + PelorinTools::TimeText::Duration(info.leftMs);
  if (info.lagMs >= 0) text += "  behind " + PelorinTools::TimeText::Duration(info.lagMs);
  if (!info.state.empty()) text += "  " + info.state;
  return text;
}

void StatusLine::Update(const StatusInfo& info) {
  if (!m_enabled) return;
  const std::string text = Format(info);
  if (m_plain) {
    m_output.WriteStatusLine(text);
    return;
  }
  if (text == m_shown && m_output.StatusShown()) return;
  m_shown = text;
  m_output.ShowStatus(text);
}

void StatusLine::Clear() {
  if (!m_enabled || m_plain) return;
  m_output.ClearStatus();
  m_shown.clear();
}

}  // namespace PelorinHost
