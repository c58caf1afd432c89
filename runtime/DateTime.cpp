#include "runtime/DateTime.h"

#include <ctime>

namespace Quillan {
namespace {

// The conversions are done in proleptic Gregorian arithmetic on 64-bit
// numbers. They give what timegm and gmtime_r give, but never read the
// process's time-zone state and do not depend on the width of time_t (32
// bits on the target, which would end in 2038).

constexpr int64_t kSecondsPerDay = 86400;

int64_t FloorDiv(int64_t value, int64_t divisor) {
  const int64_t quotient = value / divisor;
  return (value % divisor != 0 && value < 0) ? quotient - 1 : quotient;
}

int64_t FloorMod(int64_t value, int64_t divisor) {
  return value - FloorDiv(value, divisor) * divisor;
}

// Days from 1970-01-01 to the first of `month` (1..12) in `year`.
int64_t DaysToMonthStart(int64_t year, int64_t month) {
  year -= month <= 2 ? 1 : 0;
  const int64_t era = FloorDiv(year, 400);
  const int64_t yearOfEra = year - era * 400;
  const int64_t shiftedMonth = month > 2 ? month - 3 : month + 9;  // March is 0
  const int64_t dayOfYear = (153 * shiftedMonth + 2) / 5;
  const int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * 146097 + dayOfEra - 719468;
}

struct CivilDate {
  int64_t year;
  int64_t month;  // 1..12
  int64_t day;    // 1..31
};

// The calendar date `days` after 1970-01-01.
CivilDate DateFromDays(int64_t days) {
  days += 719468;
  const int64_t era = FloorDiv(days, 146097);
  const int64_t dayOfEra = days - era * 146097;
  const int64_t yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const int64_t shiftedMonth = (5 * dayOfYear + 2) / 153;
  CivilDate date;
  date.day = dayOfYear - (153 * shiftedMonth + 2) / 5 + 1;
  date.month = shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9;
  date.year = yearOfEra + era * 400 + (date.month <= 2 ? 1 : 0);
  return date;
}

// Fills every field of `dateTime` from seconds since the epoch, as UTC.
void BreakDown(int64_t seconds, DateTime& dateTime) {
  const int64_t days = FloorDiv(seconds, kSecondsPerDay);
  const int64_t secondOfDay = seconds - days * kSecondsPerDay;
  const CivilDate date = DateFromDays(days);
  dateTime.second = static_cast<int16_t>(secondOfDay % 60);
  dateTime.minute = static_cast<int16_t>(secondOfDay / 60 % 60);
  dateTime.hour = static_cast<int16_t>(secondOfDay / 3600);
  dateTime.day = static_cast<int16_t>(date.day);
  dateTime.month = static_cast<int16_t>(date.month);
  dateTime.year = static_cast<int32_t>(date.year);
  dateTime.weekday = static_cast<int16_t>(FloorMod(days + 4, 7));  // 1970-01-01 was a Thursday
  dateTime.yearDay = static_cast<int16_t>(days - DaysToMonthStart(date.year, 1) + 1);
}

}  // namespace

uint32_t DateTimeToSeconds(const DateTime& dateTime) {
  if (dateTime.year == -1) return 0;
  // Months beyond 1..12 carry into the year; days, hours, minutes and seconds
  // out of range carry through the linear sum, as the C library normalises.
  const int64_t monthIndex = static_cast<int64_t>(dateTime.month) - 1;
  const int64_t year = static_cast<int64_t>(dateTime.year) + FloorDiv(monthIndex, 12);
  const int64_t month = FloorMod(monthIndex, 12) + 1;
  const int64_t days = DaysToMonthStart(year, month) + dateTime.day - 1;
  const int64_t seconds = days * kSecondsPerDay + dateTime.hour * int64_t{3600} +
                          dateTime.minute * int64_t{60} + dateTime.second;
  return static_cast<uint32_t>(seconds);
}

void CurrentDateTime(DateTime& dateTime) {
  BreakDown(static_cast<int64_t>(std::time(nullptr)), dateTime);
}

bool DateTimeFromSeconds(DateTime& dateTime, uint32_t seconds) {
  if (seconds == 0) {
    dateTime.second = -1;
    dateTime.minute = -1;
    dateTime.hour = -1;
    dateTime.day = -1;
    dateTime.month = -1;
    dateTime.year = -1;
    dateTime.weekday = -1;
    return false;
  }
  BreakDown(static_cast<int64_t>(seconds), dateTime);
  return true;
}

}  // namespace Quillan
