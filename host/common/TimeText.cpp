#include "host/common/TimeText.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>


namespace PelorinTools {
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

struct CivilTime {
  int64_t year;
  int month, day, hour, minute, second;
};

// Days since 1970-01-01 to a date (Howard Hinnant's civil_from_days).
CivilTime FromSeconds(int64_t seconds) {
  const int64_t days = seconds / 86400;
  const int64_t secondOfDay = seconds % 86400;
  const int64_t shifted = days + 719468;  // days since 0000-03-01
  const int64_t era = shifted / 146097;
  const int64_t dayOfEra = shifted - era * 146097;
  const int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const int64_t monthIndex = (5 * dayOfYear + 2) / 153;  // March is 0
  CivilTime time;
  time.day = static_cast<int>(dayOfYear - (153 * monthIndex + 2) / 5 + 1);
  time.month = static_cast<int>(monthIndex < 10 ? monthIndex + 3 : monthIndex - 9);
  time.year = yearOfEra + era * 400 + (time.month <= 2 ? 1 : 0);
  time.hour = static_cast<int>(secondOfDay / 3600);
  time.minute = static_cast<int>(secondOfDay / 60 % 60);
  time.second = static_cast<int>(secondOfDay % 60);
  return time;
}

}  // namespace

std::string TimeText::DateTime(double seconds, Style style) {
  const int64_t totalMs = RoundedMs(seconds);
  const int64_t whole = totalMs / 1000;
  if (whole <= 0 || whole > static_cast<int64_t>(UINT32_MAX)) return "";
  const CivilTime civil = FromSeconds(whole);
  char text[48];
  std::snprintf(text, sizeof(text), "%04d-%02d-%02d%c%02d:%02d:%02d",
                static_cast<int>(civil.year), civil.month, civil.day,
                style == Style::kIso ? 'T' : ' ', civil.hour, civil.minute, civil.second);
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

}  // namespace PelorinTools
