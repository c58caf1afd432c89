// DateTime conversions: normalisation of out-of-range fields, the whole
// unsigned 32-bit range (but 0, which stands for no time).

#include "runtime/DateTime.h"

#include <gtest/gtest.h>

#include <ctime>
#include <vector>

namespace Quillan {
namespace {

using Fields = std::vector<int>;  // year, month, day, hour, minute, second

DateTime Make(const Fields& f) {
  DateTime dateTime;
  dateTime.year = f[0];
  dateTime.month = static_cast<int16_t>(f[1]);
  dateTime.day = static_cast<int16_t>(f[2]);
  dateTime.hour = static_cast<int16_t>(f[3]);
  dateTime.minute = static_cast<int16_t>(f[4]);
  dateTime.second = static_cast<int16_t>(f[5]);
  return dateTime;
}

// The six fields, then weekday and day of the year.
Fields All(const DateTime& d) {
  return {d.year, d.month, d.day, d.hour, d.minute, d.second, d.weekday, d.yearDay};
}

TEST(DateTime, OutOfRangeFieldsNormalise) {
  const Fields pairs[][2] = {
      {{2014, 13, 1, 0, 0, 0}, {2015, 1, 1, 0, 0, 0}},
      {{2014, 12, 31, 23, 59, 60}, {2015, 1, 1, 0, 0, 0}},
      {{2015, 1, 32, 0, 0, 0}, {2015, 2, 1, 0, 0, 0}},
      {{2015, 0, 1, 0, 0, 0}, {2014, 12, 1, 0, 0, 0}},
      {{2015, 3, 0, 0, 0, 0}, {2015, 2, 28, 0, 0, 0}},
      {{2100, 2, 29, 0, 0, 0}, {2100, 3, 1, 0, 0, 0}},
  };
  for (const auto& pair : pairs) {
    EXPECT_EQ(DateTimeToSeconds(Make(pair[0])), DateTimeToSeconds(Make(pair[1]))) << pair[0][0];
  }
}

// A sample of the whole range, and 29 February 2000 (a leap year: divisible
// by 400), 1 March 2100 (not one) and the last second.
TEST(DateTime, AgreesWithTheCLibraryAndRoundTrips) {
  std::vector<uint64_t> samples = {951782400u, 4107542400u, 0xffffffffu};
  for (uint64_t seconds = 1; seconds <= 0xffffffffu; seconds += 7919u * 3607u + 11u) {
    samples.push_back(seconds);
  }
  DateTime invalid;
  EXPECT_FALSE(DateTimeFromSeconds(invalid, 0));  // 0 stands for no time
  for (uint64_t seconds : samples) {
    DateTime d;
    ASSERT_TRUE(DateTimeFromSeconds(d, static_cast<uint32_t>(seconds)));
    ASSERT_EQ(DateTimeToSeconds(d), seconds);
    if (sizeof(time_t) < 8 && seconds > 0x7fffffffu) continue;
    const time_t value = static_cast<time_t>(seconds);
    tm e{};
    ASSERT_NE(gmtime_r(&value, &e), nullptr);
    ASSERT_EQ(All(d), (Fields{e.tm_year + 1900, e.tm_mon + 1, e.tm_mday, e.tm_hour, e.tm_min,
                              e.tm_sec, e.tm_wday, e.tm_yday + 1}))
        << seconds;
  }
}

}  // namespace
}  // namespace Quillan
