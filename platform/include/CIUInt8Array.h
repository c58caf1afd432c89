#pragma once
// CIUInt8Array: the traffic services' array of 8-bit values, made by
// CITypesFactory::createUInt8Array and shared through std::shared_ptr.
// Not thread-safe; its holders agree on who changes it.

#include <cstdint>
#include <vector>

class CIUInt8Array {
 public:
  explicit CIUInt8Array(uint32_t size) : m_bytes(size, 0) {}
  uint32_t size() const { return static_cast<uint32_t>(m_bytes.size()); }
  const uint8_t* data() const { return m_bytes.data(); }
  uint8_t at(uint32_t index) const { return m_bytes.at(index); }
  void append(uint8_t value) { m_bytes.push_back(value); }
  void clear() { m_bytes.clear(); }

 private:
  std::vector<uint8_t> m_bytes;
};
