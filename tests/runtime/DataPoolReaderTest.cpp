// The table-backed data-pool client: id-to-entry mapping, typed access,
// change reports (sorted, one copy of each id, also when empty), and
// concurrent read and write sections.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "DataPoolDirectory.h"
#include "runtime/DataPoolReader.h"
#include "runtime/PoolValue.h"
#include "tests/module/FakeHmiHost.h"

namespace {

using Quillan::DataPoolReader;
using Quillan::PoolValue;

constexpr uint32_t kMask = 0x00FFFFFF;
constexpr uint32_t kClientId = 76;

// Index 0 (never served), then one entry of every type at indices 1 to 6.
struct Table {
  PoolValue entries[7] = {
      PoolValue(PoolValue::kInteger, 55),       PoolValue(PoolValue::kInteger, 100),
      PoolValue(PoolValue::kText, 0),           PoolValue::Empty(PoolValue::kIntegerList),
      PoolValue::Empty(PoolValue::kTextList),   PoolValue::Empty(PoolValue::kBuffer),
      PoolValue::Empty(PoolValue::kBufferList),
  };
};

constexpr uint32_t kInt = 0x4c000001;
constexpr uint32_t kText = 0x4c000002;
constexpr uint32_t kIntList = 0x4c000003;
constexpr uint32_t kTextList = 0x4c000004;
constexpr uint32_t kBuffer = 0x4c000005;
constexpr uint32_t kBufferList = 0x4c000006;

class DataPoolReaderTest : public ::testing::Test {
 protected:
  pelorin_test::FakeDataPool pool;
  Table table;
  DataPoolReader reader{table.entries, 1, 6, kMask, &pool, kClientId};
};

TEST_F(DataPoolReaderTest, MaskedIdSelectsTheEntryWithinTheServedRange) {
  Table small;
  DataPoolReader speed(small.entries, 1, 2, kMask, &pool, 99);
  int32_t value = -1;
  EXPECT_TRUE(speed.GetValue(0x4c000001, &value));
  EXPECT_EQ(value, 100);
  EXPECT_TRUE(speed.GetValue(0x7f000001, &value));  // the high byte is masked away
  EXPECT_EQ(speed.GetValueType(0x4c000002), PoolValue::kText);
  for (uint32_t outside : {0x4c000000u, 0x4c000003u, 0x4d000000u}) {
    value = -1;
    EXPECT_FALSE(speed.GetValue(outside, &value)) << std::hex << outside;
    EXPECT_EQ(value, -1);
    EXPECT_EQ(speed.GetValueType(outside), DataPoolReader::kNotServed);
    EXPECT_EQ(speed.GetCount(outside), 0u);
  }
  speed.LockWrite();
  EXPECT_FALSE(speed.SetInt(0x4c000000, 7));  // index 0 holds an integer, but is not served
  speed.UnlockWrite();
  ASSERT_TRUE(speed.GetValue(0x4c000001, &value));
  int32_t hidden = 0;
  small.entries[0].GetInt(&hidden);
  EXPECT_EQ(hidden, 55);
  ASSERT_EQ(pool.reports.All().size(), 1u);
  EXPECT_TRUE(pool.reports.All()[0].empty());
}

TEST_F(DataPoolReaderTest, AccessReachesTheEntryOfItsIdOnlyWithItsType) {
  int32_t value = -1;
  reader.LockWrite();
  EXPECT_FALSE(reader.GetValue(kText, &value));
  EXPECT_FALSE(reader.SetInt(kText, 3));
  EXPECT_FALSE(reader.SetText(kInt, "x"));
  EXPECT_FALSE(reader.AppendInt(kTextList, 1));
  EXPECT_FALSE(reader.ClearList(kBuffer));
  EXPECT_FALSE(reader.SetBuffer(kBufferList, nullptr, 0));
  reader.UnlockWrite();
  EXPECT_EQ(value, -1);
  ASSERT_EQ(pool.reports.All().size(), 1u);
  EXPECT_TRUE(pool.reports.All()[0].empty()) << "refused writes mark nothing";

  const uint8_t bytes[] = {1, 2, 3};
  reader.LockWrite();
  EXPECT_TRUE(reader.SetInt(kInt, 150));
  EXPECT_TRUE(reader.SetText(kText, "A7"));
  EXPECT_TRUE(reader.AppendInt(kIntList, 10));
  EXPECT_TRUE(reader.AppendInt(kIntList, 11));
  EXPECT_TRUE(reader.AppendText(kTextList, "x"));
  EXPECT_TRUE(reader.SetBuffer(kBuffer, bytes, 3));
  EXPECT_TRUE(reader.AppendBuffer(kBufferList, bytes, 2));
  reader.UnlockWrite();

  reader.LockRead();
  std::string text;
  const uint8_t* out = nullptr;
  uint32_t size = 0;
  EXPECT_TRUE(reader.GetValue(kInt, &value) && value == 150);
  EXPECT_TRUE(reader.GetText(kText, &text) && text == "A7");
  EXPECT_TRUE(reader.GetIntAt(kIntList, 1, &value) && value == 11);
  EXPECT_TRUE(reader.GetTextAt(kTextList, 0, &text) && text == "x");
  EXPECT_TRUE(reader.GetBuffer(kBuffer, &out, &size) && size == 3);
  EXPECT_TRUE(reader.GetBufferAt(kBufferList, 0, &out, &size) && size == 2);
  EXPECT_EQ(reader.GetCount(kIntList), 2u);
  EXPECT_EQ(reader.GetCount(kBuffer), 0u) << "counts only for lists";
  reader.UnlockRead();
}

TEST_F(DataPoolReaderTest, ReportIsSortedWithoutDuplicatesAndSentAfterEverySection) {
  reader.LockWrite();
  reader.SetText(kText, "a");
  reader.SetInt(kInt, 1);
  reader.SetInt(kInt, 2);
  reader.ClearList(kIntList);
  reader.SetText(kText, "b");
  reader.MarkChanged(0x80000000u);  // compared unsigned: last
  reader.UnlockWrite();

  reader.LockWrite();  // a section that changes nothing still reports
  reader.UnlockWrite();

  const auto reports = pool.reports.All();
  ASSERT_EQ(reports.size(), 2u);
  EXPECT_EQ(reports[0], (std::vector<uint32_t>{kInt, kText, kIntList, 0x80000000u}));
  EXPECT_TRUE(reports[1].empty());
}

TEST_F(DataPoolReaderTest, RegistersOnlyWhenAskedAndIsInTheDirectoryWhileItLives) {
  EXPECT_TRUE(pool.registered.All().empty());
  reader.Register();
  reader.Unregister();
  ASSERT_EQ(pool.registered.All().size(), 1u);
  EXPECT_EQ(pool.registered.All()[0].first, &reader);
  EXPECT_EQ(pool.registered.All()[0].second, kClientId);
  EXPECT_EQ(pool.unregistered.All(), (std::vector<uint32_t>{kClientId}));

  EXPECT_EQ(DataPoolDirectory::FindClient(kClientId), &reader);
  {
    Table other;
    DataPoolReader successor(other.entries, 1, 2, kMask, &pool, kClientId);
    EXPECT_EQ(DataPoolDirectory::FindClient(kClientId), &successor);
  }
  EXPECT_EQ(DataPoolDirectory::FindClient(kClientId), nullptr);
  auto* temporary = new DataPoolReader(table.entries, 1, 2, kMask, &pool, 1234);
  EXPECT_EQ(DataPoolDirectory::FindClient(1234), temporary);
  delete temporary;
  EXPECT_EQ(DataPoolDirectory::FindClient(1234), nullptr);
  EXPECT_EQ(pool.unregistered.All().size(), 1u) << "destruction does not unregister";
}

// Writers store one number into two entries per section; readers must never
// see the two differ, and every section's report must hold exactly its own
// two ids.
TEST_F(DataPoolReaderTest, ConcurrentSectionsStayWholeAndReportSeparately) {
  PoolValue pair[3] = {PoolValue(PoolValue::kInteger, 0), PoolValue(PoolValue::kInteger, 0),
                       PoolValue(PoolValue::kInteger, 0)};
  DataPoolReader shared(pair, 1, 2, kMask, &pool, 500);
  EXPECT_TRUE(pelorin_test::SectionsStayWhole(
      3, 300,
      [&](int w, int i) {
        shared.LockWrite();
        shared.SetInt(0x4c000001, w * 1000 + i);
        shared.LockRead();  // a writer may read inside its own section
        shared.SetInt(0x4c000002, w * 1000 + i);
        shared.UnlockRead();
        shared.UnlockWrite();
      },
      [&] {
        int32_t a = -1;
        int32_t b = -2;
        shared.LockRead();
        shared.GetValue(0x4c000001, &a);
        shared.GetValue(0x4c000002, &b);
        shared.UnlockRead();
        return std::make_pair(a, b);
      }));
  const auto reports = pool.reports.All();
  ASSERT_EQ(reports.size(), 900u);
  for (const auto& report : reports) {
    EXPECT_EQ(report, (std::vector<uint32_t>{0x4c000001, 0x4c000002}));
  }
}

}  // namespace
