// Typed table entries: each entry answers only the operations of its own
// type, owns copies of what it is given, and frees them by type.

#include <gtest/gtest.h>

#include <string>

#include "runtime/PoolValue.h"

namespace {

using Quillan::PoolValue;

TEST(PoolValueTest, EntriesAnswerOnlyForTheirOwnType) {
  PoolValue integer(PoolValue::kInteger, 100);
  PoolValue text(PoolValue::kText, 0);
  int32_t number = -5;
  std::string word = "unchanged";

  EXPECT_TRUE(integer.GetInt(&number));
  EXPECT_EQ(number, 100);
  EXPECT_FALSE(integer.GetText(&word));
  EXPECT_FALSE(integer.SetText("x"));
  EXPECT_FALSE(integer.AppendInt(1));
  EXPECT_FALSE(integer.ClearList());
  EXPECT_EQ(word, "unchanged");

  number = -5;
  EXPECT_FALSE(text.GetInt(&number));
  EXPECT_FALSE(text.SetInt(7));
  EXPECT_EQ(number, -5);
  EXPECT_TRUE(text.GetText(&word));
  EXPECT_EQ(word, "");
}

TEST(PoolValueTest, TextMadeFromANumberHoldsItsDecimalText) {
  std::string word;
  EXPECT_TRUE(PoolValue(PoolValue::kText, -42).GetText(&word));
  EXPECT_EQ(word, "-42");
  EXPECT_TRUE(PoolValue(PoolValue::kText, 0).GetText(&word));
  EXPECT_EQ(word, "");
}

TEST(PoolValueTest, MissingTextOrBufferClearsTheOutValuesAndAnswersFalse) {
  PoolValue text = PoolValue::Empty(PoolValue::kText);
  std::string word = "old";
  EXPECT_FALSE(text.GetText(&word));
  EXPECT_EQ(word, "");

  PoolValue buffer = PoolValue::Empty(PoolValue::kBuffer);
  const uint8_t dummy = 1;
  const uint8_t* bytes = &dummy;
  uint32_t size = 9;
  EXPECT_FALSE(buffer.GetBuffer(&bytes, &size));
  EXPECT_EQ(bytes, nullptr);
  EXPECT_EQ(size, 0u);
}

TEST(PoolValueTest, SettersKeepTheirOwnCopies) {
  PoolValue text(PoolValue::kText, 0);
  std::string source = "Stau";
  ASSERT_TRUE(text.SetText(source));
  source = "changed";
  std::string word;
  ASSERT_TRUE(text.GetText(&word));
  EXPECT_EQ(word, "Stau");

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

TEST(PoolValueTest, ListsGrowOnAppendAndCheckTheirIndexes) {
  PoolValue integers = PoolValue::Empty(PoolValue::kIntegerList);
  int32_t number = -1;
  EXPECT_EQ(integers.GetCount(), 0u);
  EXPECT_FALSE(integers.GetIntAt(0, &number));
  ASSERT_TRUE(integers.AppendInt(4));
  ASSERT_TRUE(integers.AppendInt(5));
  EXPECT_EQ(integers.GetCount(), 2u);
  EXPECT_TRUE(integers.GetIntAt(1, &number));
  EXPECT_EQ(number, 5);
  number = -1;
  EXPECT_FALSE(integers.GetIntAt(2, &number));
  EXPECT_EQ(number, -1);

  PoolValue texts = PoolValue::Empty(PoolValue::kTextList);
  ASSERT_TRUE(texts.AppendText("a"));
  ASSERT_TRUE(texts.AppendText("b"));
  std::string word;
  EXPECT_TRUE(texts.GetTextAt(1, &word));
  EXPECT_EQ(word, "b");
  EXPECT_FALSE(texts.GetTextAt(2, &word));

  PoolValue buffers = PoolValue::Empty(PoolValue::kBufferList);
  const uint8_t first[] = {7};
  const uint8_t second[] = {8, 9};
  ASSERT_TRUE(buffers.AppendBuffer(first, 1));
  ASSERT_TRUE(buffers.AppendBuffer(second, 2));
  const uint8_t* bytes = nullptr;
  uint32_t size = 0;
  EXPECT_TRUE(buffers.GetBufferAt(1, &bytes, &size));
  ASSERT_EQ(size, 2u);
  EXPECT_EQ(bytes[1], 9);
  EXPECT_FALSE(buffers.GetBufferAt(2, &bytes, &size));
}

TEST(PoolValueTest, ClearListEmptiesListsAndRefusesOtherTypes) {
  PoolValue never = PoolValue::Empty(PoolValue::kTextList);
  EXPECT_TRUE(never.ClearList());  // no list yet counts as empty
  EXPECT_EQ(never.GetCount(), 0u);

  PoolValue buffers = PoolValue::Empty(PoolValue::kBufferList);
  const uint8_t data[] = {1, 2};
  buffers.AppendBuffer(data, 2);
  buffers.AppendBuffer(data, 1);
  EXPECT_TRUE(buffers.ClearList());
  EXPECT_EQ(buffers.GetCount(), 0u);
  EXPECT_TRUE(buffers.AppendBuffer(data, 2));
  EXPECT_EQ(buffers.GetCount(), 1u);

  EXPECT_FALSE(PoolValue(PoolValue::kInteger, 1).ClearList());
  EXPECT_FALSE(PoolValue(PoolValue::kText, 1).ClearList());
  EXPECT_FALSE(PoolValue::Empty(PoolValue::kBuffer).ClearList());
}

TEST(PoolValueTest, UnknownTypeRefusesEverything) {
  PoolValue odd(7, 3);
  int32_t number = 0;
  std::string word;
  EXPECT_EQ(odd.GetType(), 7u);
  EXPECT_FALSE(odd.GetInt(&number));
  EXPECT_FALSE(odd.SetInt(1));
  EXPECT_FALSE(odd.SetText("x"));
  EXPECT_FALSE(odd.AppendText("x"));
  EXPECT_FALSE(odd.ClearList());
  EXPECT_EQ(odd.GetCount(), 0u);
}

}  // namespace
