#include "StatusLine.h"

#include <algorithm>
#include <cstdio>

#include "Output.h"
#include "host/common/TimeText.h"

namespace PelorinHost {

std::string StatusLine::FormatUtc(int64_t seconds) {
  // Calendar arithmetic of its own: past 2038 whatever the width of time_t.
  const std::string text = PelorinTools::TimeText::DateTime(static_cast<double>(seconds),
                                                            PelorinTools::TimeText::Style::kText);
  return text.empty() ? "--" : text;
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
