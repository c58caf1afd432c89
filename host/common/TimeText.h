#pragma once
// TimeText: how reports write record time stamps, date-times and durations.
// Date-times are UTC, from proleptic Gregorian calendar arithmetic that
// holds past 2038 whatever the width of time_t.
// Stateless.

#include <cstdint>
#include <string>

namespace PelorinTools {

class TimeText {
 public:
  enum class Style {
    kText,  // 2014-11-16 09:51:00.25 UTC
    kIso,   // 2014-11-16T09:51:00.25Z
  };

  // The UTC date-time of a record time stamp, fraction of a second included
  // (to the millisecond). A time stamp that is no date-time (0 or less,
  // beyond 2106, as the module's 32-bit seconds) gives an empty text.
  static std::string DateTime(double seconds, Style style);

  // A number in its shortest form that reads back exactly ("1416131460.25").
  static std::string Number(double value);

  // A duration for people: "1h02m03.25s", "3m07s", "0.5s", "-2s".
  static std::string Duration(int64_t milliseconds);

  // Seconds rounded to the nearest millisecond.
  static int64_t RoundedMs(double seconds);
};

}  // namespace PelorinTools
