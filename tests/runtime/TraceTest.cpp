// The trace channel's level rule as every part of the module relies on it,
// and how arguments are written.

#include <gtest/gtest.h>

#include "runtime/Trace.h"
#include "tests/support/TraceCapture.h"

namespace {

TEST(TraceTest, MessagesBelowThresholdAreNeitherFormattedNorLogged) {
  pelorin_test::TraceCapture capture(3);
  int formatted = 0;
  PELORIN_TRACE(2, "Runner::NotifyTick", ++formatted);
  PELORIN_TRACE(3, "a=", -3, " b=", 4294967295u, " c=", 1.5, " d=", true, " e=", -3.0,
                " f=", 1416131460.25, " g=", static_cast<const char*>(nullptr), " h=", std::string("x"));
  EXPECT_EQ(formatted, 0);
  ASSERT_EQ(capture.Lines().size(), 1u);
  EXPECT_EQ(capture.Lines()[0].channel, "Pelorin");
  EXPECT_EQ(capture.Lines()[0].level, 3);
  EXPECT_EQ(capture.Lines()[0].text, "a=-3 b=4294967295 c=1.5 d=1 e=-3 f=1416131460.25 g=(null) h=x");
}

}  // namespace
