#include "host/recording/RecordingReader.h"

#include <cerrno>
#include <cstring>
#include <limits>

namespace PelorinRecording {

std::atomic<bool> RecordingReader::s_reading(false);

bool RecordingReader::Open(const std::string& path, std::string* reason) {
  if (!m_local.Open(path, reason)) return false;
  m_file.reset(new Quillan::InputFile(m_local.ModulePath(), 0));
  errno = 0;
  const Quillan::FileStatus status = m_file->Open();
  if (status != Quillan::FileStatus::kSuccess) {
    *reason = status == Quillan::FileStatus::kOpenFailed && errno != 0
                  ? std::strerror(errno)
                  : "open failed (" + m_local.ModulePath() + ")";
    return false;
  }
  Restart();
  return true;
}

bool RecordingReader::Rewind() {
  if (!m_file || m_file->Seek(0, 0) != Quillan::FileStatus::kSuccess) return false;
  Restart();
  return true;
}

void RecordingReader::Restart() {
  const size_t head = m_wholeLines ? std::numeric_limits<size_t>::max() : LineShape::kHeadBytes;
  m_tap.reset(new LineTap(*m_file, head));
  m_reader.reset(new Quillan::RecordReader(*m_tap));
  m_number = 0;
}

Quillan::ReadStatus RecordingReader::Next() {
  if (!m_reader) return Quillan::ReadStatus::kReadError;
  m_tap->BeginLine();
  // Plain stores: a handler on this thread, or a later one, reads the flag.
  s_reading.store(true, std::memory_order_relaxed);
  const Quillan::ReadStatus status = m_reader->ReadRecord(m_record);
  s_reading.store(false, std::memory_order_relaxed);
  if (status != Quillan::ReadStatus::kEndOfInput) ++m_number;
  return status;
}

std::string_view RecordingReader::TimeText() const {
  const LineShape& shape = Shape();
  if (!shape.TimeTextKnown()) return {};
  return std::string_view(shape.head).substr(0, static_cast<size_t>(shape.firstBlank));
}

}  // namespace PelorinRecording
