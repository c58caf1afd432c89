#pragma once
// DataPoolProviderInterface: a data-pool provider, which the data pool reads
// and which writes its own values inside write sections.

#include <cstdint>

#include "DataPoolReadInterface.h"

class DataPoolProviderInterface : public DataPoolReadInterface {
 public:
  virtual bool GetRange(uint32_t id, uint32_t* first, uint32_t* count) = 0;
  virtual void StartUp() = 0;
  virtual void ShutDown() = 0;
  virtual void LockWrite() = 0;
  virtual void UnlockWrite() = 0;
  virtual void PublishChanges() = 0;
};
