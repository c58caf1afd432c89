#pragma once
// SpeedText: the one reading of a playback speed that a person types, for
// --speed of both tools, pelorin-host's --realtime and its control command
// "speed": a factor of the recorded speed ("2" or "2x" is twice as fast) or
// a percentage ("200%"), written as a plain decimal number. The module carries the speed as a
// whole percentage in a signed 32-bit value and plays nothing below 1 %,
// so that is the range accepted. Stateless.

#include <cstdint>
#include <string>

namespace PelorinTools {

class SpeedText {
 public:
  static constexpr int32_t kMinPercent = 1;
  static constexpr int32_t kMaxPercent = INT32_MAX;

  // The speed in whole percent (rounded to the nearest); false when `text`
  // is no plain decimal speed or lies outside the range.
  static bool Parse(const std::string& text, int32_t* percent);
  // What is accepted, for messages: "a factor from 0.01 to ... (2, 2x or 200%)".
  static std::string Accepted();
};

}  // namespace PelorinTools
