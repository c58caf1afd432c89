// The provider base: re-entrant write sections that report once at the
// outermost end, one writer at a time, and start-up and shut-down.

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "runtime/Event.h"
#include "runtime/SDDataProvider.h"
#include "runtime/TimeBase.h"
#include "tests/support/FakeDataPool.h"
#include "tests/support/TestTime.h"
#include "tests/support/TraceCapture.h"

namespace {

using Quillan::Event;
using Quillan::SDDataProvider;
using Quillan::SleepMs;

// A provider without values: only what it marks as changed matters.
class MarkingProvider : public SDDataProvider {
 public:
  using SDDataProvider::SDDataProvider;
  bool GetValue(uint32_t, int32_t*) override { return false; }
  bool GetIntAt(uint32_t, uint32_t, int32_t*) override { return false; }
  bool GetText(uint32_t, std::string*) override { return false; }
  bool GetTextAt(uint32_t, uint32_t, std::string*) override { return false; }
  uint32_t GetValueType(uint32_t) override { return 10; }
  uint32_t GetCount(uint32_t) override { return kNoCount; }
  void Store(uint32_t id) { MarkChanged(id); }  // inside a write section
};

constexpr uint32_t kProviderId = 177;

class SDDataProviderTest : public ::testing::Test {
 protected:
  pelorin_test::FakeDataPool pool;
  MarkingProvider provider{&pool, kProviderId};
};

using Ids = std::vector<uint32_t>;

TEST_F(SDDataProviderTest, NestedSectionsReportOnceAtTheOutermostEndInMarkingOrder) {
  provider.UnlockWrite();  // unmatched: ignored
  provider.LockWrite();
  provider.Store(1);
  provider.LockWrite();
  provider.Store(0);
  provider.UnlockWrite();
  EXPECT_TRUE(pool.reports.All().empty()) << "an inner section does not report";
  provider.Store(1);
  provider.UnlockWrite();
  provider.LockWrite();  // a section without changes reports nothing
  provider.UnlockWrite();
  provider.LockWrite();  // the marks were emptied by the report
  provider.Store(0);
  provider.UnlockWrite();
  EXPECT_EQ(pool.reports.All(), (std::vector<Ids>{{1, 0, 1}, {0}}));
}

// The host must forget the provider at shut-down: it is freed after.
TEST_F(SDDataProviderTest, StartUpAndShutDownRegisterWithTheHostAndAreTraced) {
  pelorin_test::TraceCapture capture(2);
  provider.StartUp();
  ASSERT_EQ(pool.registered.All().size(), 1u);
  EXPECT_EQ(pool.registered.All()[0].second, kProviderId);
  EXPECT_TRUE(pool.unregistered.All().empty());
  provider.ShutDown();
  EXPECT_EQ(pool.unregistered.All(), Ids{kProviderId});
  const auto lines = capture.Lines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].channel, "SD_DATAPOOL");
  EXPECT_EQ(lines[0].text, "SDDataProvider::StartUp() providerID=177");
  EXPECT_EQ(lines[1].text, "SDDataProvider::ShutDown() providerID=177");
}

// A write section is one thread's until it ends: a writer of another
// thread that arrives while it is open does not take it for a nested one.
TEST_F(SDDataProviderTest, AWriterOfAnotherThreadWaitsForAnOpenSection) {
  std::atomic<bool> secondIn{false};
  provider.LockWrite();
  std::thread second([&] {
    provider.LockWrite();
    secondIn = true;
    provider.Store(1);
    provider.UnlockWrite();
  });
  SleepMs(50);  // every chance to get in
  EXPECT_FALSE(secondIn);
  provider.Store(0);
  provider.UnlockWrite();
  second.join();
  EXPECT_EQ(pool.reports.All(), (std::vector<Ids>{{0}, {1}}));
}

// While the first writer's report is delivered, a reader of another thread
// gets in, but a second writer waits until the report is done.
TEST_F(SDDataProviderTest, ReportIsDeliveredOutsideTheReadLockButInsideTheWriteGate) {
  std::atomic<bool> secondWriterDone{false};
  bool readerGotIn = false, writerWaited = false;
  std::thread reader, secondWriter;
  pool.onReport = [&](const Ids& ids) {
    if (ids != Ids{0}) return;
    Event read;
    reader = std::thread([&] {
      provider.LockRead();
      provider.UnlockRead();
      read.Set();
    });
    readerGotIn = read.TimedWait(pelorin_test::ScaledMs(10000));
    secondWriter = std::thread([&] {
      provider.LockWrite();
      provider.Store(1);
      provider.UnlockWrite();
      secondWriterDone = true;
    });
    SleepMs(50);  // every chance to get through a gate left open
    writerWaited = !secondWriterDone;
  };
  provider.LockWrite();
  provider.Store(0);
  provider.UnlockWrite();
  reader.join();
  secondWriter.join();
  EXPECT_TRUE(readerGotIn);
  EXPECT_TRUE(writerWaited);
  EXPECT_EQ(pool.reports.All(), (std::vector<Ids>{{0}, {1}}));
}

}  // namespace
