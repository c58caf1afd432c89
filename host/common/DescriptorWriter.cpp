#include "host/common/DescriptorWriter.h"

#include <unistd.h>

#include <cerrno>

#include "host/common/StopSignals.h"

namespace PelorinTools {

int DescriptorWriter::WriteAll(int fd, const char* data, size_t size) {
  while (size > 0) {
    const ssize_t written = ::write(fd, data, size);
    if (written < 0 && errno == EINTR && StopSignals::Caught() == 0) continue;
    if (written < 0) return errno != 0 ? errno : EIO;
    if (written == 0) return EIO;
    data += written;
    size -= static_cast<size_t>(written);
  }
  return 0;
}

}  // namespace PelorinTools
