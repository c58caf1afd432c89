#include "host/pelorin-edit/ShiftedText.h"

#include <cmath>
#include <cstdint>

#include "host/common/TimeText.h"
#include "runtime/NumberText.h"

namespace PelorinEdit {

int ShiftedText::TimeStamps::SetField(int field, const std::string& value) {
  if (field == kTimeStamp) spans.emplace_back(StoringValueOffset(), value.size());
  return TmcMessageProducer::SetField(field, value);
}

bool ShiftedText::Decimal(std::string_view text, double seconds, std::string* out) {
  size_t pos = 0;
  bool negative = false;
  if (pos < text.size() && (text[pos] == '-' || text[pos] == '+')) negative = text[pos++] == '-';
  int64_t scaled = 0;
  int digits = 0;
  int decimals = -1;  // digits after the mark; -1 while none
  char mark = 0;
  for (; pos < text.size(); ++pos) {
    const char c = text[pos];
    if ((c == '.' || c == ',') && mark == 0) {
      mark = c;
      decimals = 0;
    } else if (c >= '0' && c <= '9') {
      if (++digits > 18) return false;
      scaled = scaled * 10 + (c - '0');
      if (mark != 0) ++decimals;
    } else {
      return false;
    }
  }
  if (digits == 0 || decimals > 9 || decimals == 0) return false;
  const int places = decimals < 0 ? 0 : decimals;
  int64_t unit = 1;
  for (int i = 0; i < places; ++i) unit *= 10;
  const double delta = std::llround(seconds * static_cast<double>(unit));
  if (std::fabs(delta) > 4e18) return false;
  int64_t moved = (negative ? -scaled : scaled) + static_cast<int64_t>(delta);
  out->clear();
  if (moved < 0) {
    out->push_back('-');
    moved = -moved;
  }
  out->append(std::to_string(moved / unit));
  if (places > 0) {
    std::string fraction = std::to_string(moved % unit);
    out->push_back(mark);
    out->append(static_cast<size_t>(places) - fraction.size(), '0');
    out->append(fraction);
  }
  return true;
}

std::string ShiftedText::Time(std::string_view text, double time, double seconds) {
  std::string moved;
  if (Decimal(text, seconds, &moved)) return moved;
  double read = 0.0;
  if (!Quillan::ParseDecimal(std::string(text), &read)) return std::string(text);
  return PelorinTools::TimeText::Number(time + seconds);
}

std::string ShiftedText::Line(std::string_view line, size_t timeTextLength,
                              const std::string& newTime, const std::string& tag,
                              const std::string& payload, size_t payloadOffset, double seconds) {
  std::string out = newTime;
  std::string_view rest = line.substr(timeTextLength);
  m_timeStamps.spans.clear();
  if (seconds == 0.0 || tag != "$TMC" || !m_timeStamps.ParseFields(payload)) {
    out.append(rest);
    return out;
  }
  // Values are rewritten from the payload's start on, each with the bytes
  // before it kept.
  const size_t head = payloadOffset - timeTextLength;
  size_t kept = 0;
  std::string value;
  for (const auto& span : m_timeStamps.spans) {
    if (!Decimal(payload.substr(span.first, span.second), seconds, &value)) continue;
    out.append(rest.substr(kept, head + span.first - kept));
    out.append(value);
    kept = head + span.first + span.second;
  }
  out.append(rest.substr(kept));
  return out;
}

}  // namespace PelorinEdit
