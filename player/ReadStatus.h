#pragma once
// Result of RecordReader::ReadRecord.

#include <cstdint>

namespace Quillan {

enum class ReadStatus : int32_t {
  kRecord = 0,         // a record was read
  kReadError = 2,      // the file's Read failed (or there is no reader)
  kEndOfInput = 3,     // no further line
  kMalformedLine = 4,  // no blank after the time, empty time, or empty tag
};

}  // namespace Quillan
