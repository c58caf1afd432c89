// Typed table entries: each answers only the operations of its own type,
// keeps copies of what it is given, and reports missing content clearly.

#include <gtest/gtest.h>

#include <string>

#include "runtime/PoolValue.h"

namespace {

using Quillan::PoolValue;

TEST(PoolValueTest, EntriesAnswerOnlyForTheirOwnType) {
  PoolValue integer(PoolValue::kInteger, 100);
  PoolValue text(PoolValue::kText, -42);
  PoolValue odd(7, 3);
  int32_t number = -5;
  std::string word = "unchanged";
  EXPECT_FALSE(integer.GetText(&word));
  EXPECT_FALSE(integer.AppendInt(1));
  EXPECT_FALSE(integer.ClearList());
  EXPECT_FALSE(text.GetInt(&number));
  EXPECT_FALSE(text.SetInt(7));
  EXPECT_FALSE(odd.GetInt(&number));
  EXPECT_FALSE(odd.SetText("x"));
  EXPECT_FALSE(odd.ClearList());
  EXPECT_EQ(number, -5);
  EXPECT_EQ(word, "unchanged");
  EXPECT_TRUE(text.GetText(&word));
  EXPECT_EQ(word, "-42") << "a text made from a number holds its decimal text";
  EXPECT_TRUE(PoolValue(PoolValue::kText, 0).GetText(&word));
  EXPECT_EQ(word, "");
}

TEST(PoolValueTest, MissingTextOrBufferClearsTheOutValuesAndAnswersFalse) {
  std::string word = "old";
  EXPECT_FALSE(PoolValue::Empty(PoolValue::kText).GetText(&word));
  EXPECT_EQ(word, "");
  const uint8_t dummy = 1;
  const uint8_t* bytes = &dummy;
  uint32_t size = 9;
  EXPECT_FALSE(PoolValue::Empty(PoolValue::kBuffer).GetBuffer(&bytes, &size));
  EXPECT_EQ(bytes, nullptr);
  EXPECT_EQ(size, 0u);
}

TEST(PoolValueTest, SettersKeepTheirOwnCopies) {
  PoolValue buffer = PoolValue::Empty(PoolValue::kBuffer);
  uint8_t data[] = {1, 2, 3};
  ASSERT_TRUE(buffer.SetBuffer(data, 3));
  data[0] = 9;
  const uint8_t* bytes = nullptr;
  uint32_t size = 0;
  ASSERT_TRUE(buffer.GetBuffer(&bytes, &size));
  ASSERT_EQ(size, 3u);
  EXPECT_EQ(bytes[0], 1);
  ASSERT_TRUE(buffer.SetBuffer(data, 2));  // replaces (and frees) the first
  ASSERT_TRUE(buffer.GetBuffer(&bytes, &size));
  EXPECT_EQ(size, 2u);
  EXPECT_EQ(bytes[0], 9);
}

TEST(PoolValueTest, ListsCheckIndexesAndClearOnlyWhatTheyHold) {
  PoolValue never = PoolValue::Empty(PoolValue::kTextList);
  EXPECT_TRUE(never.ClearList()) << "no list yet counts as empty";
  std::string word;
  EXPECT_FALSE(never.GetTextAt(0, &word));

  PoolValue buffers = PoolValue::Empty(PoolValue::kBufferList);
  const uint8_t data[] = {7, 8};
  buffers.AppendBuffer(data, 2);
  buffers.AppendBuffer(data, 1);
  const uint8_t* bytes = nullptr;
  uint32_t size = 0;
  EXPECT_TRUE(buffers.GetBufferAt(1, &bytes, &size));
  EXPECT_EQ(size, 1u);
  EXPECT_FALSE(buffers.GetBufferAt(2, &bytes, &size));
  EXPECT_TRUE(buffers.ClearList());
  EXPECT_EQ(buffers.GetCount(), 0u);
  EXPECT_TRUE(buffers.AppendBuffer(data, 2));
  EXPECT_EQ(buffers.GetCount(), 1u);
}

}  // namespace
