// The provider base: re-entrant write sections that report once at the
// outermost end, in marking order with duplicates; one writer at a time;
// readers that may read while a report is delivered; start-up, shut-down and
// destruction.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>
#include <utility>
#include <vector>

#include "DataPoolDirectory.h"
#include "runtime/SDDataProvider.h"
#include "tests/support/FakeDataPool.h"
#include "tests/support/TraceCapture.h"

namespace {

using Quillan::SDDataProvider;

// Two integer values, ids 0 and 1.
class PairProvider : public SDDataProvider {
 public:
  PairProvider(DataPoolInterface* pool, uint32_t id) : SDDataProvider(pool, id) {}
  bool GetValue(uint32_t id, int32_t* value) override {
    if (id > 1) return false;
    *value = m_values[id];
    return true;
  }
  bool GetIntAt(uint32_t, uint32_t, int32_t*) override { return false; }
  bool GetText(uint32_t, std::string*) override { return false; }
  bool GetTextAt(uint32_t, uint32_t, std::string*) override { return false; }
  uint32_t GetValueType(uint32_t id) override { return id <= 1 ? 0 : 10; }
  uint32_t GetCount(uint32_t) override { return kNoCount; }
  // Called inside a write section.
  void Store(uint32_t id, int32_t value) {
    m_values[id] = value;
    MarkChanged(id);
  }

 private:
  int32_t m_values[2] = {0, 0};
};

constexpr uint32_t kProviderId = 177;

class SDDataProviderTest : public ::testing::Test {
 protected:
  pelorin_test::FakeDataPool pool;
  PairProvider provider{&pool, kProviderId};
};

TEST_F(SDDataProviderTest, NestedSectionsReportOnceAtTheOutermostEndInMarkingOrder) {
  provider.UnlockWrite();  // unmatched: ignored
  provider.LockWrite();
  provider.Store(1, 10);
  provider.LockWrite();
  provider.Store(0, 20);
  provider.Store(1, 30);
  provider.UnlockWrite();
  EXPECT_TRUE(pool.reports.All().empty()) << "an inner section does not report";
  provider.Store(1, 40);
  provider.UnlockWrite();
  ASSERT_EQ(pool.reports.All().size(), 1u);
  EXPECT_EQ(pool.reports.All()[0], (std::vector<uint32_t>{1, 0, 1, 1}));

  provider.LockWrite();  // a section without changes reports nothing
  provider.UnlockWrite();
  std::thread other([&] {  // the section really ended: another thread can write
    provider.LockWrite();
    provider.Store(0, 1);
    provider.UnlockWrite();
  });
  other.join();
  ASSERT_EQ(pool.reports.All().size(), 2u);
  EXPECT_EQ(pool.reports.All()[1], (std::vector<uint32_t>{0})) << "emptied after a report";
}

TEST_F(SDDataProviderTest, StartUpAndShutDownRegisterAndTraceOnTheDataPoolChannel) {
  {
    pelorin_test::TraceCapture capture(2);
    provider.StartUp();
    provider.ShutDown();
    const auto lines = capture.Lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].channel, "SD_DATAPOOL");
    EXPECT_EQ(lines[0].text, "SDDataProvider::StartUp() providerID=177");
    EXPECT_EQ(lines[1].text, "SDDataProvider::ShutDown() providerID=177");
  }
  pelorin_test::TraceCapture quiet(3);
  provider.StartUp();
  EXPECT_TRUE(quiet.Lines().empty());
  ASSERT_EQ(pool.registered.All().size(), 2u);
  EXPECT_EQ(pool.registered.All()[0].first, &provider);
  EXPECT_EQ(pool.registered.All()[0].second, kProviderId);
  EXPECT_EQ(pool.unregistered.All(), (std::vector<uint32_t>{kProviderId}));
}

TEST_F(SDDataProviderTest, DestructionLeavesTheDirectoryAndUnregisters) {
  pelorin_test::FakeDataPool own;
  auto* temporary = new PairProvider(&own, 178);
  EXPECT_EQ(DataPoolDirectory::FindProvider(178), temporary);
  EXPECT_EQ(DataPoolDirectory::FindProvider(kProviderId), &provider);
  delete temporary;
  EXPECT_EQ(DataPoolDirectory::FindProvider(178), nullptr);
  EXPECT_EQ(own.unregistered.All(), (std::vector<uint32_t>{178}));
}

// While the first writer's report is being delivered, a reader on another
// thread gets in, but a second writer waits until the report is done.
TEST_F(SDDataProviderTest, ReportIsDeliveredOutsideTheReadLockButInsideTheWriteGate) {
  std::atomic<bool> secondWriterDone{false};
  std::atomic<bool> writerDoneDuringReport{true};
  std::future_status readerStatus = std::future_status::timeout;
  std::promise<int32_t> readValue;
  std::thread reader;
  std::thread secondWriter;
  pool.onReport = [&](const std::vector<uint32_t>& ids) {
    if (ids != std::vector<uint32_t>{0}) return;
    reader = std::thread([&] {
      int32_t value = 0;
      provider.LockRead();
      provider.GetValue(0, &value);
      provider.UnlockRead();
      readValue.set_value(value);
    });
    // A reader held off by a write lock still held would time out here.
    readerStatus = readValue.get_future().wait_for(std::chrono::seconds(10));
    secondWriter = std::thread([&] {
      provider.LockWrite();
      provider.Store(1, 8);
      provider.UnlockWrite();
      secondWriterDone = true;
    });
    // Give the second writer every chance to get through a gate left open.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    writerDoneDuringReport = secondWriterDone.load();
  };
  provider.LockWrite();
  provider.Store(0, 7);
  provider.UnlockWrite();
  reader.join();
  secondWriter.join();
  EXPECT_EQ(readerStatus, std::future_status::ready);
  EXPECT_FALSE(writerDoneDuringReport.load());
  EXPECT_TRUE(secondWriterDone.load());
  ASSERT_EQ(pool.reports.All().size(), 2u);
  EXPECT_EQ(pool.reports.All()[1], (std::vector<uint32_t>{1}));
}

}  // namespace
