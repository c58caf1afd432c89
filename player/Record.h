#pragma once
// Record: one line of the events file: time stamp, tag and payload.

#include <string>

namespace Quillan {

struct Record {
  double time = 0.0;      // seconds since 1970-01-01 UTC, fraction allowed
  std::string tag;        // bytes, compared byte by byte
  std::string payload;    // bytes, possibly empty
};

}  // namespace Quillan
