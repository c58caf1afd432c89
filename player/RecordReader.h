#pragma once
// RecordReader: splits the bytes of an events file into lines (LF, CR LF or
// CR) and each line into a Record. Does not own its ByteReader. Keeps only
// the current line in memory. One thread at a time (the runner's step).
// Bytes are taken one at a time through Read; runs of ordinary bytes that
// the file has already read ahead (ByteReader::PeekReady) are taken whole,
// with the same result, so that reading costs no call per byte. A line that
// lies whole in the read-ahead bytes, line end included, is split where it
// lies, without a copy into the line buffer.
// Time stamps convert as ParseDecimal does (runtime/NumberText.h): the whole
// time text must be a finite number, "1.5" and "1,5" alike; otherwise the
// record's time is 0.

#include <cstddef>
#include <cstdint>
#include <string>

#include "player/ByteReader.h"
#include "player/ReadStatus.h"
#include "player/Record.h"

namespace Quillan {

class RecordReader {
 public:
  explicit RecordReader(ByteReader& file);

  // Reads the next line into `record` (time 0, tag and payload emptied
  // first).
  ReadStatus ReadRecord(Record& record);
  // Forgets the pushed-back byte and the line; used after the file was
  // sought back to its start.
  void Reset();

 private:
  // Reads the next line into m_line, without its line end. False when there
  // is no line; `status` then says why (end of input or read error). A
  // complete last line may come with kEndOfInput set.
  bool ReadLine(ReadStatus* status);
  // Appends the run of ordinary bytes (no CR, no LF) that the file offers
  // read ahead, as that many single-byte reads would; false when none.
  bool TakeReadyRun();
  // After a CR: consumes the LF of CR LF or holds back the next line's first
  // byte.
  bool FinishAfterCarriageReturn(ReadStatus* status);
  // Reads the next line straight from the file's read-ahead bytes when they
  // hold all of it; false (nothing taken) when they do not.
  bool ReadReadyLine(Record& record, ReadStatus* status);
  // Splits a line (without its line end) into time, tag and payload.
  static ReadStatus SplitLine(const char* line, size_t length, Record& record);

  ByteReader& m_file;
  std::string m_line;
  uint8_t m_pushedBack = 0;
  bool m_hasPushedBack = false;
};

}  // namespace Quillan
