#include "host/common/FileOutput.h"

#include "host/common/DescriptorWriter.h"

namespace PelorinTools {

FileOutput::FileOutput(int fd) : m_fd(fd) { setp(m_buffer, m_buffer + kBufferBytes); }

FileOutput::~FileOutput() { Flush(); }

FileOutput::int_type FileOutput::overflow(int_type c) {
  if (!Flush()) return traits_type::eof();
  if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
  *pptr() = traits_type::to_char_type(c);
  pbump(1);
  return c;
}

int FileOutput::sync() { return Flush() ? 0 : -1; }

bool FileOutput::Flush() {
  if (m_error == 0) {
    m_error = DescriptorWriter::WriteAll(m_fd, pbase(), static_cast<size_t>(pptr() - pbase()));
  }
  // After a failure the buffer is dropped: nothing more reaches the file.
  setp(m_buffer, m_buffer + kBufferBytes);
  return m_error == 0;
}

}  // namespace PelorinTools
