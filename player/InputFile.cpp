#include "player/InputFile.h"

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <limits>
#include <new>

#include "Storage.h"
#include "runtime/SystemExtensions.h"

namespace Quillan {
namespace {

// Read-ahead buffer: large enough that a byte-at-a-time reader costs one
// system call per 64 KiB, small enough for the head unit.
constexpr uint32_t kBufferSize = 64u * 1024u;

// The open call takes at most this many bytes of the path.
constexpr size_t kMaxPathBytes = 254;


// The path as the open call gets it: cut to 254 bytes, backslashes turned
// into slashes, runs of slashes collapsed. Bytes outside ASCII are passed on
// unchanged, so that UTF-8 file names open as they are.
void CleanPath(const std::string& path, char (&cleaned)[kMaxPathBytes + 2]) {
  size_t out = 0;
  for (size_t i = 0; i < path.size() && i < kMaxPathBytes; ++i) {
    char c = path[i];
    if (c == '\0') break;
    if (c == '\\') c = '/';
    if (c == '/' && out > 0 && cleaned[out - 1] == '/') continue;
    cleaned[out++] = c;
  }
  cleaned[out] = '\0';
}

// read(2), repeated when a signal interrupts it before any byte arrived.
ssize_t ReadDescriptor(int descriptor, void* buffer, uint32_t length) {
  ssize_t result;
  do {
    result = ::read(descriptor, buffer, length);
  } while (result == -1 && errno == EINTR);
  return result;
}

}  // namespace

InputFile::InputFile(const std::string& path, int openFlags)
    : m_path(path), m_openFlags(openFlags) {}

InputFile::~InputFile() { Close(); }

FileStatus InputFile::Open() {
  if (m_descriptor != -1) return FileStatus::kAlreadyOpen;
  if (m_path.empty()) return FileStatus::kIoError;

  char cleaned[kMaxPathBytes + 2];
  CleanPath(m_path, cleaned);
  const unsigned int mode = (m_openFlags & O_CREAT) != 0 ? 0644u : 0u;
  m_descriptor = Storage::Open(cleaned, m_openFlags, mode);
  if (m_descriptor == -1) return FileStatus::kOpenFailed;

  // Without a buffer the file is still read correctly, a byte per call.
  m_buffer = new (std::nothrow) uint8_t[kBufferSize];
  DropBuffered();
  return FileStatus::kSuccess;
}

void InputFile::Close() {
  if (m_descriptor != -1) {
    ::close(m_descriptor);
    m_descriptor = -1;
  }
  delete[] m_buffer;
  m_buffer = nullptr;
  DropBuffered();
}

bool InputFile::IsOpen() const { return m_descriptor != -1; }

FileStatus InputFile::Read(void* buffer, uint32_t length, uint32_t* count) {
  // The common case of the byte-at-a-time readers, kept free of calls.
  if (length == 1 && m_bufferPos < m_bufferEnd && buffer != nullptr && count != nullptr) {
    *static_cast<uint8_t*>(buffer) = m_buffer[m_bufferPos++];
    *count = 1;
    return FileStatus::kSuccess;
  }
  return ReadSlow(buffer, length, count);
}

FileStatus InputFile::ReadSlow(void* buffer, uint32_t length, uint32_t* count) {
  if (count != nullptr) *count = 0;
  if (buffer == nullptr || count == nullptr || m_descriptor == -1) return FileStatus::kIoError;
  if (m_bufferPos < m_bufferEnd) return DeliverBuffered(buffer, length, count);
  if (length == 0) return FileStatus::kEndOfFile;  // as read(2) of 0 bytes

  // Nothing buffered: ask the descriptor again, so that bytes appended to the
  // file since the last end of file are delivered. Without a buffer (its
  // allocation failed) one byte goes straight to the caller.
  const bool buffered = m_buffer != nullptr;
  const ssize_t result = buffered ? ReadDescriptor(m_descriptor, m_buffer, kBufferSize)
                                  : ReadDescriptor(m_descriptor, buffer, 1);
  if (result == -1) return FileStatus::kIoError;
  if (result == 0) return FileStatus::kEndOfFile;
  if (!buffered) {
    *count = 1;
    return FileStatus::kSuccess;
  }
  m_bufferPos = 0;
  m_bufferEnd = static_cast<uint32_t>(result);
  return DeliverBuffered(buffer, length, count);
}

const uint8_t* InputFile::PeekReady(uint32_t* count) {
  *count = m_bufferEnd - m_bufferPos;
  return *count != 0 ? m_buffer + m_bufferPos : nullptr;
}

void InputFile::TakeReady(uint32_t count) {
  const uint32_t available = m_bufferEnd - m_bufferPos;
  m_bufferPos += count < available ? count : available;
}

FileStatus InputFile::Seek(int64_t offset, int origin) {
  if (m_descriptor == -1) return FileStatus::kIoError;
  int whence = SEEK_SET;
  if (origin == 1) whence = SEEK_CUR;
  if (origin == 2) whence = SEEK_END;

  // The descriptor stands behind the bytes still buffered: a move relative to
  // the reader's position starts that many bytes earlier.
  if (whence == SEEK_CUR) {
    const int64_t pending = static_cast<int64_t>(m_bufferEnd - m_bufferPos);
    if (offset < std::numeric_limits<int64_t>::min() + pending) return FileStatus::kIoError;
    offset -= pending;
  }
  errno = 0;
  const int64_t result = SeekLarge(m_descriptor, offset, whence);
  if (result == -1 && errno != 0) return FileStatus::kIoError;  // position unchanged
  DropBuffered();
  return FileStatus::kSuccess;
}

FileStatus InputFile::DeliverBuffered(void* buffer, uint32_t length, uint32_t* count) {
  uint32_t available = m_bufferEnd - m_bufferPos;
  const uint32_t taken = length < available ? length : available;
  std::memcpy(buffer, m_buffer + m_bufferPos, taken);
  m_bufferPos += taken;
  *count = taken;
  return taken == 0 ? FileStatus::kEndOfFile : FileStatus::kSuccess;
}

void InputFile::DropBuffered() {
  m_bufferPos = 0;
  m_bufferEnd = 0;
}

}  // namespace Quillan
