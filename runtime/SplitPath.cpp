#include "runtime/SplitPath.h"

namespace Quillan {

void SplitPath(const std::string& path, std::string* directory, std::string* fileName) {
  // The last "/" that a backslash does not escape; a backslash escapes
  // exactly the one character after it.
  size_t lastSlash = std::string::npos;
  for (size_t i = 0; i < path.size(); ++i) {
    if (path[i] == '\\') {
      ++i;
    } else if (path[i] == '/') {
      lastSlash = i;
    }
  }

  const bool hasDirectory = lastSlash != std::string::npos && lastSlash > 0;
  if (directory != nullptr)
    *directory = hasDirectory ? path.substr(0, lastSlash + 1) : std::string();
  if (fileName != nullptr) *fileName = hasDirectory ? path.substr(lastSlash + 1) : path;
}

}  // namespace Quillan
