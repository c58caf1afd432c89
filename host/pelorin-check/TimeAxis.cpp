#include "host/pelorin-check/TimeAxis.h"

#include <cmath>

#include "host/common/TimeText.h"

namespace PelorinCheck {
namespace {

using PelorinTools::TimeText;

const double kDay = 86400.0;
const double kWeek = 7 * kDay;
const double kSteps[] = {
    0.001,      0.002,      0.005,       0.01,        0.02,        0.05,      0.1,       0.2,
    0.5,        1,          2,           5,           10,          15,        30,        60,
    120,        300,        600,         900,         1800,        3600,      7200,      10800,
    21600,      43200,      kDay,        2 * kDay,    kWeek,       2 * kWeek, 4 * kWeek, 13 * kWeek,
    26 * kWeek, 52 * kWeek, 260 * kWeek, 520 * kWeek, 2600 * kWeek};

}  // namespace

double TimeAxis::Step(double span) {
  for (const double step : kSteps) {
    if (span / step <= kMaxTicks) return step;
  }
  return kSteps[sizeof(kSteps) / sizeof(kSteps[0]) - 1];
}

std::vector<TimeAxis::Tick> TimeAxis::Ticks(double first, double last) {
  const double step = Step(last - first);
  std::vector<Tick> ticks;
  std::string previousDate;
  for (double n = std::ceil(first / step); n * step <= last; n += 1.0) {
    // "2014-11-16 09:51:00.25 UTC": the date, then the clock.
    const std::string text = TimeText::DateTime(n * step, TimeText::Style::kText);
    const size_t blank = text.find(' ');
    if (blank == std::string::npos) continue;
    Tick tick;
    tick.at = n * step;
    const std::string date = text.substr(0, blank);
    if (date != previousDate) tick.date = date;
    previousDate = date;
    if (step < kDay) tick.clock = text.substr(blank + 1, text.rfind(' ') - blank - 1);
    ticks.push_back(tick);
  }
  return ticks;
}

}  // namespace PelorinCheck
