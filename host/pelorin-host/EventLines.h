#pragma once
// EventLines: reads an events file line by line, splitting lines exactly as
// the module's record reader does (LF, CR LF or a lone CR; after a lone CR
// the next byte starts the next line as data, even when it is a CR), and
// counts them from 1. Keeps one line and a fixed buffer in memory whatever
// the file's size. Owns its descriptor; used by one thread at a time.

#include <cstdint>
#include <string>

namespace PelorinHost {

class EventLines {
 public:
  EventLines() = default;
  ~EventLines() { Close(); }
  EventLines(const EventLines&) = delete;
  EventLines& operator=(const EventLines&) = delete;

  // False with `error` (naming the file) when it cannot be read.
  bool Open(const std::string& path, std::string* error);
  void Close();
  // Back to the first line; false when the file cannot be read again.
  bool Rewind();

  // The next line without its line end; false at the end of the file or at
  // a read error.
  bool Next(std::string* line);
  // 1-based number of the line Next delivered last.
  uint64_t Number() const { return m_number; }

 private:
  bool Fill();

  int m_fd = -1;
  char m_buffer[65536];
  size_t m_pos = 0;
  size_t m_end = 0;
  bool m_pushedBack = false;
  char m_pushedByte = 0;
  uint64_t m_number = 0;
};

}  // namespace PelorinHost
