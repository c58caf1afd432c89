// RecordReader: line ends, field splitting, time conversion, read errors and
// rewinding, over memory read ahead in runs of several sizes (the data
// player test reads a real file larger than the read buffer).

#include "player/RecordReader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/MemoryInput.h"

namespace Quillan {
namespace {

using pelorin_test::MemoryInput;

struct Result {
  ReadStatus status;
  double time;
  std::string tag;
  std::string payload;
};

// Every ReadRecord result up to and including the first end of input (or
// read error).
std::vector<Result> ReadAll(ByteReader& reader) {
  RecordReader records(reader);
  std::vector<Result> results;
  for (int guard = 0; guard < 100000; ++guard) {
    Record record;
    record.tag = "stale";
    const ReadStatus status = records.ReadRecord(record);
    results.push_back({status, record.time, record.tag, record.payload});
    if (status == ReadStatus::kEndOfInput || status == ReadStatus::kReadError) break;
  }
  return results;
}

bool operator==(const Result& a, const Result& b) {
  return a.status == b.status && a.time == b.time && a.tag == b.tag && a.payload == b.payload;
}

// The results byte by byte; taking read-ahead runs must give the same.
std::vector<Result> ReadAll(const std::string& bytes) {
  MemoryInput reader(bytes);
  const std::vector<Result> results = ReadAll(reader);
  for (size_t chunk : {1u, 3u, 4096u}) {
    MemoryInput buffered(bytes, std::string::npos, chunk);
    EXPECT_TRUE(ReadAll(buffered) == results) << "read ahead in runs of " << chunk;
  }
  return results;
}

Result ReadOne(const std::string& line) { return ReadAll(line).front(); }

// Whole inputs: every line end gives the same records, an empty line is
// malformed, and the end of input empties the tag even without a record.
TEST(RecordReaderLines, LineEndsAndEmptyLines) {
  const ReadStatus ok = ReadStatus::kRecord;
  const Result end{ReadStatus::kEndOfInput, 0, "", ""};
  const Result empty{ReadStatus::kMalformedLine, 0, "", ""};
  const std::vector<Result> threeRecords = {
      {ok, 1, "$A", "a"}, {ok, 2.5, "$B", ""}, {ok, 3, "$C", "c c"}, end};
  const std::vector<Result> emptyLine = {{ok, 1, "$A", ""}, empty, {ok, 2, "$B", ""}, end};
  const std::vector<std::pair<std::string, std::vector<Result>>> cases = {
      {"1 $A a\n2.5 $B\n3 $C c c\n", threeRecords},
      {"1 $A a\r\n2.5 $B\r\n3 $C c c\r\n", threeRecords},
      {"1 $A a\r2.5 $B\r3 $C c c\r", threeRecords},
      {"1 $A a\r\n2.5 $B\r3 $C c c", threeRecords},  // last line without an end
      {"", {end}},
      {"1 $A\n\n2 $B\n", emptyLine},
      {"1 $A\r\n\r\n2 $B\r\n", emptyLine},
      // The second CR of CR CR starts the next line; a CR right before the
      // end of input ends the line.
      {"1 $A\r\r2 $B x\n", {{ok, 1, "$A", ""}, {ok, 2, "$B", "x"}, end}},
      {"1 $A\r", {{ok, 1, "$A", ""}, end}},
  };
  for (const auto& c : cases) EXPECT_TRUE(ReadAll(c.first) == c.second) << c.first;
}

// The end of input repeats until a reset, which also drops the byte held
// back after a lone CR (else the next time would read "21").
TEST(RecordReaderLines, EndOfInputRepeatsAndResetStartsOver) {
  MemoryInput input("1 $A\r2 $B\r");
  RecordReader& records = *input.Reader();
  Record record;
  ASSERT_EQ(records.ReadRecord(record), ReadStatus::kRecord);  // holds back "2"
  input.Rewind();
  ASSERT_EQ(records.ReadRecord(record), ReadStatus::kRecord);
  EXPECT_EQ(record.time, 1.0);
  EXPECT_EQ(record.tag, "$A");
  EXPECT_EQ(records.ReadRecord(record), ReadStatus::kRecord);
  EXPECT_EQ(records.ReadRecord(record), ReadStatus::kEndOfInput);
  EXPECT_EQ(records.ReadRecord(record), ReadStatus::kEndOfInput);
  input.Rewind();
  EXPECT_EQ(records.ReadRecord(record), ReadStatus::kRecord);
  EXPECT_EQ(record.time, 1.0);
}

TEST(RecordReaderLines, ReadErrorsEndWithoutARecord) {
  for (size_t chunk : {0u, 4096u}) {
    MemoryInput midLine("1 $A\n2 $B", 7, chunk);
    const std::vector<Result> results = ReadAll(midLine);
    ASSERT_EQ(results.size(), 2u);
    EXPECT_EQ(results[0].status, ReadStatus::kRecord);
    EXPECT_EQ(results[1].status, ReadStatus::kReadError);
  }
  MemoryInput afterCr("1 $A\r2", 5);
  EXPECT_EQ(ReadAll(afterCr).front().status, ReadStatus::kReadError);
}

TEST(RecordReaderFields, SplittingAtBlanks) {
  const ReadStatus ok = ReadStatus::kRecord;
  const ReadStatus bad = ReadStatus::kMalformedLine;
  const std::vector<std::pair<std::string, Result>> cases = {
      {"1416131460.25 $TMC timeStamp=1 LTN=1", {ok, 1416131460.25, "$TMC", "timeStamp=1 LTN=1"}},
      {"1416131461,5 $TSL serviceType=1", {ok, 1416131461.5, "$TSL", "serviceType=1"}},
      {"1416131470 $TMC", {ok, 1416131470, "$TMC", ""}},
      {"1416131470 $TMC ", {ok, 1416131470, "$TMC", ""}},
      {"5 $T  two", {ok, 5, "$T", " two"}},
      {"abc $T p", {ok, 0, "$T", "p"}},
      {"1.2.3 $T", {ok, 0, "$T", ""}},
      {"1e3 $T", {ok, 1000, "$T", ""}},
      {"1\t$T x", {ok, 0, "x", ""}},  // a tab does not separate
      {"5  $T", {bad, 5, "", ""}},    // the time is converted before the tag is checked
      {" 5 $T", {bad, 0, "", ""}},
      {"5", {bad, 0, "", ""}},
      {"5 ", {bad, 5, "", ""}},
  };
  for (const auto& c : cases) EXPECT_TRUE(ReadOne(c.first + "\n") == c.second) << c.first;
}

TEST(RecordReaderFields, LongLinesAreNotCut) {
  const std::string payload(3 * 1024 * 1024, 'p');
  const std::vector<Result> results = ReadAll("1 $A " + payload + "\n2 $B\n");
  ASSERT_EQ(results.size(), 3u);
  EXPECT_EQ(results[0].payload.size(), payload.size());
  EXPECT_EQ(results[1].tag, "$B");
}

}  // namespace
}  // namespace Quillan
