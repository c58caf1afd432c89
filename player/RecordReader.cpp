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
  if (!ReadLine(&lineStatus)) return lineStatus;
  return SplitLine(record);
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
  const void* lineFeed = std::memchr(ready, kLineFeed, available);
  size_t run = lineFeed != nullptr
                   ? static_cast<size_t>(static_cast<const uint8_t*>(lineFeed) - ready)
                   : available;
  const void* carriageReturn = std::memchr(ready, kCarriageReturn, run);
  if (carriageReturn != nullptr)
    run = static_cast<size_t>(static_cast<const uint8_t*>(carriageReturn) - ready);
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

ReadStatus RecordReader::SplitLine(Record& record) const {
  const char* line = m_line.data();
  const size_t length = m_line.size();

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
