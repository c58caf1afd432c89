#pragma once
// MemoryInput: an events "file" in memory with a RecordReader over it, for
// tests that need no real file. Rewind starts it over. It can fail with
// kIoError once `failAt` bytes were delivered, and with a `readyChunk`
// offers the bytes up to the next multiple of it as read ahead, as a
// buffered file does. One thread at a time, like a real file.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "player/ByteReader.h"
#include "player/RecordReader.h"

namespace pelorin_test {

class MemoryInput : public Quillan::ByteReader {
 public:
  explicit MemoryInput(std::string bytes, size_t failAt = std::string::npos, size_t readyChunk = 0)
      : m_bytes(std::move(bytes)), m_failAt(failAt), m_readyChunk(readyChunk), m_reader(*this) {}

  using Quillan::ByteReader::Read;
  Quillan::FileStatus Read(void* buffer, uint32_t length, uint32_t* count) override {
    *count = 0;
    if (m_position == m_failAt) return Quillan::FileStatus::kIoError;
    const size_t limit = std::min(m_bytes.size(), m_failAt);
    const size_t n = std::min<size_t>(length, limit > m_position ? limit - m_position : 0);
    if (n == 0) return Quillan::FileStatus::kEndOfFile;
    std::memcpy(buffer, m_bytes.data() + m_position, n);
    m_position += n;
    *count = static_cast<uint32_t>(n);
    return Quillan::FileStatus::kSuccess;
  }
  const uint8_t* PeekReady(uint32_t* count) override {
    size_t end = m_readyChunk == 0 ? m_position : (m_position / m_readyChunk + 1) * m_readyChunk;
    end = std::min({end, m_bytes.size(), m_failAt});
    *count = static_cast<uint32_t>(end - m_position);
    return reinterpret_cast<const uint8_t*>(m_bytes.data()) + m_position;
  }
  void TakeReady(uint32_t count) override {
    uint32_t ready = 0;
    PeekReady(&ready);
    EXPECT_LE(count, ready) << "took more than was offered";
    m_position += count;
  }

  Quillan::RecordReader* Reader() { return &m_reader; }
  void Rewind() {
    m_position = 0;
    m_reader.Reset();
  }

 private:
  std::string m_bytes;
  size_t m_failAt;
  size_t m_readyChunk;
  size_t m_position = 0;
  Quillan::RecordReader m_reader;
};

}  // namespace pelorin_test
