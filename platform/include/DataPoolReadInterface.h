#pragma once
// DataPoolReadInterface: typed reads of 32-bit value ids, as the data pool
// calls them on a provider or client. Readers bracket reads with
// LockRead/UnlockRead; the getters themselves take no lock.
// Operations in the data pool's slot order; Unsupported* are placeholders
// that answer false.

#include <cstdint>
#include <string>

class DataPoolReadInterface {
 public:
  virtual ~DataPoolReadInterface() = default;
  virtual void LockRead() = 0;
  virtual void UnlockRead() = 0;
  virtual bool GetValue(uint32_t id, int32_t* value) = 0;
  virtual bool Unsupported6() { return false; }
  virtual bool GetIntAt(uint32_t id, uint32_t index, int32_t* value) = 0;
  virtual bool GetText(uint32_t id, std::string* text) = 0;
  virtual bool GetTextAt(uint32_t id, uint32_t index, std::string* text) = 0;
  virtual bool Unsupported10() { return false; }
  virtual bool GetBuffer(uint32_t id, const uint8_t** bytes, uint32_t* size) = 0;
  virtual bool GetBufferAt(uint32_t id, uint32_t index, const uint8_t** bytes, uint32_t* size) = 0;
  virtual bool Unsupported13() { return false; }
  virtual bool Unsupported14() { return false; }
  virtual bool Unsupported15() { return false; }
  virtual bool Unsupported16() { return false; }
  // Type code of the value: 0 integer, 1 text, 2 integer list, 3 text list,
  // 4 buffer, 5 buffer list; 10 for an id that is not served.
  virtual uint32_t GetValueType(uint32_t id) = 0;
  virtual uint32_t GetCount(uint32_t id) = 0;
};
