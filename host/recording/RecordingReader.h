#pragma once
// RecordingReader: reads a recording of this computer line by line with the
// module's own file reader and record reader, so that lines, their numbers
// and byte offsets, time stamps, tags, payloads and where playback stops are
// what the module sees. A LineTap beside the reader keeps the shape of each
// line (its head, or the whole line when asked) for words and for copies.
// What a record yields is asked of RecordYields. Owns the file; one thread
// at a time. Constant memory in the file's size.

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "host/recording/LineTap.h"
#include "host/recording/LocalFile.h"
#include "host/recording/RecordYields.h"
#include "player/InputFile.h"
#include "player/ReadStatus.h"
#include "player/Record.h"
#include "player/RecordReader.h"

namespace PelorinRecording {

class RecordingReader {
 public:
  // `wholeLines`: Shape().head holds every byte of each line.
  explicit RecordingReader(bool wholeLines = false) : m_wholeLines(wholeLines) {}
  RecordingReader(const RecordingReader&) = delete;
  RecordingReader& operator=(const RecordingReader&) = delete;

  // Opens `path` by this computer's rules; false with the OS reason.
  bool Open(const std::string& path, std::string* reason);
  // Back to the first line; false when the file cannot be read again.
  bool Rewind();

  // Reads the next line: kRecord, kMalformedLine (playback stops there),
  // kReadError (a line counted, reading stops), or kEndOfInput (no line).
  Quillan::ReadStatus Next();

  // Of the line last read:
  uint64_t Number() const { return m_number; }
  const Quillan::Record& Record() const { return m_record; }
  const LineShape& Shape() const { return m_tap->Line(); }
  // The bytes before the first blank, as written (whole lines kept, or a
  // head that holds them).
  std::string_view TimeText() const;
  // What the module makes of the record; asked once per record.
  RecordYield Yield() { return m_yields.Of(m_record); }
  // Whether a producer takes the record's tag (cheaper than Yield).
  bool TagKnown() const { return m_yields.Takes(m_record.tag); }
  // Bytes handed to the record reader so far.
  uint64_t Offset() const { return m_tap->Offset(); }

  // True while a reader of this process waits in Next. The module's file
  // reader resumes a read that a signal interrupts, so a tool that reads a
  // pipe ends itself from its stop signal's handler while this holds.
  // Lock-free, for signal handlers.
  static const std::atomic<bool>& Reading() { return s_reading; }

 private:
  // A fresh tap and reader at the file's position.
  void Restart();

  const bool m_wholeLines;
  LocalFile m_local;
  std::unique_ptr<Quillan::InputFile> m_file;
  std::unique_ptr<LineTap> m_tap;
  std::unique_ptr<Quillan::RecordReader> m_reader;
  RecordYields m_yields;
  Quillan::Record m_record;
  uint64_t m_number = 0;
  static std::atomic<bool> s_reading;
};

}  // namespace PelorinRecording
