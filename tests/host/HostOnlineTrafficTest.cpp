// The simulated online traffic service: what it reports on attach, when it
// answers, and how it frees a waiting module at shutdown.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "CITypesFactory.h"
#include "OnlineTrafficReply.h"
#include "Output.h"
#include "Reporter.h"
#include "SimulatedOnlineTraffic.h"
#include "tests/support/TestTime.h"

namespace PelorinHost {
namespace {

using Clock = std::chrono::steady_clock;

// Counts what the service tells the module.
class CountingReply : public OnlineTrafficReply {
 public:
  int OnServiceStatus(uint32_t status) override { return m_status = static_cast<int>(status), 0; }
  int OnServiceValue(uint32_t value) override { return m_value = value, 0; }
  int OnNewDataAnswer() override { return ++m_newData, 0; }
  int OnSetNewDataDone() override { return ++m_setNewDataDone, 0; }
  int OnInventoryAnswer() override { return ++m_inventory, 0; }
  void SetService(OnlineTrafficService* service) override { m_service = service; }
  int OnConnected() override { return ++m_connected, 0; }

  OnlineTrafficService* m_service = nullptr;
  int m_status = -1;
  uint32_t m_value = 0;
  std::atomic<int> m_newData{0}, m_setNewDataDone{0}, m_inventory{0}, m_connected{0};
};

// Waits up to `ms` for `counter` to reach `count`.
bool WaitFor(const std::atomic<int>& counter, int count, uint32_t ms) {
  const auto deadline = Clock::now() + std::chrono::milliseconds(ms);
  while (counter.load() < count) {
    if (Clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

class HostOnlineTraffic : public ::testing::Test {
 protected:
  HostOnlineTraffic() : m_output(m_null, m_null), m_reporter(m_output, true) {}
  ~HostOnlineTraffic() override { close(m_null); }

  int m_null = open("/dev/null", O_WRONLY);
  Output m_output;
  Reporter m_reporter;
  CountingReply m_reply;
};

TEST_F(HostOnlineTraffic, AttachReportsReadyValueAndConnection) {
  SimulatedOnlineTraffic service(m_reporter, 10, false);
  service.Attach(&m_reply);
  EXPECT_EQ(m_reply.m_service, &service);
  EXPECT_EQ(m_reply.m_status, 0);
  EXPECT_NE(m_reply.m_value, 0u);
  EXPECT_EQ(m_reply.m_connected.load(), 1);
}

TEST_F(HostOnlineTraffic, AnswersOnlyTheCallsThatExpectAnAnswer) {
  SimulatedOnlineTraffic service(m_reporter, 0, false);
  service.Attach(&m_reply);
  service.getInventory();
  service.getNewData();
  service.setNewData(CITypesFactory::createString("a.bin", 3));
  service.setNewSession();
  service.setTimeoutForFallback(30);
  service.dsiConnectionStateChanged(1);
  service.setOnlineTrafficDataStatus(0);
  const uint32_t limit = pelorin_test::ScaledMs(5000);
  EXPECT_TRUE(WaitFor(m_reply.m_inventory, 1, limit));
  EXPECT_TRUE(WaitFor(m_reply.m_newData, 1, limit));
  EXPECT_TRUE(WaitFor(m_reply.m_setNewDataDone, 1, limit));
  service.Stop();
  EXPECT_EQ(m_reply.m_inventory.load(), 1);
  EXPECT_EQ(m_reply.m_newData.load(), 1);
  EXPECT_EQ(m_reply.m_setNewDataDone.load(), 1);
  EXPECT_EQ(m_reporter.RecordsPlayed(), 7u);
}

// Neither an offline service nor a stopped one answers: what the module does
// after the end of a run must not be set going by an answer.
TEST_F(HostOnlineTraffic, OfflineOrStoppedServiceNeverAnswers) {
  for (const bool offline : {true, false}) {
    CountingReply reply;
    SimulatedOnlineTraffic service(m_reporter, 50, offline);
    service.Attach(&reply);
    service.getInventory();
    service.setNewData(CITypesFactory::createString("a.bin", 3));
    if (offline) std::this_thread::sleep_for(std::chrono::milliseconds(100));
    service.Stop();
    service.getNewData();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(reply.m_inventory.load() + reply.m_setNewDataDone.load() + reply.m_newData.load(), 0)
        << offline;
  }
}

}  // namespace
}  // namespace PelorinHost
