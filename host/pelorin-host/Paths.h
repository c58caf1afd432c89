#pragma once
// Paths: small file-system helpers of the host (where the program lives,
// whether a path names a file or a folder, absolute paths). Thread-safe.

#include <string>

namespace PelorinHost {

// The folder that holds the running program (no trailing slash).
std::string ProgramDir(const char* argv0);
bool IsReadableFile(const std::string& path);
bool IsDirectory(const std::string& path);
// `path` made absolute against the working directory (links not resolved).
std::string AbsolutePath(const std::string& path);
// Everything before the last "/" ("." when there is none, "/" for the root).
std::string DirectoryOf(const std::string& path);

}  // namespace PelorinHost
