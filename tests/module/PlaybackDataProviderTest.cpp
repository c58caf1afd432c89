// The playback-clock provider: its two values and the write transaction's
// change reports.

#include <gtest/gtest.h>

#include <utility>
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

TEST_F(PlaybackDataProviderTest, TransactionReportsChangedIdsInWritingOrder) {
  provider.BeginWrite();
  EXPECT_TRUE(provider.SetValue(kNext, 1416131460));
  EXPECT_TRUE(provider.SetValue(kTick, 1416131458));
  EXPECT_FALSE(provider.SetValue(0x4d000002, 1));
  EXPECT_FALSE(provider.SetValue(0x4c000001, 1));
  EXPECT_TRUE(pool.reports.All().empty());
  provider.EndWrite();
  ASSERT_EQ(pool.reports.All().size(), 1u);
  EXPECT_EQ(pool.reports.All()[0], (std::vector<uint32_t>{kNext, kTick}));

  int32_t value = 0;
  provider.LockRead();
  provider.GetValue(kNext, &value);
  provider.UnlockRead();
  EXPECT_EQ(value, 1416131460);

  // Storing the value already held is no change: no report.
  provider.BeginWrite();
  EXPECT_FALSE(provider.SetValue(kNext, 1416131460));
  provider.EndWrite();
  EXPECT_EQ(pool.reports.All().size(), 1u);

  // Nested: one report at the outermost end, with every change.
  pool.reports.Clear();
  provider.BeginWrite();
  provider.SetValue(kTick, 1);
  provider.BeginWrite();
  provider.SetValue(kTick, 2);
  provider.EndWrite();
  EXPECT_TRUE(pool.reports.All().empty());
  provider.SetValue(kNext, 3);
  provider.EndWrite();
  EXPECT_EQ(pool.reports.All(), (std::vector<std::vector<uint32_t>>{{kTick, kTick, kNext}}));
}

// The work-loop thread writes both values in one transaction while data-pool
// threads read them: a read section never sees half a transaction.
TEST_F(PlaybackDataProviderTest, ReadersNeverSeeHalfATransaction) {
  EXPECT_TRUE(pelorin_test::SectionsStayWhole(
      1, 1000,
      [&](int, int i) {
        provider.BeginWrite();
        provider.SetValue(kTick, i);
        provider.SetValue(kNext, i);
        provider.EndWrite();
      },
      [&] {
        int32_t tick = -1;
        int32_t next = -2;
        provider.LockRead();
        provider.GetValue(kTick, &tick);
        provider.GetValue(kNext, &next);
        provider.UnlockRead();
        return std::make_pair(tick, next);
      }));
  EXPECT_EQ(pool.reports.All().size(), 1000u);
}

}  // namespace
