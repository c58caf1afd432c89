// The playback-clock provider: its two values, the constants it answers for
// everything else, and the write transaction's change reports.

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "module/PlaybackDataProvider.h"
#include "tests/module/FakeHmiHost.h"

namespace {

using Quillan::PlaybackDataProvider;

constexpr uint32_t kTick = PlaybackDataProvider::kTickId;
constexpr uint32_t kNext = PlaybackDataProvider::kNextEventId;

class PlaybackDataProviderTest : public ::testing::Test {
 protected:
  pelorin_test::FakeDataPool pool;
  PlaybackDataProvider provider{&pool};
};

TEST_F(PlaybackDataProviderTest, ServesItsTwoValuesAndAnswersConstantsOtherwise) {
  int32_t value = -7;
  provider.LockRead();
  EXPECT_TRUE(provider.GetValue(kTick, &value));
  EXPECT_EQ(value, 0);
  value = -7;
  EXPECT_TRUE(provider.GetValue(kNext, &value));
  EXPECT_EQ(value, 0);
  value = -7;
  EXPECT_FALSE(provider.GetValue(0x4c000001, &value));
  EXPECT_EQ(value, -7);
  provider.UnlockRead();

  EXPECT_EQ(provider.GetValueType(kNext), 0u);
  EXPECT_EQ(provider.GetValueType(0x4c000001), 10u);
  EXPECT_EQ(provider.GetCount(kTick), 0xFFFFFFFFu);
  uint32_t first = 5;
  uint32_t count = 5;
  EXPECT_FALSE(provider.GetRange(kTick, &first, &count));
  std::string text;
  EXPECT_FALSE(provider.GetText(kTick, &text));
  EXPECT_FALSE(provider.GetTextAt(kTick, 0, &text));
  EXPECT_FALSE(provider.GetIntAt(kTick, 0, &value));
  EXPECT_EQ(provider.GetProviderId(), 77u);
}

TEST_F(PlaybackDataProviderTest, TransactionReportsChangedIdsInWritingOrder) {
  provider.BeginWrite();
  EXPECT_TRUE(provider.SetValue(kNext, 1416131460));
  EXPECT_TRUE(provider.SetValue(kTick, 1416131458));
  EXPECT_FALSE(provider.SetValue(0x4d000002, 1));
  EXPECT_TRUE(pool.reports.All().empty());
  provider.EndWrite();
  ASSERT_EQ(pool.reports.All().size(), 1u);
  EXPECT_EQ(pool.reports.All()[0], (std::vector<uint32_t>{kNext, kTick}));

  int32_t value = 0;
  provider.LockRead();
  provider.GetValue(kNext, &value);
  provider.UnlockRead();
  EXPECT_EQ(value, 1416131460);
}

TEST_F(PlaybackDataProviderTest, StoringTheHeldValueReportsNothing) {
  provider.BeginWrite();
  EXPECT_FALSE(provider.SetValue(kTick, 0));
  provider.EndWrite();
  EXPECT_TRUE(pool.reports.All().empty());
}

TEST_F(PlaybackDataProviderTest, NestedTransactionsReportOnceWithEveryChange) {
  provider.BeginWrite();
  provider.SetValue(kTick, 1);
  provider.BeginWrite();
  provider.SetValue(kTick, 2);
  provider.EndWrite();
  EXPECT_TRUE(pool.reports.All().empty());
  provider.SetValue(kNext, 3);
  provider.EndWrite();
  ASSERT_EQ(pool.reports.All().size(), 1u);
  EXPECT_EQ(pool.reports.All()[0], (std::vector<uint32_t>{kTick, kTick, kNext}));
}

// The work-loop thread writes both values in one transaction while data-pool
// threads read them: a read section never sees half a transaction.
TEST_F(PlaybackDataProviderTest, ReadersNeverSeeHalfATransaction) {
  std::atomic<bool> done{false};
  std::atomic<bool> torn{false};
  std::thread writer([&] {
    for (int32_t i = 1; i <= 1000; ++i) {
      provider.BeginWrite();
      provider.SetValue(kTick, i);
      provider.SetValue(kNext, i);
      provider.EndWrite();
    }
    done = true;
  });
  std::vector<std::thread> readers;
  for (int r = 0; r < 2; ++r) {
    readers.emplace_back([&] {
      while (!done.load()) {
        int32_t tick = -1;
        int32_t next = -2;
        provider.LockRead();
        provider.GetValue(kTick, &tick);
        provider.GetValue(kNext, &next);
        provider.UnlockRead();
        if (tick != next) torn = true;
      }
    });
  }
  writer.join();
  for (auto& reader : readers) reader.join();
  EXPECT_FALSE(torn.load());
  EXPECT_EQ(pool.reports.All().size(), 1000u);
}

}  // namespace
