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
    double value;
  };
  const Case cases[] = {
      {"1416131460.25", 1416131460.25},
      {" \t1,5\r\n", 1.5},
      {"+2", 2.0},
      {".5", 0.5},
      {"5.", 5.0},
      {"2e3", 2000.0},
      {"1,5e1", 15.0},
  };
  for (const Case& c : cases) {
    double value = -99.0;
    EXPECT_TRUE(ParseDecimal(std::string(c.text), &value)) << c.text;
    EXPECT_EQ(value, c.value) << c.text;
  }
  double value = -99.0;
  for (const char* bad : {"", ".", "+-1", "1.5.1", "1.000,5", "0x10", "inf", "1e400"}) {
    EXPECT_FALSE(ParseDecimal(std::string(bad), &value)) << bad;
  }
  EXPECT_EQ(value, -99.0);  // left alone when refused
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
  EXPECT_TRUE(ParseInteger(" -42 ", &value) && value == -42);
  EXPECT_TRUE(ParseInteger("+9223372036854775807", &value) && value == INT64_MAX);
  for (const char* bad : {"", "+", "1.0", "1e3", "9223372036854775808", "12a", "0x1"}) {
    EXPECT_FALSE(ParseInteger(std::string(bad), &value)) << bad;
  }
}

}  // namespace
}  // namespace Quillan
