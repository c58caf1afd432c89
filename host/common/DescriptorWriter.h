#pragma once
// DescriptorWriter: the one write loop of both tools, writing all of a
// buffer to a file descriptor. Its policy on EINTR: a write interrupted by a
// signal is tried again, unless a stop signal has been caught
// (StopSignals), when it fails with EINTR so that a writer blocked on a full
// pipe ends promptly. Stateless; any thread.

#include <cstddef>

namespace PelorinTools {

class DescriptorWriter {
 public:
  // 0 when all `size` bytes were written, else the errno of the failure.
  static int WriteAll(int fd, const char* data, size_t size);
};

}  // namespace PelorinTools
