// Items carry a record's time as written where JSON allows it.

#include <gtest/gtest.h>

#include <string>

#include "RecordTime.h"

namespace PelorinHost {
namespace {

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
