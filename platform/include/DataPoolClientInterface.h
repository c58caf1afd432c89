#pragma once
// DataPoolClientInterface: a data-pool client whose table the data pool
// writes through the setters, inside LockWrite/UnlockWrite. Every setter
// returns whether it stored the value. Unsupported* are placeholders.

#include <cstdint>
#include <string>

#include "DataPoolReadInterface.h"

class DataPoolClientInterface : public DataPoolReadInterface {
 public:
  virtual bool Unsupported19() { return false; }
  virtual bool SetInt(uint32_t id, int32_t value) = 0;
  virtual bool SetText(uint32_t id, const std::string& text) = 0;
  virtual bool ClearList(uint32_t id) = 0;
  virtual bool AppendInt(uint32_t id, int32_t value) = 0;
  virtual bool AppendText(uint32_t id, const std::string& text) = 0;
  virtual bool SetBuffer(uint32_t id, const uint8_t* bytes, uint32_t size) = 0;
  virtual bool AppendBuffer(uint32_t id, const uint8_t* bytes, uint32_t size) = 0;
  virtual bool Unsupported27() { return false; }
  virtual bool Unsupported28() { return false; }
  virtual void LockWrite() = 0;
  virtual void UnlockWrite() = 0;
  virtual void Register() = 0;
  virtual void Unregister() = 0;
};
