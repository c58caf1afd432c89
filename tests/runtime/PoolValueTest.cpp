// Typed table entries: each answers only the operations of its own type,
// keeps copies of what it is given, and reports missing content clearly.

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "runtime/PoolValue.h"

namespace {

using Quillan::PoolValue;

TEST(PoolValueTest, EntriesAnswerOnlyForTheirOwnTypeAndMissingContentClearsTheOutputs) {
  PoolValue integer(PoolValue::kInteger, 100), text(PoolValue::kText, -42), odd(7, 3);
  int32_t number = -5;
  std::string word = "unchanged";
  EXPECT_FALSE(integer.GetText(&word) || integer.AppendInt(1) || integer.ClearList());
  EXPECT_FALSE(text.GetInt(&number) || text.SetInt(7));
  EXPECT_FALSE(odd.GetInt(&number) || odd.SetText("x") || odd.ClearList());
  EXPECT_TRUE(number == -5 && word == "unchanged");
  PoolValue moved(std::move(text));  // both are destroyed: the text must be freed once
  EXPECT_TRUE(moved.GetText(&word) && word == "-42");  // a text made from a number
  EXPECT_TRUE(PoolValue(PoolValue::kText, 0).GetText(&word) && word.empty());
  word = "old";
  EXPECT_FALSE(PoolValue::Empty(PoolValue::kText).GetText(&word));
  EXPECT_EQ(word, "");
  const uint8_t* bytes = reinterpret_cast<const uint8_t*>(&number);
  uint32_t size = 9;
  EXPECT_FALSE(PoolValue::Empty(PoolValue::kBuffer).GetBuffer(&bytes, &size));
  EXPECT_TRUE(bytes == nullptr && size == 0u);
}

TEST(PoolValueTest, BuffersAreCopiedAndListsCheckTheirIndexes) {
  PoolValue buffer = PoolValue::Empty(PoolValue::kBuffer);
  uint8_t data[] = {1, 2, 3};
  ASSERT_TRUE(buffer.SetBuffer(data, 3));
  data[0] = 9;
  const uint8_t* bytes = nullptr;
  uint32_t size = 0;
  ASSERT_TRUE(buffer.GetBuffer(&bytes, &size) && size == 3u);
  EXPECT_EQ(bytes[0], 1);
  ASSERT_TRUE(buffer.SetBuffer(data, 2));  // replaces (and frees) the first
  ASSERT_TRUE(buffer.GetBuffer(&bytes, &size) && size == 2u);
  EXPECT_EQ(bytes[0], 9);
  PoolValue never = PoolValue::Empty(PoolValue::kTextList);
  EXPECT_TRUE(never.ClearList()) << "no list yet counts as empty";
  PoolValue buffers = PoolValue::Empty(PoolValue::kBufferList);
  buffers.AppendBuffer(data, 2);
  buffers.AppendBuffer(data, 1);
  EXPECT_TRUE(buffers.GetBufferAt(1, &bytes, &size) && size == 1u);
  EXPECT_FALSE(buffers.GetBufferAt(2, &bytes, &size));
  EXPECT_TRUE(buffers.ClearList());
  EXPECT_EQ(buffers.GetCount(), 0u);
}

}  // namespace
