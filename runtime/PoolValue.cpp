#include "runtime/PoolValue.h"

namespace Quillan {
namespace {

std::vector<uint8_t> CopyBytes(const uint8_t* bytes, uint32_t size) {
  if (bytes == nullptr || size == 0) return {};
  return std::vector<uint8_t>(bytes, bytes + size);
}

void ExposeBytes(const std::vector<uint8_t>& buffer, const uint8_t** bytes, uint32_t* size) {
  if (bytes != nullptr) *bytes = buffer.data();
  if (size != nullptr) *size = static_cast<uint32_t>(buffer.size());
}

}  // namespace

// Sets the member of the entry's type, so that the whole word is defined.
PoolValue::PoolValue(uint32_t type) : m_type(type) {
  switch (type) {
    case kText:
      m_value.text = nullptr;
      break;
    case kIntegerList:
      m_value.integers = nullptr;
      break;
    case kTextList:
      m_value.texts = nullptr;
      break;
    case kBuffer:
      m_value.buffer = nullptr;
      break;
    case kBufferList:
      m_value.buffers = nullptr;
      break;
    default:
      m_value.integer = 0;
      break;
  }
}

PoolValue::PoolValue(uint32_t type, int32_t initial) : PoolValue(type) {
  if (type == kInteger) {
    m_value.integer = initial;
  } else if (type == kText) {
    m_value.text = new std::string(initial == 0 ? std::string() : std::to_string(initial));
  }
}

PoolValue PoolValue::Empty(uint32_t type) { return PoolValue(type); }

PoolValue::PoolValue(PoolValue&& other) noexcept : m_value(other.m_value), m_type(other.m_type) {
  other.m_type = kInteger;
  other.m_value.integer = 0;
}

PoolValue::~PoolValue() { Free(); }

void PoolValue::Free() {
  switch (m_type) {
    case kText:
      delete m_value.text;
      break;
    case kIntegerList:
      delete m_value.integers;
      break;
    case kTextList:
      delete m_value.texts;
      break;
    case kBuffer:
      delete m_value.buffer;
      break;
    case kBufferList:
      delete m_value.buffers;
      break;
    default:
      break;
  }
}

bool PoolValue::GetInt(int32_t* value) const {
  if (m_type != kInteger || value == nullptr) return false;
  *value = m_value.integer;
  return true;
}

bool PoolValue::SetInt(int32_t value) {
  if (m_type != kInteger) return false;
  m_value.integer = value;
  return true;
}

bool PoolValue::GetText(std::string* text) const {
  if (m_type != kText || text == nullptr) return false;
  if (m_value.text == nullptr) {
    text->clear();
    return false;
  }
  *text = *m_value.text;
  return true;
}

bool PoolValue::SetText(const std::string& text) {
  if (m_type != kText) return false;
  delete m_value.text;
  m_value.text = new std::string(text);
  return true;
}

bool PoolValue::GetBuffer(const uint8_t** bytes, uint32_t* size) const {
  if (m_type != kBuffer) return false;
  if (m_value.buffer == nullptr) {
    if (bytes != nullptr) *bytes = nullptr;
    if (size != nullptr) *size = 0;
    return false;
  }
  ExposeBytes(*m_value.buffer, bytes, size);
  return true;
}

bool PoolValue::SetBuffer(const uint8_t* bytes, uint32_t size) {
  if (m_type != kBuffer) return false;
  delete m_value.buffer;
  m_value.buffer = new Bytes(CopyBytes(bytes, size));
  return true;
}

bool PoolValue::GetIntAt(uint32_t index, int32_t* value) const {
  if (m_type != kIntegerList || m_value.integers == nullptr) return false;
  if (index >= m_value.integers->size() || value == nullptr) return false;
  *value = (*m_value.integers)[index];
  return true;
}

bool PoolValue::GetTextAt(uint32_t index, std::string* text) const {
  if (m_type != kTextList || m_value.texts == nullptr) return false;
  if (index >= m_value.texts->size() || text == nullptr) return false;
  *text = (*m_value.texts)[index];
  return true;
}

bool PoolValue::GetBufferAt(uint32_t index, const uint8_t** bytes, uint32_t* size) const {
  if (m_type != kBufferList || m_value.buffers == nullptr) return false;
  if (index >= m_value.buffers->size()) return false;
  ExposeBytes((*m_value.buffers)[index], bytes, size);
  return true;
}

bool PoolValue::AppendInt(int32_t value) {
  if (m_type != kIntegerList) return false;
  if (m_value.integers == nullptr) m_value.integers = new std::vector<int32_t>;
  m_value.integers->push_back(value);
  return true;
}

bool PoolValue::AppendText(const std::string& text) {
  if (m_type != kTextList) return false;
  if (m_value.texts == nullptr) m_value.texts = new std::vector<std::string>;
  m_value.texts->push_back(text);
  return true;
}

bool PoolValue::AppendBuffer(const uint8_t* bytes, uint32_t size) {
  if (m_type != kBufferList) return false;
  if (m_value.buffers == nullptr) m_value.buffers = new std::vector<Bytes>;
  m_value.buffers->push_back(CopyBytes(bytes, size));
  return true;
}

bool PoolValue::ClearList() {
  switch (m_type) {
    case kIntegerList:
      if (m_value.integers != nullptr) m_value.integers->clear();
      return true;
    case kTextList:
      if (m_value.texts != nullptr) m_value.texts->clear();
      return true;
    case kBufferList:
      if (m_value.buffers != nullptr) m_value.buffers->clear();
      return true;
    default:
      return false;
  }
}

uint32_t PoolValue::GetCount() const {
  switch (m_type) {
    case kIntegerList:
      return m_value.integers ? static_cast<uint32_t>(m_value.integers->size()) : 0;
    case kTextList:
      return m_value.texts ? static_cast<uint32_t>(m_value.texts->size()) : 0;
    case kBufferList:
      return m_value.buffers ? static_cast<uint32_t>(m_value.buffers->size()) : 0;
    default:
      return 0;
  }
}

}  // namespace Quillan
