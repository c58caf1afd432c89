#pragma once
// EventsScan: reads an events file with the module's own line rules (a line
// ends at LF, CR LF or a lone CR; the byte after a lone CR starts the next
// line as plain data; a line is malformed when it is empty, has no blank,
// starts with a blank or has an empty tag) to tell where playback will stop
// and how many records it offers before that. The host cannot ask the
// module, so it finds out itself; constant memory, any file size.
// Feed and Finish take the bytes of a file in order; ScanFile does it for a
// file. A value used by one thread.

#include <cstddef>
#include <cstdint>
#include <string>

#include "host/common/LineShape.h"

namespace PelorinHost {

struct ScanResult {
  bool complete = true;    // playback reaches the end of the file
  uint64_t records = 0;    // well-formed records before the stop
  uint64_t playable = 0;   // of those, records with a tag the module plays
  uint64_t stopLine = 0;   // 1-based, when not complete
  std::string reason;      // why playback stops there, when not complete
};

class EventsScan {
 public:
  void Feed(const char* bytes, size_t size);
  // The end of the file.
  void Finish();
  // A read error before the end of the file.
  void ReadError();
  bool Stopped() const { return !m_result.complete; }
  const ScanResult& Result() const { return m_result; }

  // Scans the file at `path`; false with `error` (strerror) when it cannot
  // be opened.
  static bool ScanFile(const std::string& path, ScanResult* result, std::string* error);

 private:
  void Append(unsigned char byte);
  void EndLine();
  void StartLine();
  void Stop(const std::string& reason);

  ScanResult m_result;
  uint64_t m_offset = 0;  // file offset of the next byte
  uint64_t m_lines = 0;   // lines ended so far
  bool m_afterCr = false;
  uint64_t m_readInLine = 0;  // bytes read for this line (a pushed-back byte not counted)
  PelorinTools::LineShape m_line;
  std::string m_tag;  // the tag's first bytes
  bool m_inTag = false;
  uint64_t m_binaryAt = UINT64_MAX;  // offset of the line's first binary byte
};

}  // namespace PelorinHost
