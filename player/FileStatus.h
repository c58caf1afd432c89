#pragma once
// Status of an InputFile operation (also what a ByteReader's Read returns).

#include <cstdint>

namespace Quillan {

enum class FileStatus : int32_t {
  kSuccess = 0,
  kOpenFailed = 1,    // the open call failed
  kIoError = 4,       // I/O error, missing argument or empty path
  kAlreadyOpen = 5,   // Open while already open
  kEndOfFile = 7,     // a read delivered no byte
};

}  // namespace Quillan
