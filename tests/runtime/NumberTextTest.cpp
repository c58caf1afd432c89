// Number conversions: the accepted grammar, the decimal-comma retry, and
// agreement with the C library's correctly rounded conversion.

#include "runtime/NumberText.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>

namespace Quillan {
namespace {

TEST(NumberText, DecimalGrammar) {
  struct Case {
    const char* text;
    bool ok;
    double value;
  };
  const Case cases[] = {
      {"1416131460.25", true, 1416131460.25},
      {" \t1,5\r\n", true, 1.5},
      {"+2", true, 2.0},
      {".5", true, 0.5},
      {"5.", true, 5.0},
      {"2e3", true, 2000.0},
      {"1,5e1", true, 15.0},
      {"", false, 0},
      {".", false, 0},
      {"+-1", false, 0},
      {"1.5.1", false, 0},
      {"1.000,5", false, 0},
      {"0x10", false, 0},
      {"inf", false, 0},
      {"1e400", false, 0},
  };
  for (const Case& c : cases) {
    double value = -99.0;
    EXPECT_EQ(ParseDecimal(std::string(c.text), &value), c.ok) << c.text;
    EXPECT_EQ(value, c.ok ? c.value : -99.0) << c.text;
  }
  double value = 0.0;
  EXPECT_FALSE(ParseDouble("1,5", 3, '.', &value));  // a point reading stops at the comma
  EXPECT_FALSE(ParseDouble("1.5", 3, ',', &value));  // a comma reading stops at the point
  EXPECT_FALSE(ParseDecimal(std::string(300, '1'), &value));
}

TEST(NumberText, RoundsAsTheCLibrary) {
  std::mt19937_64 random(7);
  for (int i = 0; i < 2000; ++i) {
    const int digits = 1 + static_cast<int>(random() % 18);
    std::string text = std::to_string(random() % 1000000000000000000ull).substr(0, digits);
    text.insert(random() % (text.size() + 1), ".");
    if (text == ".") continue;
    double value = 0.0;
    ASSERT_TRUE(ParseDecimal(text, &value)) << text;
    ASSERT_EQ(value, std::strtod(text.c_str(), nullptr)) << text;
  }
}

TEST(NumberText, Integers) {
  int64_t value = 0;
  EXPECT_TRUE(ParseInteger(" -42 ", &value));
  EXPECT_EQ(value, -42);
  EXPECT_TRUE(ParseInteger("+9223372036854775807", &value));
  EXPECT_EQ(value, INT64_MAX);
  for (const char* bad : {"", "+", "1.0", "1e3", "9223372036854775808", "12a", "0x1"}) {
    EXPECT_FALSE(ParseInteger(std::string(bad), &value)) << bad;
  }
}

}  // namespace
}  // namespace Quillan
