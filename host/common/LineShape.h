#pragma once
// LineShape: what a tool saw of one events-file line (without its line
// end), enough to say in words why playback would stop there. Both tools
// word a malformed line through it, so that they say the same. A value.

#include <cstddef>
#include <cstdint>
#include <string>

namespace PelorinTools {

struct LineShape {
  static constexpr uint64_t kNoBlank = UINT64_MAX;
  static constexpr size_t kHeadBytes = 1024;

  uint64_t start = 0;   // file offset of the line's first byte
  uint64_t length = 0;  // bytes in the line
  std::string head;     // its first kHeadBytes bytes
  uint64_t firstBlank = kNoBlank;
  int afterBlank = -1;  // the byte after the first blank; -1 when the line ends there

  // The time text (bytes before the first blank), when the head holds all of it.
  bool TimeTextKnown() const { return firstBlank != kNoBlank && firstBlank <= head.size(); }
  std::string TimeText() const { return head.substr(0, static_cast<size_t>(firstBlank)); }

  // Why a line that the reader rejected is malformed, in words.
  std::string MalformedReason() const;
};

}  // namespace PelorinTools
