// DateTime conversions: UTC results whatever the local time zone, the
// invalid record, normalisation of out-of-range fields, the whole unsigned
// 32-bit range.

#include "runtime/DateTime.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

namespace Quillan {
namespace {

// Sets TZ for its lifetime and restores the previous setting.
class ScopedTimeZone {
 public:
  explicit ScopedTimeZone(const char* zone) {
    const char* previous = std::getenv("TZ");
    m_hadZone = previous != nullptr;
    if (m_hadZone) m_previous = previous;
    setenv("TZ", zone, 1);
    tzset();
  }
  ~ScopedTimeZone() {
    if (m_hadZone) {
      setenv("TZ", m_previous.c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }

 private:
  bool m_hadZone = false;
  std::string m_previous;
};

DateTime Make(int32_t year, int16_t month, int16_t day, int16_t hour, int16_t minute,
              int16_t second) {
  DateTime dateTime;
  dateTime.year = year;
  dateTime.month = month;
  dateTime.day = day;
  dateTime.hour = hour;
  dateTime.minute = minute;
  dateTime.second = second;
  return dateTime;
}

void ExpectFields(const DateTime& d, int32_t year, int month, int day, int hour, int minute,
                  int second, int weekday, int yearDay) {
  EXPECT_EQ(d.year, year);
  EXPECT_EQ(d.month, month);
  EXPECT_EQ(d.day, day);
  EXPECT_EQ(d.hour, hour);
  EXPECT_EQ(d.minute, minute);
  EXPECT_EQ(d.second, second);
  EXPECT_EQ(d.weekday, weekday);
  EXPECT_EQ(d.yearDay, yearDay);
}

TEST(DateTime, InvalidRecord) {
  DateTime dateTime = Make(2020, 5, 6, 7, 8, 9);
  dateTime.yearDay = 42;
  EXPECT_FALSE(DateTimeFromSeconds(dateTime, 0));
  ExpectFields(dateTime, -1, -1, -1, -1, -1, -1, -1, 42);  // yearDay left alone
  EXPECT_EQ(DateTimeToSeconds(dateTime), 0u);
  EXPECT_EQ(DateTimeToSeconds(DateTime()), 0u);
}

TEST(DateTime, BreakDownKnownDates) {
  DateTime d;
  ASSERT_TRUE(DateTimeFromSeconds(d, 86400));
  ExpectFields(d, 1970, 1, 2, 0, 0, 0, 5, 2);
  ASSERT_TRUE(DateTimeFromSeconds(d, 1709251199));  // the last second of a leap day
  ExpectFields(d, 2024, 2, 29, 23, 59, 59, 4, 60);
  ASSERT_TRUE(DateTimeFromSeconds(d, 1416131460));
  ExpectFields(d, 2014, 11, 16, 9, 51, 0, 0, 320);
  ASSERT_TRUE(DateTimeFromSeconds(d, 4294967295u));  // beyond a 32-bit time_t
  ExpectFields(d, 2106, 2, 7, 6, 28, 15, 0, 38);
}

TEST(DateTime, UtcWhateverTheLocalZone) {
  for (const char* zone :
       {"UTC", "XYZ-14", "Pacific/Kiritimati", "ABC+12", "CET-1CEST,M3.5.0,M10.5.0/3"}) {
    SCOPED_TRACE(zone);
    ScopedTimeZone scoped(zone);
    EXPECT_EQ(DateTimeToSeconds(Make(2020, 1, 1, 0, 0, 0)), 1577836800u);
    EXPECT_EQ(DateTimeToSeconds(Make(2014, 7, 16, 12, 30, 0)), 1405513800u);  // summer time in CET
    DateTime d;
    ASSERT_TRUE(DateTimeFromSeconds(d, 1577836800u));
    ExpectFields(d, 2020, 1, 1, 0, 0, 0, 3, 1);
  }
}

TEST(DateTime, OutOfRangeFieldsNormalise) {
  const uint32_t newYear2015 = DateTimeToSeconds(Make(2015, 1, 1, 0, 0, 0));
  EXPECT_EQ(DateTimeToSeconds(Make(2014, 13, 1, 0, 0, 0)), newYear2015);
  EXPECT_EQ(DateTimeToSeconds(Make(2014, 12, 31, 23, 59, 60)), newYear2015);
  EXPECT_EQ(DateTimeToSeconds(Make(2014, 12, 31, 24, 0, 0)), newYear2015);
  EXPECT_EQ(DateTimeToSeconds(Make(2015, 1, 32, 0, 0, 0)),
            DateTimeToSeconds(Make(2015, 2, 1, 0, 0, 0)));
  EXPECT_EQ(DateTimeToSeconds(Make(2015, 1, 1, 10, 60, 0)),
            DateTimeToSeconds(Make(2015, 1, 1, 11, 0, 0)));
  EXPECT_EQ(DateTimeToSeconds(Make(2015, 0, 1, 0, 0, 0)),
            DateTimeToSeconds(Make(2014, 12, 1, 0, 0, 0)));
  EXPECT_EQ(DateTimeToSeconds(Make(2015, 3, 0, 0, 0, 0)),
            DateTimeToSeconds(Make(2015, 2, 28, 0, 0, 0)));
}

TEST(DateTime, AgreesWithTheCLibraryAndRoundTrips) {
  for (uint64_t seconds = 1; seconds <= 0xffffffffu; seconds += 7919u * 3607u + 11u) {
    DateTime d;
    ASSERT_TRUE(DateTimeFromSeconds(d, static_cast<uint32_t>(seconds)));
    ASSERT_EQ(DateTimeToSeconds(d), seconds);
    if (sizeof(time_t) < 8 && seconds > 0x7fffffffu) continue;
    const time_t value = static_cast<time_t>(seconds);
    tm expected{};
    ASSERT_NE(gmtime_r(&value, &expected), nullptr);
    ExpectFields(d, expected.tm_year + 1900, expected.tm_mon + 1, expected.tm_mday,
                 expected.tm_hour, expected.tm_min, expected.tm_sec, expected.tm_wday,
                 expected.tm_yday + 1);
    if (HasFailure()) FAIL() << "at " << seconds;
  }
}

TEST(DateTime, CurrentTimeIsNow) {
  ScopedTimeZone scoped("XYZ-14");
  const uint32_t before = static_cast<uint32_t>(time(nullptr));
  DateTime now;
  CurrentDateTime(now);
  const uint32_t after = static_cast<uint32_t>(time(nullptr));
  EXPECT_GE(DateTimeToSeconds(now), before);
  EXPECT_LE(DateTimeToSeconds(now), after);
  EXPECT_GE(now.yearDay, 1);
}

}  // namespace
}  // namespace Quillan
