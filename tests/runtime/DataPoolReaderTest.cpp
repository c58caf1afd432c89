// The table-backed data-pool client and its typed entries: id-to-entry
// mapping, typed access, change reports (sorted, one copy of each id, also
// when empty).

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "runtime/DataPoolReader.h"
#include "runtime/PoolValue.h"
#include "tests/support/FakeDataPool.h"

namespace {

using Quillan::DataPoolReader;
using Quillan::PoolValue;
using Ids = std::vector<uint32_t>;

constexpr uint32_t kMask = 0x00FFFFFF;
constexpr uint32_t kClientId = 76;
constexpr uint32_t kInt = 0x4c000001, kText = 0x4c000002, kIntList = 0x4c000003,
                   kTextList = 0x4c000004, kBuffer = 0x4c000005, kBufferList = 0x4c000006;

// Index 0 (never served), then one entry of every type at indices 1 to 6.
struct Table {
  PoolValue entries[7] = {
      PoolValue(PoolValue::kInteger, 55),       PoolValue(PoolValue::kInteger, 100),
      PoolValue(PoolValue::kText, 0),           PoolValue::Empty(PoolValue::kIntegerList),
      PoolValue::Empty(PoolValue::kTextList),   PoolValue::Empty(PoolValue::kBuffer),
      PoolValue::Empty(PoolValue::kBufferList),
  };
};

class DataPoolReaderTest : public ::testing::Test {
 protected:
  pelorin_test::FakeDataPool pool;
  Table table;
  DataPoolReader reader{table.entries, 1, 6, kMask, &pool, kClientId};
};

TEST_F(DataPoolReaderTest, MaskedIdSelectsTheEntryWithinTheServedRangeOfItsType) {
  int32_t value = -1;
  std::string text = "unchanged";
  EXPECT_TRUE(reader.GetValue(0x7f000001, &value));  // the high byte is masked away
  EXPECT_EQ(value, 100);
  EXPECT_TRUE(reader.GetText(kText, &text) && text.empty());  // a text made from 0
  EXPECT_EQ(reader.GetValueType(kText), PoolValue::kText);
  for (uint32_t outside : {0x4c000000u, 0x4c000007u, 0x4d000000u}) {
    EXPECT_FALSE(reader.GetValue(outside, &value)) << std::hex << outside;
    EXPECT_EQ(reader.GetValueType(outside), DataPoolReader::kNotServed);
    EXPECT_EQ(reader.GetCount(outside), 0u);
  }
  reader.LockWrite();
  EXPECT_FALSE(reader.SetInt(0x4c000000, 7));  // index 0 holds an integer, but is not served
  EXPECT_FALSE(reader.SetText(kInt, "x") || reader.AppendInt(kInt, 1) || reader.ClearList(kInt));
  EXPECT_FALSE(reader.SetInt(kText, 7) || reader.GetValue(kText, &value));
  reader.UnlockWrite();
  EXPECT_EQ(value, 100);
  EXPECT_EQ(pool.reports.All(), (std::vector<Ids>{Ids{}}));  // refusals mark nothing
}

TEST_F(DataPoolReaderTest, WritesReachTheirEntryAndAreReportedSortedOnceEachSection) {
  uint8_t data[] = {1, 2, 3};
  reader.LockWrite();
  EXPECT_TRUE(reader.ClearList(kTextList));  // no list yet counts as empty
  EXPECT_TRUE(reader.SetText(kText, "A7"));
  EXPECT_TRUE(reader.SetInt(kInt, 150) && reader.SetInt(kInt, 151));
  EXPECT_TRUE(reader.AppendInt(kIntList, 10) && reader.AppendInt(kIntList, 11));
  EXPECT_TRUE(reader.AppendText(kTextList, "x"));
  EXPECT_TRUE(reader.SetBuffer(kBuffer, data, 3));
  EXPECT_TRUE(reader.SetBuffer(kBuffer, data, 2));  // replaces (and frees) the first
  EXPECT_TRUE(reader.AppendBuffer(kBufferList, data, 2) && reader.AppendBuffer(kBufferList, data, 1));
  EXPECT_TRUE(reader.ClearList(kTextList));
  reader.MarkChanged(0x80000000u);  // compared unsigned: last
  reader.UnlockWrite();
  data[0] = 9;  // entries keep copies
  reader.LockWrite();  // a section that changes nothing still reports
  reader.UnlockWrite();
  EXPECT_EQ(pool.reports.All(),
            (std::vector<Ids>{
                {kInt, kText, kIntList, kTextList, kBuffer, kBufferList, 0x80000000u},
                {}}));
  reader.LockRead();
  int32_t value = -1;
  std::string text;
  const uint8_t* bytes = nullptr;
  uint32_t size = 0;
  EXPECT_TRUE(reader.GetValue(kInt, &value) && value == 151);
  EXPECT_TRUE(reader.GetText(kText, &text) && text == "A7");
  EXPECT_TRUE(reader.GetIntAt(kIntList, 1, &value) && value == 11);
  EXPECT_FALSE(reader.GetIntAt(kIntList, 2, &value));
  EXPECT_FALSE(reader.GetTextAt(kTextList, 0, &text));
  EXPECT_TRUE(reader.GetBuffer(kBuffer, &bytes, &size) && size == 2 && bytes[0] == 1);
  EXPECT_TRUE(reader.GetBufferAt(kBufferList, 1, &bytes, &size) && size == 1);
  EXPECT_FALSE(reader.GetBufferAt(kBufferList, 2, &bytes, &size));
  EXPECT_EQ(reader.GetCount(kIntList), 2u);
  reader.UnlockRead();
}

}  // namespace
