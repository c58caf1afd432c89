#pragma once
// DateTime: a broken-down calendar time in UTC, and the conversions between
// it and seconds since 1970-01-01 00:00:00 UTC. Stateless free functions,
// callable from any thread; the results do not depend on the local time zone.

#include <cstdint>

namespace Quillan {

class DateTime {
 public:
  virtual ~DateTime() = default;

  int16_t second = -1;   // 0..60
  int16_t minute = -1;   // 0..59
  int16_t hour = -1;     // 0..23
  int16_t day = -1;      // day of month, 1..31
  int16_t month = -1;    // 1..12, January is 1
  int32_t year = -1;     // full year; -1 marks an invalid record
  int16_t weekday = 0;   // 0..6, 0 is Sunday
  int16_t yearDay = 0;   // 1..366, 1 January is 1

  bool IsValid() const { return year != -1; }
};

// Seconds since the epoch of `dateTime` read as UTC (out-of-range fields
// normalised as the C library does); 0 for an invalid record.
uint32_t DateTimeToSeconds(const DateTime& dateTime);

// Fills every field from the current system time, broken down as UTC.
void CurrentDateTime(DateTime& dateTime);

// Breaks `seconds` down as UTC; 0 marks the record invalid and gives false.
bool DateTimeFromSeconds(DateTime& dateTime, uint32_t seconds);

}  // namespace Quillan
