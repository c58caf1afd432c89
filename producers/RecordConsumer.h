#pragma once
// RecordConsumer: what a runner hands every record to, in consumer-list
// order. Called on the work loop's thread inside the runner's step. The
// result is informative: 0 handled; callers do not act on it.

#include <cstdint>
#include <string>

namespace Quillan {

class RecordConsumer {
 public:
  virtual ~RecordConsumer() = default;
  // `time`: the record's time stamp in whole seconds (rounded down).
  // `tag` and `payload` are byte strings.
  virtual int OnRecord(uint32_t time, const std::string& tag, const std::string& payload) = 0;
};

}  // namespace Quillan
