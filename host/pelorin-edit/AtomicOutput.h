#pragma once
// AtomicOutput: where pelorin-edit writes. A file is written as a temporary
// file in its own folder and renamed over the name only by Commit, after
// everything was written and synced, so a run that fails (write error, read
// error, signal) leaves the name as it was; the temporary file is removed
// unless committed. "-" writes standard output directly. Writes go through
// FileOutput, which keeps the first failure's errno. One thread.

#include <memory>
#include <ostream>
#include <string>

#include "host/common/FileOutput.h"

namespace PelorinEdit {

class AtomicOutput {
 public:
  AtomicOutput() = default;
  ~AtomicOutput();
  AtomicOutput(const AtomicOutput&) = delete;
  AtomicOutput& operator=(const AtomicOutput&) = delete;

  // False with the OS reason when no temporary file can be made beside `path`.
  bool Open(const std::string& path, std::string* reason);
  std::ostream& Stream() { return *m_stream; }
  // errno of the first failed write (0: none).
  int Error() const { return m_buffer ? m_buffer->Error() : 0; }
  bool ToStandardOutput() const { return m_temporary.empty(); }
  // The temporary file while there is one; empty for standard output.
  const std::string& Temporary() const { return m_temporary; }
  // Flushes, syncs and renames into place; false with the errno in Error()
  // or `reason`.
  bool Commit(std::string* reason);

 private:
  std::string m_path;
  std::string m_temporary;  // empty for standard output, and once committed
  int m_fd = -1;
  std::unique_ptr<PelorinTools::FileOutput> m_buffer;
  std::unique_ptr<std::ostream> m_stream;
};

}  // namespace PelorinEdit
