// Record times are read by a short path for plain decimals and by strtod
// for everything else; both must give the very same double, or --from,
// --until and the recorded time played would drift from the module's.

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>

#include "RecordTime.h"

namespace PelorinHost {
namespace {

TEST(HostRecordTime, PlainDecimalsReadAsStrtodReadsThem) {
  std::mt19937 random(20141116);
  for (int i = 0; i < 20000; ++i) {
    // 1 to 18 digits: across the length up to which the short path is exact.
    std::string text;
    const int digits = 1 + static_cast<int>(random() % 18);
    for (int d = 0; d < digits; ++d) text += static_cast<char>('0' + random() % 10);
    const size_t point = random() % (text.size() + 2);
    if (point <= text.size()) text.insert(point, ".");
    double seconds = -1.0;
    EXPECT_TRUE(RecordTime::Parse(text, &seconds)) << text;
    EXPECT_EQ(seconds, std::strtod(text.c_str(), nullptr)) << text;
  }
}

// Items carry the time as written where JSON takes it as it stands; the
// short path for plain digits must not let through what JSON refuses.
TEST(HostRecordTime, JsonNumbersKeepTheRecordedDigitsWhereJsonAllows) {
  const struct {
    std::string text;
    std::string json;
  } kCases[] = {
      {"1416131460.50", "1416131460.50"}, {"0", "0"},      {"0.25", "0.25"},
      {"010", "10"},                      {".5", "0.5"},   {"5.", "5"},
      {"1.2.3", "0"},                     {"1,5", "1.5"},  {"+2", "2"},
      {" 7 ", "7"},                       {"1e5", "1e5"},  {"abc", "0"},
      {"", "0"},                          {std::string(300, '9'), "0"},
  };
  for (const auto& c : kCases) {
    std::string text = c.text;
    RecordTime::MakeJsonNumber(&text);
    EXPECT_EQ(text, c.json) << c.text;
  }
}

}  // namespace
}  // namespace PelorinHost
