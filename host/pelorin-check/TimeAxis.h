#pragma once
// TimeAxis: where the ticks of a UTC time axis go and what they say. The
// step is the first of 1, 2 or 5 units (milliseconds to weeks, with 15 and
// 30 seconds and minutes and 3, 6 and 12 hours among them) that gives at
// most kMaxTicks ticks over the span; ticks sit on whole multiples of the
// step counted from 1970 (so days begin at midnight UTC). Stateless.

#include <string>
#include <vector>

namespace PelorinCheck {

class TimeAxis {
 public:
  static constexpr int kMaxTicks = 10;

  struct Tick {
    double at = 0.0;    // seconds since 1970
    std::string date;   // "2014-11-16"; empty when the tick before shows the same date
    std::string clock;  // "09:51:00", with a fraction for steps under a second;
                        // empty for steps of a day or more
  };

  // The step between ticks, in seconds, for a span of `span` seconds.
  static double Step(double span);
  // The ticks between `first` and `last` (both date-times).
  static std::vector<Tick> Ticks(double first, double last);
};

}  // namespace PelorinCheck
