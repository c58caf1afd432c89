#pragma once
// MemoryInput: an events "file" in memory with a RecordReader over it, for
// runner tests that need no real file. Rewind starts it over. One thread at
// a time, like a real file.

#include <cstdint>
#include <cstring>
#include <string>

#include "player/ByteReader.h"
#include "player/RecordReader.h"

namespace pelorin_test {

class MemoryInput : public Quillan::ByteReader {
 public:
  explicit MemoryInput(std::string bytes) : m_bytes(std::move(bytes)), m_reader(*this) {}

  using Quillan::ByteReader::Read;
  Quillan::FileStatus Read(void* buffer, uint32_t length, uint32_t* count) override {
    const size_t left = m_bytes.size() - m_position;
    const size_t n = left < length ? left : length;
    *count = static_cast<uint32_t>(n);
    if (n == 0) return Quillan::FileStatus::kEndOfFile;
    std::memcpy(buffer, m_bytes.data() + m_position, n);
    m_position += n;
    return Quillan::FileStatus::kSuccess;
  }

  Quillan::RecordReader* Reader() { return &m_reader; }
  void Rewind() {
    m_position = 0;
    m_reader.Reset();
  }

 private:
  std::string m_bytes;
  size_t m_position = 0;
  Quillan::RecordReader m_reader;
};

}  // namespace pelorin_test
