#pragma once
// FerrixIdProvider: the head unit's name-to-id service, one per process.
// Thread-safe. Stand-in: equal names give equal ids, ids start at 1.

#include <cstdint>

class FerrixIdProvider {
 public:
  virtual uint32_t GetId(const char* name) = 0;

 protected:
  virtual ~FerrixIdProvider() = default;
};

FerrixIdProvider* FerrixIdProvider_GetInstance();
