#pragma once
// LineShape: what a tool saw of one events-file line (without its line
// end), enough to say in words why playback would stop there. Both tools
// word a line that the reader rejects through it, binary data included, so
// that they say the same. A value.

#include <cstddef>
#include <cstdint>
#include <string>

namespace PelorinTools {

struct LineShape {
  static constexpr uint64_t kNoBlank = UINT64_MAX;
  static constexpr size_t kHeadBytes = 1024;

  uint64_t start = 0;   // file offset of the line's first byte
  uint64_t length = 0;  // bytes in the line
  std::string head;     // its first kHeadBytes bytes, or all of them when kept whole
  uint64_t firstBlank = kNoBlank;
  int afterBlank = -1;  // the byte after the first blank; -1 when the line ends there

  // The time text (bytes before the first blank), when the head holds all of it.
  bool TimeTextKnown() const { return firstBlank != kNoBlank && firstBlank <= head.size(); }
  std::string TimeText() const { return head.substr(0, static_cast<size_t>(firstBlank)); }

  // Why a line that the reader rejected is malformed, in words.
  std::string MalformedReason() const;

  // Bytes that no text recording holds: NUL and the C0 controls other than
  // tab, line ends, form feed and ESC.
  static bool IsBinaryByte(unsigned char byte);
  // The byte number in the file (from 1) of the first binary byte of the
  // head; 0 when it holds none.
  uint64_t BinaryByte() const;
  // Why playback stops at a line that the reader rejected: a line of binary
  // bytes is no recording at all ("binary data at byte N"); any other is
  // malformed. A line the reader accepts plays, whatever bytes it holds.
  std::string StopReason() const;
};

}  // namespace PelorinTools
