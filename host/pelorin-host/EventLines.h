#pragma once
// EventLines: the host's one reader of events-file lines, splitting them
// exactly as the module's record reader does (LF, CR LF or a lone CR; after
// a lone CR the next byte starts the next line as data, even when it is a
// CR, and is lost when the file ends right after it), counting them from 1.
// NextPiece hands out a line in runs of a fixed buffer (constant memory
// whatever the line's length); Next gives a whole line, in place where it
// lies in one buffer run. Owns its descriptor; used by one thread at a time.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace PelorinHost {

class EventLines {
 public:
  EventLines() = default;
  ~EventLines() { Close(); }
  EventLines(const EventLines&) = delete;
  EventLines& operator=(const EventLines&) = delete;

  // False with `error` (the OS reason) when the file cannot be opened.
  bool Open(const std::string& path, std::string* error);
  void Close();
  // Back to the first line; false when the file cannot be read again.
  bool Rewind();

  // The next run of bytes of the current line, valid until the next call;
  // `lineEnds` when the line ends after it. False at the end of the file or
  // at a read error (ReadError); a line begun but not ended then is not one.
  bool NextPiece(const char** bytes, size_t* size, bool* lineEnds);
  // The next line without its line end, valid until the next call; false
  // as NextPiece.
  bool Next(std::string_view* line);
  // 1-based number of the line that ended last.
  uint64_t Number() const { return m_number; }
  // File offset of the first byte of the last piece.
  uint64_t PieceOffset() const { return m_pieceOffset; }
  // errno of the read that failed, 0 when the file ended.
  int ReadError() const { return m_error; }

 private:
  bool Fill();
  bool AfterCarriageReturn();
  bool EndLine(const char** bytes, bool* lineEnds);

  int m_fd = -1;
  char m_buffer[65536];
  size_t m_pos = 0;
  size_t m_end = 0;
  uint64_t m_offset = 0;  // file offset of m_buffer[m_pos]
  uint64_t m_pieceOffset = 0;
  bool m_lineRead = false;  // bytes of the current line came from the file
  bool m_crPending = false;  // a CR ended the last piece; the byte after it is unread
  bool m_pushedBack = false;
  char m_pushedByte = 0;
  uint64_t m_number = 0;
  int m_error = 0;
  std::string m_gathered;  // a line that spans buffer runs
};

}  // namespace PelorinHost
