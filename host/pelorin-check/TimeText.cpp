#include "host/pelorin-check/TimeText.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "runtime/DateTime.h"

namespace PelorinCheck {
namespace {

// ".25" for 250 ms, "" for 0.
std::string FractionText(int64_t milliseconds) {
  if (milliseconds == 0) return "";
  char text[8];
  std::snprintf(text, sizeof(text), ".%03d", static_cast<int>(milliseconds));
  std::string fraction = text;
  while (fraction.back() == '0') fraction.pop_back();
  return fraction;
}

}  // namespace

std::string TimeText::DateTime(double seconds, Style style) {
  const int64_t totalMs = RoundedMs(seconds);
  const int64_t whole = totalMs / 1000;
  if (totalMs <= 0 || whole > static_cast<int64_t>(UINT32_MAX)) return "";
  Quillan::DateTime dateTime;
  if (!Quillan::DateTimeFromSeconds(dateTime, static_cast<uint32_t>(whole))) return "";
  char text[48];
  std::snprintf(text, sizeof(text), "%04d-%02d-%02d%c%02d:%02d:%02d",
                static_cast<int>(dateTime.year), dateTime.month, dateTime.day,
                style == Style::kIso ? 'T' : ' ', dateTime.hour, dateTime.minute, dateTime.second);
  return text + FractionText(totalMs % 1000) + (style == Style::kIso ? "Z" : " UTC");
}

std::string TimeText::Number(double value) {
  char text[40];
  for (int precision = 15; precision <= 17; ++precision) {
    std::snprintf(text, sizeof(text), "%.*g", precision, value);
    if (std::strtod(text, nullptr) == value) break;
  }
  return text;
}

std::string TimeText::Duration(int64_t milliseconds) {
  std::string out = milliseconds < 0 ? "-" : "";
  const uint64_t total = milliseconds < 0 ? 0 - static_cast<uint64_t>(milliseconds)
                                          : static_cast<uint64_t>(milliseconds);
  const uint64_t seconds = total / 1000;
  const uint64_t hours = seconds / 3600;
  const unsigned minutes = static_cast<unsigned>(seconds / 60 % 60);
  const unsigned secs = static_cast<unsigned>(seconds % 60);
  char text[48];
  if (hours > 0) {
    std::snprintf(text, sizeof(text), "%lluh%02um%02u", static_cast<unsigned long long>(hours),
                  minutes, secs);
  } else if (minutes > 0) {
    std::snprintf(text, sizeof(text), "%um%02u", minutes, secs);
  } else {
    std::snprintf(text, sizeof(text), "%u", secs);
  }
  return out + text + FractionText(static_cast<int64_t>(total % 1000)) + "s";
}

int64_t TimeText::RoundedMs(double seconds) {
  const double ms = std::floor(seconds * 1000.0 + 0.5);
  // Far beyond any date a recording can carry; keeps the conversion defined.
  const double limit = 9.0e15;
  if (ms >= limit) return static_cast<int64_t>(limit);
  if (ms <= -limit) return -static_cast<int64_t>(limit);
  return static_cast<int64_t>(ms);
}

}  // namespace PelorinCheck
