// The record dispatcher with its "$TMC" and "$TSL" producers, seen from the
// traffic-data listeners.

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "CIString.h"
#include "CITypesFactory.h"
#include "producers/RecordDispatcher.h"
#include "producers/TmcMessageProducer.h"
#include "producers/TmcServiceListProducer.h"
#include "producers/TrafficDataListener.h"

namespace Quillan {
namespace {

using asi::navigation::trafficinfo::sTIServiceListEntry;

// Keeps what it receives.
class RecordingListener : public TrafficDataListener {
 public:
  void OnServiceList(ServiceList list) override { lists.push_back(list); }
  void OnTmcMessage(std::shared_ptr<TmcMessageData> message) override {
    messages.push_back(message);
  }
  std::vector<ServiceList> lists;
  std::vector<std::shared_ptr<TmcMessageData>> messages;
};

std::vector<uint8_t> Bytes(const std::shared_ptr<CIUInt8Array>& array) {
  return std::vector<uint8_t>(array->data(), array->data() + array->size());
}

class RecordDispatcherTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(dispatcher.AddListener(&listener)); }

  // The one TMC message that `payload` delivers.
  std::shared_ptr<TmcMessageData> Tmc(const std::string& payload) {
    listener.messages.clear();
    EXPECT_EQ(dispatcher.OnRecord(5, "$TMC", payload), 0) << payload;
    return listener.messages.size() == 1 ? listener.messages[0] : nullptr;
  }
  // The service list that `payload` delivers.
  ServiceList Tsl(const std::string& payload) {
    listener.lists.clear();
    EXPECT_EQ(dispatcher.OnRecord(5, "$TSL", payload), 0) << payload;
    return listener.lists.size() == 1 ? listener.lists[0] : nullptr;
  }

  RecordDispatcher dispatcher;
  RecordingListener listener;
};

// Records of other tags, or whose payload fails, reach no listener and leave
// the last TMC time alone; it follows produced TMC messages, heard or not.
TEST_F(RecordDispatcherTest, LastTmcTimeFollowsProducedTmcMessagesOnly) {
  EXPECT_EQ(dispatcher.OnRecord(10, "$TOT", "getInventory"), 1);
  EXPECT_EQ(dispatcher.OnRecord(10, "$tmc", "LTN=1"), 1);
  EXPECT_EQ(dispatcher.OnRecord(10, "", ""), 1);
  EXPECT_EQ(dispatcher.OnRecord(10, "$TMC", "ltn=1"), 1);
  EXPECT_TRUE(listener.messages.empty());
  EXPECT_EQ(dispatcher.GetLastTmcTime(), 0u);
  EXPECT_EQ(dispatcher.OnRecord(100, "$TMC", ""), 0);
  EXPECT_EQ(dispatcher.GetLastTmcTime(), 100u);
  EXPECT_EQ(dispatcher.OnRecord(200, "$TMC", "LTN"), 1);
  EXPECT_EQ(dispatcher.OnRecord(300, "$TSL", ""), 0);
  EXPECT_EQ(dispatcher.GetLastTmcTime(), 100u);
  ASSERT_TRUE(dispatcher.RemoveListener(&listener));
  EXPECT_EQ(dispatcher.OnRecord(400, "$TMC", "LTN=1"), 0);
  EXPECT_EQ(dispatcher.GetLastTmcTime(), 400u);
  EXPECT_EQ(listener.messages.size(), 1u);
}

// A producer registered for a tag that has one replaces it; another tag gets
// one of its own; a tag is found only whole.
TEST_F(RecordDispatcherTest, ARegisteredProducerTakesOverItsTag) {
  dispatcher.RegisterProducer("$TMC", new TmcServiceListProducer());
  dispatcher.RegisterProducer("$TM", new TmcMessageProducer());
  EXPECT_EQ(dispatcher.OnRecord(10, "$TMC", "serviceType=1"), 0);
  EXPECT_EQ(dispatcher.OnRecord(20, "$TM", "LTN=1"), 0);
  EXPECT_EQ(dispatcher.OnRecord(30, "$TMCX", "LTN=1"), 1);
  EXPECT_EQ(dispatcher.FindProducer("$TS"), nullptr);
  EXPECT_EQ(listener.lists.size(), 1u);
  EXPECT_EQ(listener.messages.size(), 1u);
  EXPECT_EQ(dispatcher.GetLastTmcTime(), 10u);
}

