// Steady replay of "$TMC" records allocates only the message itself: once
// the first records have sized the reader's buffers, each record costs its
// new message data and its byte array (the platform's object and its bytes),
// which listeners may keep; reading and dispatching reuse their memory
// (counted by the replaced operator new).

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>

#include "player/Record.h"
#include "player/RecordReader.h"
#include "producers/RecordDispatcher.h"
#include "producers/TrafficDataListener.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/MemoryInput.h"

namespace Quillan {
namespace {

// Looks at each message and lets it go, as a head unit that copies it does.
class DroppingListener : public TrafficDataListener {
 public:
  void OnServiceList(ServiceList) override {}
  void OnTmcMessage(std::shared_ptr<TmcMessageData> message) override {
    bytes += message->tmcData ? message->tmcData->size() : 0;
  }
  uint32_t bytes = 0;
};

// `count` distinct "$TMC" lines, CR LF and LF ended by turns.
std::string TmcLines(int count) {
  std::string lines;
  char line[160];
  for (int i = 0; i < count; ++i) {
    std::snprintf(line, sizeof(line),
                  "%d.%d $TMC timeStamp=%d LTN=1 SID=34 PID=53761 tmcData=0A:1F:%02X:%02X:00%s",
                  1416131460 + i / 10, i % 10, 1416131460 + i / 10, (i / 256) % 256, i % 256,
                  i % 2 == 0 ? "\r\n" : "\n");
    lines += line;
  }
  return lines;
}

TEST(PlaybackAllocation, SteadyTmcReplayAllocatesOnlyEachMessage) {
  constexpr int kWarmUp = 50;
  constexpr long kPerRecord = 3;
  for (int records : {200, 2000}) {
    // Read ahead in chunks, as the events file offers its bytes.
    pelorin_test::MemoryInput input(TmcLines(kWarmUp + records), std::string::npos, 4096);
    RecordDispatcher dispatcher;
    DroppingListener listener;
    ASSERT_TRUE(dispatcher.AddListener(&listener));
    Record record;
    long steadyAllocations = 0;
    for (int i = 0; i < kWarmUp + records; ++i) {
      if (i == kWarmUp) steadyAllocations = -pelorin_test::AllocationCount();
      ASSERT_EQ(input.Reader()->ReadRecord(record), ReadStatus::kRecord);
      ASSERT_EQ(dispatcher.OnRecord(static_cast<uint32_t>(record.time), record.tag, record.payload),
                0);
    }
    steadyAllocations += pelorin_test::AllocationCount();
    EXPECT_LE(steadyAllocations, kPerRecord * records) << records << " records";
    EXPECT_EQ(listener.bytes, 5u * static_cast<uint32_t>(kWarmUp + records));
  }
}

}  // namespace
}  // namespace Quillan
