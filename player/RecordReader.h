#pragma once
// RecordReader: splits the bytes of an events file into lines (LF, CR LF or
// CR) and each line into a Record. Does not own its ByteReader. Keeps only
// the current line in memory. One thread at a time (the runner's step).

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
  ByteReader& m_file;
  std::string m_line;
  uint8_t m_pushedBack = 0;
  bool m_hasPushedBack = false;
};

}  // namespace Quillan
