#pragma once
// DataListener: what a module subscribes with the DataPoolInterface to hear
// of changed data-pool values. Called on the data pool's threads.

#include <cstdint>

class DataListener {
 public:
  virtual ~DataListener() = default;
  virtual int OnValuesChanged(const uint32_t* ids, uint32_t count) = 0;
  virtual const char* GetName() = 0;
};
