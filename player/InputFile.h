#pragma once
// InputFile: a file read through a POSIX descriptor (the events file and the
// configuration file). Reads are served from a buffer of its own, so that
// byte-at-a-time readers do not make a system call per byte; Seek, Close and
// re-open behave as on the bare descriptor, and bytes appended to the file
// while it is read are still delivered. Owned by its user; one thread at a
// time.

#include <cstdint>
#include <string>

#include "player/ByteReader.h"
#include "player/FileStatus.h"

namespace Quillan {

class InputFile : public ByteReader {
 public:
  // Does not open the file. Both users of this system open read-only (0).
  InputFile(const std::string& path, int openFlags);
  ~InputFile() override;
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  // kAlreadyOpen when open, kIoError for an empty path, kOpenFailed when the
  // open call fails. The path is cut to 254 bytes, backslashes become
  // slashes and runs of slashes collapse before it is opened through
  // Storage::Open; bytes outside ASCII pass unchanged (UTF-8 names open as
  // they are). A directory opens; reading it then fails with kIoError.
  FileStatus Open();
  void Close();
  bool IsOpen() const;
  using ByteReader::Read;
  FileStatus Read(void* buffer, uint32_t length, uint32_t* count) override;
  // The buffered bytes not yet delivered.
  const uint8_t* PeekReady(uint32_t* count) override;
  void TakeReady(uint32_t count) override;
  // origin: 0 from the start, 1 from the current position, 2 from the end
  // (anything else counts as 0).
  FileStatus Seek(int64_t offset, int origin);

 private:
  // Read beyond the single-byte fast path: refills, errors.
  FileStatus ReadSlow(void* buffer, uint32_t length, uint32_t* count);
  // Copies up to `length` buffered bytes to the caller.
  FileStatus DeliverBuffered(void* buffer, uint32_t length, uint32_t* count);
  // Forgets the buffered bytes (after a seek, on close).
  void DropBuffered();

  std::string m_path;
  int m_openFlags;
  int m_descriptor = -1;
  // Read buffer: bytes [m_bufferPos, m_bufferEnd) have been read from the
  // descriptor but not yet delivered.
  uint8_t* m_buffer = nullptr;
  uint32_t m_bufferPos = 0;
  uint32_t m_bufferEnd = 0;
};

}  // namespace Quillan
