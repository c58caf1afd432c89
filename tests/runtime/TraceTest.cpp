// The trace channel's level rule as every part of the module relies on it:
// below the threshold a message is neither formatted nor logged.

#include <gtest/gtest.h>

#include "runtime/Trace.h"
#include "tests/support/TraceCapture.h"
#include "TraceChannel.h"

namespace {

int g_formatted = 0;

TEST(TraceTest, MessagesBelowThresholdAreNeitherFormattedNorLogged) {
  pelorin_test::TraceCapture capture(3);
  PELORIN_TRACE(2, "Runner::NotifyTick", ++g_formatted);
  EXPECT_EQ(g_formatted, 0);
  EXPECT_TRUE(capture.Lines().empty());
  PELORIN_TRACE(3, "Config::FromFile: ", "failed to open ", std::string("x"), ", error=", 1);
  PELORIN_TRACE(4, "level four");
  ASSERT_EQ(capture.Lines().size(), 2u);
  EXPECT_EQ(capture.Lines()[0].text, "Config::FromFile: failed to open x, error=1");
  EXPECT_EQ(capture.Lines()[0].channel, "Pelorin");
  EXPECT_EQ(capture.Lines()[0].level, 3);
}

TEST(TraceTest, NumbersAreAppendedInDecimal) {
  pelorin_test::TraceCapture capture(2);
  PELORIN_TRACE(2, "a=", -3, " b=", 4294967295u, " c=", 1.5, " d=", true, " e=", -3.0,
                " f=", 1416131460.25);
  ASSERT_EQ(capture.Texts().size(), 1u);
  EXPECT_EQ(capture.Texts()[0], "a=-3 b=4294967295 c=1.5 d=1 e=-3 f=1416131460.25");
}

TEST(TraceTest, ThresholdSetBeforeAChannelExistsApplies) {
  tracing::SetThreshold("LaterChannel", 4);
  tracing::Channel channel("LaterChannel", 7, 2u);
  EXPECT_EQ(channel.GetThreshold(), 4);
  tracing::SetThreshold("LaterChannel", 1);
  EXPECT_EQ(channel.GetThreshold(), 1);
}

TEST(TraceTest, DataPoolChannelSendsOnlyWhileItsFlagIsSet) {
  TraceChannel channel("SD_DATAPOOL");
  {
    pelorin_test::TraceCapture capture(3);
    EXPECT_EQ(channel.GetFlags() & 1u, 0u);
  }
  pelorin_test::TraceCapture capture(2);
  ASSERT_NE(TraceClient::GetInstance(), nullptr);
  EXPECT_TRUE(TraceClient::GetInstance()->IsActive());
  EXPECT_EQ(channel.GetFlags() & 1u, 1u);
  TraceClient::GetInstance()->trace(1, TraceMessage("SDDataProvider::StartUp() providerID=", 77),
                                    channel);
  ASSERT_EQ(capture.Lines().size(), 1u);
  EXPECT_EQ(capture.Lines()[0].channel, "SD_DATAPOOL");
  EXPECT_EQ(capture.Lines()[0].text, "SDDataProvider::StartUp() providerID=77");
}

}  // namespace
