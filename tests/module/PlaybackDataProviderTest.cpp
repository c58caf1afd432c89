// The playback-clock provider: the write transaction's change reports, and
// readers against a writer.

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "module/PlaybackDataProvider.h"
#include "tests/support/FakeDataPool.h"

namespace {

using Quillan::PlaybackDataProvider;
using Reports = std::vector<std::vector<uint32_t>>;

constexpr uint32_t kTick = PlaybackDataProvider::kTickId;
constexpr uint32_t kNext = PlaybackDataProvider::kNextEventId;

// Changed ids are reported once, at the outermost end, in writing order;
// storing the value already held, or an id not served, is no change.
TEST(PlaybackDataProviderTest, TransactionReportsChangedIdsAtTheOutermostEnd) {
  pelorin_test::FakeDataPool pool;
  PlaybackDataProvider provider(&pool);
  provider.BeginWrite();
  EXPECT_TRUE(provider.SetValue(kNext, 1416131460));
  EXPECT_FALSE(provider.SetValue(0x4d000002, 1));
  provider.BeginWrite();
  EXPECT_TRUE(provider.SetValue(kTick, 5));
  provider.EndWrite();
  EXPECT_TRUE(pool.reports.All().empty());
  EXPECT_TRUE(provider.SetValue(kTick, 6));
  provider.EndWrite();
  EXPECT_EQ(pool.reports.All(), (Reports{{kNext, kTick, kTick}}));

  provider.BeginWrite();
  EXPECT_FALSE(provider.SetValue(kNext, 1416131460));
  provider.EndWrite();
  EXPECT_EQ(pool.reports.All().size(), 1u);
  int32_t value = 0;
  provider.LockRead();
  EXPECT_TRUE(provider.GetValue(kNext, &value));
  provider.UnlockRead();
  EXPECT_EQ(value, 1416131460);
}

// The data pool may ask for any id in any shape: only the two integer
// values are served, and every other question is answered no, leaving the
// caller's variable as it was.
TEST(PlaybackDataProviderTest, ServesOnlyItsTwoIntegers) {
  pelorin_test::FakeDataPool pool;
  PlaybackDataProvider provider(&pool);
  for (const uint32_t id : {kTick, kNext}) {
    SCOPED_TRACE(id);
    int32_t number = 7;
    std::string text = "kept";
    uint32_t first = 7;
    uint32_t count = 7;
    EXPECT_EQ(provider.GetValueType(id), 0u);
    EXPECT_FALSE(provider.GetIntAt(id, 0, &number));
    EXPECT_FALSE(provider.GetText(id, &text));
    EXPECT_FALSE(provider.GetTextAt(id, 0, &text));
    EXPECT_FALSE(provider.GetRange(id, &first, &count));
    EXPECT_EQ(provider.GetCount(id), Quillan::SDDataProvider::kNoCount);
    EXPECT_EQ(number, 7);
    EXPECT_EQ(text, "kept");
  }
  int32_t number = 7;
  EXPECT_FALSE(provider.GetValue(0x4d000002, &number));
  EXPECT_EQ(number, 7);
  EXPECT_EQ(provider.GetValueType(0x4d000002), PlaybackDataProvider::kNotServed);
}

// The work-loop thread writes both values in one transaction while a
// data-pool thread reads them: a read section never sees half of one.
TEST(PlaybackDataProviderTest, ReadersNeverSeeHalfATransaction) {
  pelorin_test::FakeDataPool pool;
  PlaybackDataProvider provider(&pool);
  std::atomic<bool> done{false};
  std::atomic<int> torn{0};
  std::thread reader([&] {
    while (!done.load()) {
      int32_t tick = 0;
      int32_t next = 0;
      provider.LockRead();
      provider.GetValue(kTick, &tick);
      provider.GetValue(kNext, &next);
      provider.UnlockRead();
      if (tick != next) ++torn;
    }
  });
  for (int i = 1; i <= 1000; ++i) {
    provider.BeginWrite();
    provider.SetValue(kTick, i);
    provider.SetValue(kNext, i);
    provider.EndWrite();
  }
  done = true;
  reader.join();
  EXPECT_EQ(torn.load(), 0);
}

}  // namespace
