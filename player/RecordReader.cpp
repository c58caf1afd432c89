#include "player/RecordReader.h"

#include <cstring>

#include "runtime/NumberText.h"

namespace Quillan {
namespace {

constexpr uint8_t kLineFeed = 10;
constexpr uint8_t kCarriageReturn = 13;
constexpr char kBlank = ' ';

// A line buffer that grew beyond this for one long line is given back before
// the next line, so that only the current line stays in memory.
constexpr size_t kKeptLineCapacity = 64u * 1024u;

// What one byte read brought.
enum class ByteResult { kByte, kEnd, kError };

// The first LF or CR among `count` bytes, or null.
const uint8_t* FindLineEnd(const uint8_t* bytes, uint32_t count) {
  const void* lineFeed = std::memchr(bytes, kLineFeed, count);
  const size_t before = lineFeed != nullptr
                            ? static_cast<size_t>(static_cast<const uint8_t*>(lineFeed) - bytes)
                            : count;
  const void* carriageReturn = std::memchr(bytes, kCarriageReturn, before);
  return static_cast<const uint8_t*>(carriageReturn != nullptr ? carriageReturn : lineFeed);
}

ByteResult ReadByte(ByteReader& file, uint8_t* byte) {
  uint32_t count = 0;
  const FileStatus status = file.Read(byte, &count);
  if (status == FileStatus::kSuccess) return count == 1 ? ByteResult::kByte : ByteResult::kEnd;
  return status == FileStatus::kEndOfFile ? ByteResult::kEnd : ByteResult::kError;
}

}  // namespace

RecordReader::RecordReader(ByteReader& file) : m_file(file) {}

ReadStatus RecordReader::ReadRecord(Record& record) {
  record.time = 0.0;
  record.tag.clear();
  record.payload.clear();

  ReadStatus lineStatus = ReadStatus::kRecord;
  if (ReadReadyLine(record, &lineStatus)) return lineStatus;
  if (!ReadLine(&lineStatus)) return lineStatus;
  return SplitLine(m_line.data(), m_line.size(), record);
}

bool RecordReader::ReadReadyLine(Record& record, ReadStatus* status) {
  if (m_hasPushedBack) return false;
  uint32_t available = 0;
  const uint8_t* ready = m_file.PeekReady(&available);
  if (ready == nullptr || available == 0) return false;
  const uint8_t* end = FindLineEnd(ready, available);
  if (end == nullptr) return false;
  // The line end and the byte after a CR must both be in view; a CR without
  // LF holds the next byte back, as a single-byte read would.
  uint32_t taken = static_cast<uint32_t>(end - ready) + 1;
  if (*end == kCarriageReturn) {
    if (taken == available) return false;
    const uint8_t next = ready[taken++];
    if (next != kLineFeed) {
      m_pushedBack = next;
      m_hasPushedBack = true;
    }
  }
  *status =
      SplitLine(reinterpret_cast<const char*>(ready), static_cast<size_t>(end - ready), record);
  m_file.TakeReady(taken);
  return true;
}

void RecordReader::Reset() {
  m_hasPushedBack = false;
  m_pushedBack = 0;
  m_line.clear();
}

bool RecordReader::ReadLine(ReadStatus* status) {
  if (m_line.capacity() > kKeptLineCapacity) std::string().swap(m_line);
  m_line.clear();
  if (m_hasPushedBack) {
    // The byte after a lone CR: plain data, even if it is a CR itself.
    m_line.push_back(static_cast<char>(m_pushedBack));
    m_hasPushedBack = false;
  }

  bool anyByteRead = false;
  for (;;) {
    if (TakeReadyRun()) anyByteRead = true;
    uint8_t byte = 0;
    const ByteResult result = ReadByte(m_file, &byte);
    if (result == ByteResult::kEnd) {
      *status = ReadStatus::kEndOfInput;
      return anyByteRead;
    }
    if (result == ByteResult::kError) {
      *status = ReadStatus::kReadError;
      return false;
    }
    anyByteRead = true;
    if (byte == kLineFeed) return true;
    if (byte == kCarriageReturn) return FinishAfterCarriageReturn(status);
    m_line.push_back(static_cast<char>(byte));
  }
}

bool RecordReader::TakeReadyRun() {
  // Only ordinary bytes are taken here; line ends, end of file and errors
  // all go through the single-byte reads.
  uint32_t available = 0;
  const uint8_t* ready = m_file.PeekReady(&available);
  if (ready == nullptr || available == 0) return false;
  const uint8_t* lineEnd = FindLineEnd(ready, available);
  const size_t run = lineEnd != nullptr ? static_cast<size_t>(lineEnd - ready) : available;
  if (run == 0) return false;
  m_line.append(reinterpret_cast<const char*>(ready), run);
  m_file.TakeReady(static_cast<uint32_t>(run));
  return true;
}

bool RecordReader::FinishAfterCarriageReturn(ReadStatus* status) {
  // CR LF is one line end; after a lone CR the byte read belongs to the next
  // line and is held back for it.
  uint8_t byte = 0;
  const ByteResult result = ReadByte(m_file, &byte);
  if (result == ByteResult::kError) {
    *status = ReadStatus::kReadError;
    return false;
  }
  if (result == ByteResult::kEnd) {
    *status = ReadStatus::kEndOfInput;
    return true;
  }
  if (byte != kLineFeed) {
    m_pushedBack = byte;
    m_hasPushedBack = true;
  }
  return true;
}

ReadStatus RecordReader::SplitLine(const char* line, size_t length, Record& record) {
  // time: up to the first blank, which must exist and not open the line.
  const char* timeEnd = static_cast<const char*>(std::memchr(line, kBlank, length));
  if (timeEnd == nullptr || timeEnd == line) return ReadStatus::kMalformedLine;
  double time = 0.0;
  if (ParseDecimal(line, static_cast<size_t>(timeEnd - line), &time)) record.time = time;

  // tag: after that blank up to the next blank or the end of the line.
  const char* tagBegin = timeEnd + 1;
  const char* lineEnd = line + length;
  const char* tagEnd = static_cast<const char*>(
      std::memchr(tagBegin, kBlank, static_cast<size_t>(lineEnd - tagBegin)));
  if (tagEnd == nullptr) tagEnd = lineEnd;
  if (tagEnd == tagBegin) return ReadStatus::kMalformedLine;
  record.tag.assign(tagBegin, tagEnd);

  // payload: after the single blank behind the tag, up to the line end or a
  // NUL byte.
  if (tagEnd != lineEnd && tagEnd + 1 != lineEnd) {
    const char* payloadBegin = tagEnd + 1;
    const char* nul = static_cast<const char*>(
        std::memchr(payloadBegin, '\0', static_cast<size_t>(lineEnd - payloadBegin)));
    record.payload.assign(payloadBegin, nul != nullptr ? nul : lineEnd);
  }
  return ReadStatus::kRecord;
}

}  // namespace Quillan
