#pragma once
// LineTap: sits between an events file and the module's RecordReader and
// watches the bytes that the reader takes, so that a report can say why the
// reader rejected a line (the reader itself only says that it did), show a
// time stamp as it was written, and give byte offsets. The reader still does
// all the reading; the tap only observes and keeps a bounded head of the
// current line.
//
// Read-ahead runs (PeekReady, TakeReady) pass through, so the reader runs
// as fast through the tap as on the bare file; the tap notes the runs taken.
//
// It follows the reader's line ends: a line ends at LF, CR LF or a lone CR;
// after a lone CR the byte already read belongs to the next line, as data
// even if it is a CR. Call BeginLine before every ReadRecord; Line() then
// describes the line that ReadRecord took, its head or the whole line as
// asked. Not owned by the reader; one thread at a time.

#include <cstddef>
#include <cstdint>
#include <string>

#include "host/common/LineShape.h"
#include "player/ByteReader.h"

namespace PelorinRecording {

using PelorinTools::LineShape;

class LineTap : public Quillan::ByteReader {
 public:
  // Line() keeps the first `headBytes` bytes of each line.
  explicit LineTap(Quillan::ByteReader& source, size_t headBytes = LineShape::kHeadBytes)
      : m_source(source), m_headBytes(headBytes) {}

  using ByteReader::Read;
  Quillan::FileStatus Read(void* buffer, uint32_t length, uint32_t* count) override;
  const uint8_t* PeekReady(uint32_t* count) override;
  void TakeReady(uint32_t count) override;

  // Starts watching the next line; a byte held back after a lone CR becomes
  // its first byte.
  void BeginLine();
  const LineShape& Line() const { return m_line; }
  // Bytes delivered to the reader so far.
  uint64_t Offset() const { return m_offset; }

 private:
  enum class Phase { kContent, kAfterCarriageReturn, kEnded };

  void Observe(uint8_t byte);
  // Adds bytes of line content (no line end among them).
  void Append(const uint8_t* bytes, size_t count);

  Quillan::ByteReader& m_source;
  const size_t m_headBytes;
  LineShape m_line;
  Phase m_phase = Phase::kContent;
  uint64_t m_offset = 0;
  bool m_hasCarried = false;
  uint8_t m_carried = 0;
  uint64_t m_carriedOffset = 0;
};

}  // namespace PelorinRecording
