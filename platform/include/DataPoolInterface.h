#pragma once
// DataPoolInterface: the HMI data pool (interface id 101). Providers and
// clients register under their ids, subscribers hear of changed values, and
// providers report the ids that a write section changed. Owned by the host;
// may be called from any thread.

#include <cstdint>

class DataListener;
class DataPoolReadInterface;

class DataPoolInterface {
 public:
  virtual ~DataPoolInterface() = default;
  virtual int RegisterProvider(DataPoolReadInterface* provider, uint32_t id) = 0;
  virtual int Subscribe(DataListener* listener, uint32_t valueId) = 0;
  virtual int UnregisterProvider(uint32_t id) = 0;
  virtual int ReportChangedValues(const uint32_t* ids, uint32_t count) = 0;
};
