// The line tap must see every line exactly as the module's reader splits it;
// otherwise reports would blame the wrong bytes. These tests hold it against
// the reader itself.

#include "host/pelorin-check/LineTap.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "player/RecordReader.h"
#include "runtime/NumberText.h"

namespace {

using PelorinCheck::LineShape;
using PelorinCheck::LineTap;

// Serves a byte string one byte per read; with `peek`, it also offers up to
// 7 bytes at a time for read-ahead runs.
class StringSource : public Quillan::ByteReader {
 public:
  explicit StringSource(std::string bytes, bool peek = false)
      : m_bytes(std::move(bytes)), m_peek(peek) {}
  using ByteReader::Read;
  const uint8_t* PeekReady(uint32_t* count) override {
    *count = m_peek ? static_cast<uint32_t>(std::min<size_t>(7, m_bytes.size() - m_pos)) : 0;
    return reinterpret_cast<const uint8_t*>(m_bytes.data() + m_pos);
  }
  void TakeReady(uint32_t count) override { m_pos += count; }
  Quillan::FileStatus Read(void* buffer, uint32_t length, uint32_t* count) override {
    const size_t left = m_bytes.size() - m_pos;
    const size_t n = std::min<size_t>({left, length, 1});
    std::memcpy(buffer, m_bytes.data() + m_pos, n);
    m_pos += n;
    *count = static_cast<uint32_t>(n);
    return n == 0 ? Quillan::FileStatus::kEndOfFile : Quillan::FileStatus::kSuccess;
  }

 private:
  std::string m_bytes;
  size_t m_pos = 0;
  bool m_peek;
};

// Reads every line of `bytes` through a tap and the module's reader and
// checks that what the tap saw agrees with what the reader made of it.
void ExpectTapAgreesWithReader(const std::string& bytes, bool peek) {
  SCOPED_TRACE(::testing::PrintToString(bytes) + (peek ? " with read-ahead" : ""));
  StringSource source(bytes, peek);
  LineTap tap(source);
  Quillan::RecordReader reader(tap);
  Quillan::Record record;
  for (int lines = 0; lines <= static_cast<int>(bytes.size()); ++lines) {
    tap.BeginLine();
    const Quillan::ReadStatus status = reader.ReadRecord(record);
    if (status == Quillan::ReadStatus::kEndOfInput) {
      EXPECT_EQ(tap.Offset(), bytes.size());
      return;
    }
    const LineShape& line = tap.Line();
    EXPECT_EQ(line.head, bytes.substr(line.start, line.head.size()));
    const bool wellFormed = line.firstBlank != LineShape::kNoBlank && line.firstBlank > 0 &&
                            line.afterBlank != -1 && line.afterBlank != ' ';
    if (status == Quillan::ReadStatus::kMalformedLine) {
      EXPECT_FALSE(wellFormed) << "line " << lines;
      continue;
    }
    ASSERT_EQ(status, Quillan::ReadStatus::kRecord);
    ASSERT_TRUE(wellFormed) << "line " << lines;
    EXPECT_EQ(line.head.substr(line.firstBlank + 1, record.tag.size()), record.tag);
    double time = 0.0;
    if (Quillan::ParseDecimal(line.TimeText(), &time)) {
      EXPECT_EQ(time, record.time);
    } else {
      EXPECT_EQ(record.time, 0.0);
    }
  }
  ADD_FAILURE() << "the reader did not reach the end";
}

TEST(LineTapTest, AgreesWithTheReaderOnRandomLinesAndLineEnds) {
  std::mt19937 random(20241123);
  const char alphabet[] = {'1', '.', ',', ' ', ' ', '\r', '\n', '$', 'x', '\t'};
  for (int round = 0; round < 400; ++round) {
    std::string bytes(random() % 40, ' ');
    for (char& c : bytes) c = alphabet[random() % sizeof(alphabet)];
    ExpectTapAgreesWithReader(bytes, round % 2 == 0);
  }
}

TEST(LineTapTest, KeepsOnlyABoundedHeadOfALongLine) {
  const std::string time(5000, '1');
  StringSource source(time + " $A payload\n", true);
  LineTap tap(source);
  Quillan::RecordReader reader(tap);
  Quillan::Record record;
  tap.BeginLine();
  ASSERT_EQ(reader.ReadRecord(record), Quillan::ReadStatus::kRecord);
  EXPECT_EQ(tap.Line().head.size(), LineShape::kHeadBytes);
  EXPECT_EQ(tap.Line().length, time.size() + 11);
  EXPECT_EQ(tap.Line().firstBlank, time.size());
  EXPECT_FALSE(tap.Line().TimeTextKnown());
}

}  // namespace