// A TMC message as "timeStamp ltn sid pid", then " data" and its bytes
// (":0A" each) when it has a byte array.
std::string Describe(const TmcMessageData& message) {
  std::string text = std::to_string(message.timeStamp) + " " + std::to_string(message.ltn) + " " +
                     std::to_string(message.sid) + " " + std::to_string(message.pid);
  if (!message.tmcData) return text;
  text += " data";
  char hex[8];
  for (uint8_t byte : Bytes(message.tmcData)) {
    std::snprintf(hex, sizeof(hex), ":%02X", byte);
    text += hex;
  }
  return text;
}

// Each field from its key: numbers keep their low bits and unreadable ones
// are zero; tmcData is colon-separated hexadecimal, the last one wins.
TEST_F(RecordDispatcherTest, TmcMessageFieldsFromTheirKeys) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"timeStamp=1416131460 LTN=1 SID=34;PID=53761 tmcData=0A:1F:22:3C:00",
       "1416131460 1 34 53761 data:0A:1F:22:3C:00"},
      {"", "0 0 0 0"},
      {"LTN=300 SID=12abc", "0 44 0 0"},
      {"LTN=-1 PID=4294967295", "0 255 0 4294967295"},
      {"PID=4294967296 timeStamp=-1", "4294967295 0 0 0"},
      {"timeStamp=\" +17 \"", "17 0 0 0"},
      {"timeStamp=99999999999999999999", "0 0 0 0"},
      {"timeStamp=9223372036854775807", "4294967295 0 0 0"},
      {"tmcData=0A::1F", "0 0 0 0 data:0A:00:1F"},
      {"tmcData=0A:", "0 0 0 0 data:0A"},
      {"tmcData=1FF", "0 0 0 0 data:FF"},
      {"tmcData=ab:AB:0x1c:0X1d:+2", "0 0 0 0 data:AB:AB:1C:1D:02"},
      {"tmcData=zz:-1", "0 0 0 0 data:00:FF"},
      {"tmcData=:", "0 0 0 0 data:00"},
      {"tmcData=\"\" LTN=1", "0 1 0 0 data"},
      {"tmcData=01:02 tmcData=03", "0 0 0 0 data:03"},
  };
  std::shared_ptr<TmcMessageData> previous;
  for (const auto& c : cases) {
    auto message = Tmc(c.first);
    ASSERT_TRUE(message) << c.first;
    EXPECT_NE(message, previous);  // each record starts fresh data
    EXPECT_EQ(Describe(*message), c.second) << c.first;
    previous = message;
  }
}

// A delivered message never changes: what a listener keeps, the data or only
// its bytes, stays as it was delivered, and what it only watches through a
// weak pointer expires once nobody holds it instead of becoming a later one.
TEST_F(RecordDispatcherTest, ADeliveredMessageNeverChanges) {
  const std::shared_ptr<CIUInt8Array> keptBytes = Tmc("LTN=1 tmcData=01:02")->tmcData;
  const std::shared_ptr<TmcMessageData> keptData = Tmc("LTN=2 tmcData=03");
  const std::weak_ptr<TmcMessageData> watchedData = Tmc("LTN=3 tmcData=04");
  const std::weak_ptr<CIUInt8Array> watchedBytes = Tmc("LTN=5 tmcData=05:06")->tmcData;
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Tmc("LTN=9 tmcData=AA:BB:CC")->ltn, 9);
  EXPECT_EQ(Bytes(keptBytes), (std::vector<uint8_t>{0x01, 0x02}));
  EXPECT_EQ(keptData->ltn, 2);
  EXPECT_EQ(Bytes(keptData->tmcData), std::vector<uint8_t>{0x03});
  EXPECT_TRUE(watchedData.expired());
  EXPECT_TRUE(watchedBytes.expired());
  EXPECT_EQ(Tmc("LTN=4")->tmcData, nullptr);
}

// Passes each message on to a reader thread through a weak pointer, as a
// head unit that looks at a message later, if it is still there, may do.
class HandingOnListener : public TrafficDataListener {
 public:
  void OnServiceList(ServiceList) override {}
  void OnTmcMessage(std::shared_ptr<TmcMessageData> message) override {
    std::lock_guard<std::mutex> guard(lock);
    latest = message;
  }
  std::weak_ptr<TmcMessageData> Latest() {
    std::lock_guard<std::mutex> guard(lock);
    return latest;
  }
  std::mutex lock;
  std::weak_ptr<TmcMessageData> latest;
};

