#pragma once
// CITypesFactory: makes the traffic services' data types. Thread-safe.

#include <cstdint>
#include <memory>

#include "CIString.h"
#include "CIUInt8Array.h"

class CITypesFactory {
 public:
  static constexpr int kEncodingUtf8 = 3;

  static std::shared_ptr<CIUInt8Array> createUInt8Array(uint32_t size);
  static std::shared_ptr<CIString> createString(const char* text, int encoding);
};
