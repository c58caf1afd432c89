#pragma once
// SplitPath: splits a path into directory (up to and including the last "/"
// that a backslash does not escape) and file name. A "/" only at the first
// position, or none, gives an empty directory and the whole path as name.

#include <string>

namespace Quillan {

void SplitPath(const std::string& path, std::string* directory, std::string* fileName);

}  // namespace Quillan
