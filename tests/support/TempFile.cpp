#include "tests/support/TempFile.h"

#include <dirent.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

namespace pelorin_test {
namespace {

std::string Pattern() {
  const char* directory = std::getenv("TMPDIR");
  return std::string(directory ? directory : "/tmp") + "/pelorin-XXXXXX";
}

}  // namespace

void RemoveTree(const std::string& path) {
  if (DIR* dir = opendir(path.c_str())) {
    while (dirent64* entry = readdir64(dir)) {
      const std::string name = entry->d_name;
      if (name != "." && name != "..") RemoveTree(path + "/" + name);
    }
    closedir(dir);
    rmdir(path.c_str());
  } else {
    unlink(path.c_str());
  }
}

void WriteFile(const std::string& path, const std::string& bytes, const char* mode) {
  std::FILE* file = std::fopen(path.c_str(), mode);
  if (file == nullptr) return;
  std::fwrite(bytes.data(), 1, bytes.size(), file);
  std::fclose(file);
}

TempFile::TempFile(const std::string& contents) : m_path(Pattern()) {
  const int descriptor = mkstemp(&m_path[0]);
  if (descriptor >= 0) close(descriptor);
  WriteFile(m_path, contents);
}

TempFile::~TempFile() { std::remove(m_path.c_str()); }

TempFolder::TempFolder() : m_path(Pattern()) {
  if (mkdtemp(&m_path[0]) == nullptr) m_path.clear();
}

TempFolder::~TempFolder() {
  if (!m_path.empty()) RemoveTree(m_path);
}

std::string TempFolder::Write(const std::string& name, const std::string& bytes, const char* mode) {
  for (size_t slash = name.find('/'); slash != std::string::npos;
       slash = name.find('/', slash + 1)) {
    mkdir((m_path + "/" + name.substr(0, slash)).c_str(), 0700);
  }
  const std::string path = m_path + "/" + name;
  if (name.empty() || name.back() != '/') WriteFile(path, bytes, mode);
  return path;
}

}  // namespace pelorin_test
