#pragma once
// FileOutput: a stream buffer that writes to a file descriptor (standard
// output) and remembers the first failed write and its errno, so that a tool
// can tell a full disk (ENOSPC) or a closed descriptor from a reader that went
// away (EPIPE) and never loses output silently. After a failure nothing more
// is written and the stream using it goes bad. Writes with DescriptorWriter,
// so an interrupted write fails (EINTR) only once a stop signal was caught.
// Does not own the descriptor; flushes on destruction. One thread.

#include <cstddef>
#include <streambuf>

namespace PelorinTools {

class FileOutput : public std::streambuf {
 public:
  explicit FileOutput(int fd);
  ~FileOutput() override;
  FileOutput(const FileOutput&) = delete;
  FileOutput& operator=(const FileOutput&) = delete;

  bool Failed() const { return m_error != 0; }
  // errno of the failed write; 0 while none failed.
  int Error() const { return m_error; }

 protected:
  int_type overflow(int_type c) override;
  int sync() override;

 private:
  static constexpr size_t kBufferBytes = 16384;

  bool Flush();

  int m_fd;
  int m_error = 0;
  char m_buffer[kBufferBytes];
};

}  // namespace PelorinTools
