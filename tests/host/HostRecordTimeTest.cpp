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

}  // namespace
}  // namespace PelorinHost