// A message read on another thread while the next records are produced
// stays whole: every field and byte tells the same record number.
TEST(TmcMessageProducerTest, AMessageReadOnAnotherThreadStaysWhole) {
  RecordDispatcher dispatcher;
  HandingOnListener listener;
  ASSERT_TRUE(dispatcher.AddListener(&listener));
  std::atomic<bool> done{false};
  std::atomic<int> mixed{0}, reads{0};
  std::thread reader([&] {
    while (!done.load()) {
      const std::shared_ptr<TmcMessageData> message = listener.Latest().lock();
      if (!message || !message->tmcData || message->tmcData->size() != 2) continue;
      const uint32_t number = message->timeStamp;
      const bool whole = message->pid == number && message->ltn == (number & 0xFFu) &&
                         message->tmcData->at(0) == (number & 0xFFu) &&
                         message->tmcData->at(1) == ((number >> 8) & 0xFFu);
      mixed += whole ? 0 : 1;
      reads += 1;
    }
  });
  char payload[96];
  for (uint32_t number = 1; number <= 20000; ++number) {
    std::snprintf(payload, sizeof(payload), "timeStamp=%u LTN=%u PID=%u tmcData=%X:%X",
                  static_cast<unsigned>(number), static_cast<unsigned>(number & 0xFFu),
                  static_cast<unsigned>(number), static_cast<unsigned>(number & 0xFFu),
                  static_cast<unsigned>((number >> 8) & 0xFFu));
    ASSERT_EQ(dispatcher.OnRecord(number, "$TMC", payload), 0);
  }
  done = true;
  reader.join();
  EXPECT_EQ(mixed.load(), 0) << "of " << reads.load() << " reads";
}

TEST_F(RecordDispatcherTest, ServiceListEntriesFollowTheSemicolons) {
  ServiceList list =
      Tsl("serviceType=1 sd_SID=34 sd_LTCC=13 sd_LTN=1 sd_PID=53761 sd_SPN=RADIO1 monitorState=1;"
          "serviceType=1 sd_SID=35 sd_LTN=2 sd_MGS=3 sd_ST=9 sd_Q=300 SID_A=1 SID_B=2 SID_C=258;");
  ASSERT_TRUE(list);
  ASSERT_EQ(list->size(), 2u);
  const sTIServiceListEntry& first = *(*list)[0];
  const auto& one = *first.serviceDescription;
  EXPECT_EQ(std::make_tuple(first.serviceType, first.monitorState, one.sd_SID, one.sd_PID),
            std::make_tuple(1u, 1u, 34, 53761u));
  ASSERT_TRUE(one.sd_SPN);
  EXPECT_EQ(one.sd_SPN->utf8(), "RADIO1");
  EXPECT_EQ(one.sd_SPN->encoding(), CITypesFactory::kEncodingUtf8);
  EXPECT_EQ(one.sd_sendername, nullptr);
  const sTIServiceListEntry& second = *(*list)[1];
  const auto& two = *second.serviceDescription;
  EXPECT_NE(&two, &one);
  EXPECT_EQ(std::make_tuple(two.sd_MGS, two.sd_ST, two.sd_Q, second.monitorState),
            std::make_tuple(3, 9u, 44, 0u));
  EXPECT_EQ(two.sd_SPN, nullptr);
  const auto& ids = *second.serviceIdentifiers;
  EXPECT_EQ(std::make_tuple(ids.SID_A, ids.SID_B, ids.SID_C), std::make_tuple(1, 2, 2));
  EXPECT_TRUE(Tsl("")->empty());
  EXPECT_NE(Tsl(""), list);  // every record is a new list
  EXPECT_EQ(list->size(), 2u);
}

TEST_F(RecordDispatcherTest, ServiceIdentifierAndTextsAsTheHeadUnitWantsThem) {
  const std::vector<std::pair<std::string, int64_t>> ids = {
      {"-2", -2}, {"4294967295", -1}, {"2147483648", INT32_MIN}, {"x", 0}, {"4294967298", 2}};
  for (const auto& c : ids) {
    EXPECT_EQ((*Tsl("SS_ID=" + c.first))[0]->serviceIdentifiers->SS_ID, c.second) << c.first;
  }
  auto description = [&](const std::string& payload) {
    return (*Tsl(payload))[0]->serviceDescription;
  };
  EXPECT_EQ(description("sd_SPN=A sd_SPN=\"Radio Eins\"")->sd_SPN->utf8(), "Radio Eins");
  EXPECT_EQ(description("sd_sendername=B\xC4R")->sd_sendername->utf8(), "B\xC3\x84R");
  EXPECT_EQ(description("sd_sendername=B\xC3\x84R")->sd_sendername->utf8(), "B\xC3\x84R");
}

}  // namespace
}  // namespace Quillan
