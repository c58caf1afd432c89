#pragma once
// LocalFile: a file of this computer, opened by this computer's path rules
// (no cut at 254 bytes, a backslash is part of a name), for the module's
// readers, which take a path and would apply the head unit's rules to it:
// they open the file again through ModulePath, a short name of the open
// descriptor. Owns the descriptor; one thread.

#include <string>

namespace PelorinRecording {

class LocalFile {
 public:
  LocalFile() = default;
  ~LocalFile();
  LocalFile(const LocalFile&) = delete;
  LocalFile& operator=(const LocalFile&) = delete;

  // False with the OS reason in `reason` when `path` cannot be opened for
  // reading; a directory is refused as such.
  bool Open(const std::string& path, std::string* reason);
  // The name under which the module's InputFile opens the same file.
  std::string ModulePath() const;

 private:
  int m_descriptor = -1;
};

}  // namespace PelorinRecording
