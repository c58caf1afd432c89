// Feeds arbitrary bytes to RecordReader through an in-memory ByteReader and
// checks what every record must satisfy. The input is read twice, one byte
// per call and through read-ahead runs of varying length; both readings must
// give the same records. The first input byte chooses whether, and after how
// many bytes, the reader fails with an I/O error, and the run length.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "player/ByteReader.h"
#include "player/RecordReader.h"

namespace {

using Quillan::FileStatus;
using Quillan::ReadStatus;

class MemoryReader : public Quillan::ByteReader {
 public:
  MemoryReader(const uint8_t* data, size_t size, size_t failAt, size_t readyChunk)
      : m_data(data), m_size(size), m_failAt(failAt), m_readyChunk(readyChunk) {}
  using ByteReader::Read;
  FileStatus Read(void* buffer, uint32_t length, uint32_t* count) override {
    *count = 0;
    if (m_pos == m_failAt) return FileStatus::kIoError;
    if (m_pos == m_size || length == 0) return FileStatus::kEndOfFile;
    size_t taken = m_size - m_pos < length ? m_size - m_pos : length;
    if (m_failAt > m_pos && m_failAt - m_pos < taken) taken = m_failAt - m_pos;
    std::memcpy(buffer, m_data + m_pos, taken);
    m_pos += taken;
    *count = static_cast<uint32_t>(taken);
    return FileStatus::kSuccess;
  }
  const uint8_t* PeekReady(uint32_t* count) override {
    size_t end = m_readyChunk == 0 ? m_pos : (m_pos / m_readyChunk + 1) * m_readyChunk;
    if (end > m_size) end = m_size;
    if (end > m_failAt) end = m_failAt;
    *count = static_cast<uint32_t>(end - m_pos);
    return m_data + m_pos;
  }
  void TakeReady(uint32_t count) override {
    uint32_t ready = 0;
    PeekReady(&ready);
    if (count > ready) std::abort();
    m_pos += count;
  }
  size_t Position() const { return m_pos; }

 private:
  const uint8_t* m_data;
  size_t m_size;
  size_t m_failAt;
  size_t m_readyChunk;
  size_t m_pos = 0;
};

void Check(bool condition) {
  if (!condition) std::abort();
}

struct Result {
  ReadStatus status;
  double time;
  std::string tag;
  std::string payload;
};

std::vector<Result> ReadAll(MemoryReader& reader, size_t size) {
  Quillan::RecordReader records(reader);
  Quillan::Record record;
  std::vector<Result> results;
  for (;;) {
    const size_t before = reader.Position();
    const ReadStatus status = records.ReadRecord(record);
    if (status == ReadStatus::kRecord) {
      Check(!record.tag.empty());
      Check(record.tag.find(' ') == std::string::npos);
      Check(record.tag.find('\n') == std::string::npos);
      Check(record.payload.find('\n') == std::string::npos);
      Check(record.payload.find('\0') == std::string::npos);
      Check(record.payload.size() + record.tag.size() < size);
    } else {
      Check(record.tag.empty() && record.payload.empty());
    }
    Check(record.time == record.time);  // never NaN
    results.push_back({status, record.time, record.tag, record.payload});
    if (status == ReadStatus::kEndOfInput || status == ReadStatus::kReadError) return results;
    // A record or a malformed line always consumes input, so reading ends.
    Check(reader.Position() > before);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const size_t failAt = (data[0] & 0x80) != 0 ? (data[0] & 0x3f) * 3u : static_cast<size_t>(-1);
  const size_t readyChunk = (data[0] & 0x40) != 0 ? 1u + (data[0] & 0x0f) : 65536u;
  MemoryReader byteByByte(data + 1, size - 1, failAt, 0);
  MemoryReader readAhead(data + 1, size - 1, failAt, readyChunk);
  const std::vector<Result> expected = ReadAll(byteByByte, size);
  const std::vector<Result> actual = ReadAll(readAhead, size);
  Check(expected.size() == actual.size());
  for (size_t i = 0; i < expected.size(); ++i) {
    Check(expected[i].status == actual[i].status);
    Check(expected[i].time == actual[i].time);
    Check(expected[i].tag == actual[i].tag);
    Check(expected[i].payload == actual[i].payload);
  }
  return 0;
}
